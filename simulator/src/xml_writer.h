#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "model.h"

// Writes the model as CIM-XML, in the shape in which CIM servers write it: one element per line,
// text directly inside its element, two blanks after some names.
namespace simulator {

// Where servers differ in what they write.
struct WireStyle {
  bool short_null = false;     // a property without a value is one empty-element tag
  bool both_embedded = false;  // EMBEDDEDOBJECT is written beside the older EmbeddedObject
};

// What a client asked to see of a class or an instance.
struct Detail {
  bool qualifiers = false;
  bool class_origin = false;
  WireStyle style;
};

// Appends a text with everything encoded that is not itself in XML.
void append_escaped(std::string& out, std::string_view text);

// VALUE, VALUE.ARRAY, VALUE.REFERENCE or VALUE.REFARRAY; nothing for null.
void append_value(std::string& out, const Value& value);

// CLASSNAME
void append_class_name(std::string& out, std::string_view class_name);

// INSTANCENAME
void append_instance_name(std::string& out, const InstanceName& name);

// INSTANCEPATH or CLASSPATH of a reference that has a namespace and a host
void append_path(std::string& out, const Reference& reference);

// LOCALNAMESPACEPATH
void append_namespace_path(std::string& out, std::string_view name_space);

// Writes INSTANCE elements of one class. What does not depend on the instance is put together once,
// which makes long lists cheap.
class InstanceWriter {
 public:
  // Shows the properties at the given positions.
  InstanceWriter(const Class& type, const std::vector<std::size_t>& positions,
                 const Detail& detail);

  // INSTANCE
  void append(std::string& out, const Instance& instance) const;

 private:
  struct Frame {
    std::size_t position;
    std::string before;   // start tag and qualifiers
    std::string after;    // end tag
    std::string instead;  // the whole element where there is no value
  };

  std::string start_;
  std::vector<Frame> frames_;
};

// What of a class is to be written.
struct ClassView {
  std::vector<std::size_t> properties;
  bool local_only = false;  // leaves out inherited methods and qualifiers
};

// CLASS
void append_class(std::string& out, const Class& type, const ClassView& view, const Detail& detail);

}  // namespace simulator
