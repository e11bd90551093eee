#include "model.h"

#include <algorithm>
#include <utility>

#include "names.h"
#include "value_check.h"

namespace simulator {

namespace {

const char* key_type(const Property& key) {
  if (key.type == "boolean") return "boolean";
  return is_numeric(key.type) ? "numeric" : "string";
}

}  // namespace

std::optional<std::size_t> Class::find_property(std::string_view property_name) const {
  const auto found = property_index.find(folded(property_name));
  if (found == property_index.end()) return std::nullopt;
  return found->second;
}

const Method* Class::find_method(std::string_view method_name) const {
  const auto found = std::find_if(methods.begin(), methods.end(), [&](const Method& method) {
    return same_name(method.name, method_name);
  });
  return found == methods.end() ? nullptr : &*found;
}

bool Class::is_a(const Class& other) const {
  for (const Class* each = this; each != nullptr; each = each->superclass) {
    if (each == &other) return true;
  }
  return false;
}

void Instance::assign(std::size_t position, Value value) {
  values[position] = value.is_null() ? nullptr : std::make_shared<Value>(std::move(value));
}

const Value& Instance::value(std::string_view property_name) const {
  static const Value null;
  const auto position = type->find_property(property_name);
  return position && values[*position] ? *values[*position] : null;
}

void Instance::set_text(std::string_view property_name, std::string text) {
  if (const auto position = type->find_property(property_name)) {
    assign(*position, Value{std::move(text)});
  }
}

const Qualifier* find_qualifier(const std::vector<Qualifier>& qualifiers, std::string_view name) {
  const auto found =
      std::find_if(qualifiers.begin(), qualifiers.end(),
                   [&](const Qualifier& qualifier) { return same_name(qualifier.name, name); });
  return found == qualifiers.end() ? nullptr : &*found;
}

bool has_qualifier(const std::vector<Qualifier>& qualifiers, std::string_view name) {
  const Qualifier* qualifier = find_qualifier(qualifiers, name);
  const std::string* text = qualifier == nullptr ? nullptr : qualifier->value.text();
  return text != nullptr && same_name(*text, "true");
}

InstanceName name_of(const Instance& instance) {
  InstanceName name{instance.type->name, {}};
  name.keys.reserve(instance.type->keys.size());
  for (const std::size_t key : instance.type->keys) {
    const Property& property = instance.type->properties[key];
    const ValuePtr& value = instance.values[key];
    name.keys.push_back({property.name, value ? *value : Value{}, key_type(property)});
  }
  return name;
}

ReferencePtr reference_to(const Instance& instance) {
  return std::make_shared<const Reference>(Reference{name_of(instance), {}, {}, false});
}

}  // namespace simulator
