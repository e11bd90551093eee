#include "instance_builder.h"

#include <utility>

#include "repository.h"
#include "value_check.h"

namespace simulator {

namespace {

bool fits_shape(Shape shape, const Value& value) {
  if (value.is_null()) return true;
  switch (shape) {
    case Shape::scalar:
      return value.text() != nullptr;
    case Shape::array:
      return value.array() != nullptr;
    case Shape::reference:
      return value.reference() != nullptr;
    case Shape::reference_array:
      return value.references() != nullptr;
  }
  return false;
}

bool fits_type(const std::string& type, const Value& value) {
  if (const std::string* text = value.text()) return is_value_of(type, *text);
  if (const TextArray* array = value.array()) {
    for (const auto& each : *array) {
      if (each && !is_value_of(type, *each)) return false;
    }
  }
  return true;
}

}  // namespace

void check_value(const Class& type, const Property& property,
                 const InstanceDeclaration::NamedValue& given) {
  const std::string what = type.name + "." + property.name;
  if (!given.type.empty() && given.type != property.type) {
    throw DeclarationError(what + " is " + property.type + ", not " + given.type);
  }
  if (given.shape != property.shape || !fits_shape(property.shape, given.value)) {
    throw DeclarationError(what + " is given a value of another shape");
  }
  if (!fits_type(property.type, given.value)) {
    throw DeclarationError(what + " is given a value that is no " + property.type);
  }
}

bool fits(const std::string& type, Shape shape, const Value& value) {
  return fits_shape(shape, value) && fits_type(type, value);
}

std::unique_ptr<Instance> build_instance(const Class& type, InstanceDeclaration declaration) {
  auto instance = std::make_unique<Instance>();
  instance->type = &type;
  for (const Property& each : type.properties) {
    const bool has_default = !each.default_value.is_null();
    instance->values.push_back(has_default ? std::make_shared<Value>(each.default_value) : nullptr);
  }
  for (auto& given : declaration.values) {
    const auto position = type.find_property(given.name);
    if (!position) throw DeclarationError(type.name + " has no property " + given.name);
    check_value(type, type.properties[*position], given);
    instance->assign(*position, std::move(given.value));
  }
  return instance;
}

}  // namespace simulator
