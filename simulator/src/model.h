#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <variant>
#include <vector>

// What a CIM server knows: values, classes and instances. Plain data, no XML and no network.
namespace simulator {

struct Reference;
using ReferencePtr = std::shared_ptr<const Reference>;
using TextArray = std::vector<std::optional<std::string>>;
using ReferenceArray = std::vector<ReferencePtr>;

// One CIM value; a value without content is the CIM null. Texts are kept as they stand on the
// wire, after entity decoding.
struct Value {
  std::variant<std::monostate, std::string, TextArray, ReferencePtr, ReferenceArray> content;

  bool is_null() const { return content.index() == 0; }
  const std::string* text() const { return std::get_if<std::string>(&content); }
  const TextArray* array() const { return std::get_if<TextArray>(&content); }
  const ReferencePtr* reference() const { return std::get_if<ReferencePtr>(&content); }
  const ReferenceArray* references() const { return std::get_if<ReferenceArray>(&content); }
};

using ValuePtr = std::shared_ptr<const Value>;  // null means the CIM null

struct KeyBinding {
  std::string name;
  Value value;             // a text or a reference
  std::string value_type;  // of a text: "string", "numeric" or "boolean"
};

struct InstanceName {
  std::string class_name;
  std::vector<KeyBinding> keys;
};

// A reference value: an instance or a class, optionally with its namespace and host.
struct Reference {
  InstanceName target;
  std::string name_space;
  std::string host;
  bool is_class = false;
};

struct Qualifier {
  std::string name;
  std::string type;
  Value value;
  bool overridable = true;
  bool to_subclass = true;
  bool translatable = false;
  bool propagated = false;
};

enum class Shape { scalar, array, reference, reference_array };

struct Property {
  std::string name;
  std::string type;  // empty for references
  Shape shape = Shape::scalar;
  std::string array_size;
  std::string reference_class;
  std::string embedded_object;  // "", "instance" or "object"
  std::string class_origin;     // the class that defined it first
  bool propagated = false;      // inherited, and not overridden here
  std::vector<Qualifier> qualifiers;
  Value default_value;
};

struct Parameter {
  std::string name;
  std::string type;
  Shape shape = Shape::scalar;
  std::string array_size;
  std::string reference_class;
  std::vector<Qualifier> qualifiers;
};

struct Method {
  std::string name;
  std::string type;
  std::string class_origin;
  bool propagated = false;
  std::vector<Qualifier> qualifiers;
  std::vector<Parameter> parameters;
};

// A class with everything it inherits. Properties come in the order in which the line of
// superclasses introduces them.
struct Class {
  std::string name;
  std::string superclass_name;
  const Class* superclass = nullptr;
  std::vector<const Class*> subclasses;
  std::vector<Qualifier> qualifiers;
  std::vector<Property> properties;
  std::vector<Method> methods;
  std::vector<std::size_t> keys;                                // positions of key properties
  std::unordered_map<std::string, std::size_t> property_index;  // folded name -> position

  // The position of a property, if the class has it.
  std::optional<std::size_t> find_property(std::string_view property_name) const;

  // The method of that name, or null.
  const Method* find_method(std::string_view method_name) const;

  // Whether this class is `other` or inherits from it.
  bool is_a(const Class& other) const;
};

// An instance: one value for each property of its class, at the same position. Values that
// several instances have in common may be shared.
struct Instance {
  const Class* type = nullptr;
  std::vector<ValuePtr> values;

  // Puts a value at a position.
  void assign(std::size_t position, Value value);

  // The value of a property; null too where the class has no such property.
  const Value& value(std::string_view property_name) const;

  // Gives a property a text, if the class has it.
  void set_text(std::string_view property_name, std::string text);
};

// The qualifier of that name, or null.
const Qualifier* find_qualifier(const std::vector<Qualifier>& qualifiers, std::string_view name);

// Whether a boolean qualifier is present and true.
bool has_qualifier(const std::vector<Qualifier>& qualifiers, std::string_view name);

// The path of an instance within its namespace: its class and the values of its keys.
InstanceName name_of(const Instance& instance);

// A reference to an instance of the namespace in which the reference stands.
ReferencePtr reference_to(const Instance& instance);

}  // namespace simulator
