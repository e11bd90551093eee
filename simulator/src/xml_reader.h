#pragma once

#include <memory>
#include <pugixml.hpp>
#include <stdexcept>
#include <string>
#include <vector>

#include "model.h"

// Reads CIM-XML elements into the model. The same reader serves requests and declaration files.
namespace simulator {

// An element that is not what CIM-XML allows at its place.
class FormatError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// How documents are parsed everywhere: text of a VALUE that is only white space is kept.
constexpr unsigned parse_options = pugi::parse_default | pugi::parse_ws_pcdata_single;

// What an INSTANCE element says: values by property name, not yet fitted to the class.
struct InstanceDeclaration {
  struct NamedValue {
    std::string name;
    std::string type;
    Shape shape = Shape::scalar;
    Value value;
    std::string reference_class;  // of a reference, if it is said
  };
  std::string class_name;
  std::vector<NamedValue> values;
};

// The attribute, which must be there and not be empty.
std::string required_attribute(const pugi::xml_node& node, const char* name);

// The first element below the node; text before it is passed over.
pugi::xml_node first_element(const pugi::xml_node& node);

// The text of an element, CDATA sections included.
std::string text_of(const pugi::xml_node& node);

// The NAMESPACE names below a LOCALNAMESPACEPATH, joined by "/".
std::string read_namespace_path(const pugi::xml_node& local_namespace_path);

// The value held by the VALUE, VALUE.ARRAY, VALUE.REFERENCE or VALUE.REFARRAY child; null if there
// is none, or a VALUE.REFERENCE with nothing in it.
Value read_value(const pugi::xml_node& parent);

// An INSTANCENAME element.
InstanceName read_instance_name(const pugi::xml_node& node);

// A CLASS element: only what it declares itself.
std::unique_ptr<Class> read_class(const pugi::xml_node& node);

// An INSTANCE element.
InstanceDeclaration read_instance(const pugi::xml_node& node);

}  // namespace simulator
