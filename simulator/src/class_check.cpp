#include "class_check.h"

#include <cctype>
#include <set>

#include "instance_builder.h"
#include "names.h"
#include "repository.h"
#include "value_check.h"

namespace simulator {

namespace {

// Letters beyond ASCII are bytes above 127 here; all of them are taken.
bool is_name(const std::string& text) {
  const auto is_letter = [](unsigned char c) {
    return std::isalpha(c) != 0 || c == '_' || c > 127;
  };
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (!is_letter(byte) && std::isdigit(byte) == 0) return false;
  }
  return !text.empty() && is_letter(static_cast<unsigned char>(text.front()));
}

void check_name(const std::string& name) {
  if (!is_name(name)) throw DeclarationError('"' + name + "\" is no name");
}

bool refers(Shape shape) {
  return shape == Shape::reference || shape == Shape::reference_array;
}

void check_type(const std::string& what, const std::string& type, Shape shape) {
  if (refers(shape) ? type.empty() : is_type(type)) return;
  throw DeclarationError(what + " has the unknown type \"" + type + '"');
}

// Names of properties, and those of methods, are unique within what one class declares.
template <typename Member>
void check_names(const Class& type, const std::vector<Member>& members) {
  std::set<std::string> names;
  for (const Member& each : members) {
    check_name(each.name);
    if (names.insert(folded(each.name)).second) continue;
    throw DeclarationError(type.name + " declares " + each.name + " twice");
  }
}

void check_property(const Class& type, const Property& property) {
  const std::string what = type.name + '.' + property.name;
  check_type(what, property.type, property.shape);
  if (!fits(property.type, property.shape, property.default_value)) {
    throw DeclarationError(what + " has a default value that does not fit");
  }
}

void check_method(const Class& type, const Method& method) {
  const std::string what = type.name + '.' + method.name;
  check_type(what, method.type, Shape::scalar);
  for (const Parameter& each : method.parameters) {
    check_name(each.name);
    check_type(what + '.' + each.name, each.type, each.shape);
  }
}

}  // namespace

void check_class(const Class& declared) {
  check_name(declared.name);
  check_names(declared, declared.properties);
  check_names(declared, declared.methods);
  for (const Property& each : declared.properties) check_property(declared, each);
  for (const Method& each : declared.methods) check_method(declared, each);
}

}  // namespace simulator
