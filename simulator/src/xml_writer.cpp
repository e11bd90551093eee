#include "xml_writer.h"

#include <utility>

namespace simulator {

namespace {

void append_attribute(std::string& out, std::string_view before, std::string_view value) {
  if (value.empty()) return;
  out += before;
  append_escaped(out, value);
  out += '"';
}

void append_text_value(std::string& out, std::string_view text) {
  out += "<VALUE>";
  append_escaped(out, text);
  out += "</VALUE>\n";
}

void append_array(std::string& out, const TextArray& array) {
  out += "<VALUE.ARRAY>\n";
  for (const auto& each : array) {
    if (each) {
      append_text_value(out, *each);
    } else {
      out += "<VALUE.NULL></VALUE.NULL>\n";
    }
  }
  out += "</VALUE.ARRAY>\n";
}

void append_reference(std::string& out, const Reference& reference);

void append_key(std::string& out, const KeyBinding& key) {
  append_attribute(out, "<KEYBINDING NAME=\"", key.name);
  out += ">\n";
  if (const ReferencePtr* reference = key.value.reference()) {
    append_reference(out, **reference);
  } else if (const std::string* text = key.value.text()) {
    append_attribute(out, "<KEYVALUE VALUETYPE=\"", key.value_type);
    out += '>';
    append_escaped(out, *text);
    out += "</KEYVALUE>\n";
  }
  out += "</KEYBINDING>\n";
}

void append_reference_target(std::string& out, const Reference& reference) {
  if (reference.is_class) {
    append_class_name(out, reference.target.class_name);
  } else {
    append_instance_name(out, reference.target);
  }
}

void append_local_path(std::string& out, const Reference& reference) {
  const std::string element = reference.is_class ? "LOCALCLASSPATH" : "LOCALINSTANCEPATH";
  out += '<' + element + ">\n";
  append_namespace_path(out, reference.name_space);
  append_reference_target(out, reference);
  out += "</" + element + ">\n";
}

void append_reference(std::string& out, const Reference& reference) {
  out += "<VALUE.REFERENCE>\n";
  if (!reference.host.empty()) {
    append_path(out, reference);
  } else if (!reference.name_space.empty()) {
    append_local_path(out, reference);
  } else {
    append_reference_target(out, reference);
  }
  out += "</VALUE.REFERENCE>\n";
}

void append_qualifiers(std::string& out, const std::vector<Qualifier>& qualifiers,
                       bool local_only = false) {
  for (const Qualifier& each : qualifiers) {
    if (local_only && each.propagated) continue;
    append_attribute(out, "<QUALIFIER NAME=\"", each.name);
    append_attribute(out, " TYPE=\"", each.type);
    if (each.propagated) out += " PROPAGATED=\"true\"";
    if (!each.overridable) out += " OVERRIDABLE=\"false\"";
    if (!each.to_subclass) out += " TOSUBCLASS=\"false\"";
    if (each.translatable) out += " TRANSLATABLE=\"true\"";
    out += ">\n";
    append_value(out, each.value);
    out += "</QUALIFIER>\n";
  }
}

const char* property_element(Shape shape) {
  if (shape == Shape::array) return "PROPERTY.ARRAY";
  if (shape == Shape::reference) return "PROPERTY.REFERENCE";
  return "PROPERTY";
}

struct Origin {
  std::string_view class_origin;
  bool propagated;
};

void append_origin(std::string& out, const Origin& origin) {
  append_attribute(out, " CLASSORIGIN=\"", origin.class_origin);
  if (origin.propagated) out += " PROPAGATED=\"true\"";
}

void append_property_attributes(std::string& out, const Property& property, const Origin& origin,
                                const WireStyle& style) {
  append_attribute(out, " NAME=\"", property.name);
  out += ' ';
  if (property.shape == Shape::scalar) append_origin(out, origin);
  append_attribute(out, " TYPE=\"", property.type);
  append_attribute(out, " ARRAYSIZE=\"", property.array_size);
  append_attribute(out, " REFERENCECLASS=\"", property.reference_class);
  if (property.shape != Shape::scalar) append_origin(out, origin);
  append_attribute(out, " EmbeddedObject=\"", property.embedded_object);
  if (style.both_embedded) append_attribute(out, " EMBEDDEDOBJECT=\"", property.embedded_object);
}

// How a property is shown: as part of a class its inheritance is, as part of an instance it is not.
struct PropertyView {
  bool propagated = false;
  bool local_qualifiers = false;
};

// The text around a property's value.
struct PropertyFrame {
  std::string before;
  std::string after;
  std::string instead;  // of all three where there is no value
};

PropertyFrame frame_of(const Property& property, const PropertyView& view, const Detail& detail) {
  const std::string element = property_element(property.shape);
  const Origin origin{detail.class_origin ? std::string_view(property.class_origin) : "",
                      view.propagated};
  std::string tag = '<' + element;
  append_property_attributes(tag, property, origin, detail.style);
  PropertyFrame frame{tag + ">\n", "</" + element + ">\n", {}};
  const bool has_qualifiers = detail.qualifiers && !property.qualifiers.empty();
  if (has_qualifiers) append_qualifiers(frame.before, property.qualifiers, view.local_qualifiers);
  const bool is_short = detail.style.short_null && !has_qualifiers;
  frame.instead = is_short ? tag + "/>\n" : frame.before + frame.after;
  return frame;
}

const char* parameter_element(Shape shape) {
  switch (shape) {
    case Shape::array:
      return "PARAMETER.ARRAY";
    case Shape::reference:
      return "PARAMETER.REFERENCE";
    case Shape::reference_array:
      return "PARAMETER.REFARRAY";
    case Shape::scalar:
      break;
  }
  return "PARAMETER";
}

void append_parameter(std::string& out, const Parameter& parameter, const Detail& detail) {
  const char* element = parameter_element(parameter.shape);
  out += '<';
  out += element;
  append_attribute(out, " NAME=\"", parameter.name);
  append_attribute(out, " TYPE=\"", parameter.type);
  append_attribute(out, " REFERENCECLASS=\"", parameter.reference_class);
  append_attribute(out, " ARRAYSIZE=\"", parameter.array_size);
  out += ">\n";
  if (detail.qualifiers) append_qualifiers(out, parameter.qualifiers);
  out += "</";
  out += element;
  out += ">\n";
}

void append_method(std::string& out, const Method& method, bool local_only, const Detail& detail) {
  append_attribute(out, "<METHOD NAME=\"", method.name);
  append_attribute(out, " TYPE=\"", method.type);
  append_origin(
      out, {detail.class_origin ? std::string_view(method.class_origin) : "", method.propagated});
  out += ">\n";
  if (detail.qualifiers) append_qualifiers(out, method.qualifiers, local_only);
  for (const Parameter& each : method.parameters) append_parameter(out, each, detail);
  out += "</METHOD>\n";
}

void append_character(std::string& out, char c) {
  switch (c) {
    case '&':
      out += "&amp;";
      break;
    case '<':
      out += "&lt;";
      break;
    case '>':
      out += "&gt;";
      break;
    case '"':
      out += "&quot;";
      break;
    case '\'':
      out += "&apos;";
      break;
    default:
      if (static_cast<unsigned char>(c) >= ' ') {
        out += c;
      } else {
        out += "&#" + std::to_string(static_cast<int>(c)) + ';';
      }
  }
}

bool stands_for_itself(char c) {
  return static_cast<unsigned char>(c) >= ' ' && c != '&' && c != '<' && c != '>' && c != '"' &&
         c != '\'';
}

}  // namespace

void append_escaped(std::string& out, std::string_view text) {
  std::size_t start = 0;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (stands_for_itself(text[i])) continue;
    out.append(text, start, i - start);
    append_character(out, text[i]);
    start = i + 1;
  }
  out.append(text, start);
}

void append_value(std::string& out, const Value& value) {
  if (const std::string* text = value.text()) {
    append_text_value(out, *text);
  } else if (const TextArray* array = value.array()) {
    append_array(out, *array);
  } else if (const ReferencePtr* reference = value.reference()) {
    append_reference(out, **reference);
  } else if (const ReferenceArray* references = value.references()) {
    out += "<VALUE.REFARRAY>\n";
    for (const ReferencePtr& each : *references) append_reference(out, *each);
    out += "</VALUE.REFARRAY>\n";
  }
}

void append_class_name(std::string& out, std::string_view class_name) {
  append_attribute(out, "<CLASSNAME NAME=\"", class_name);
  out += "/>\n";
}

void append_instance_name(std::string& out, const InstanceName& name) {
  append_attribute(out, "<INSTANCENAME CLASSNAME=\"", name.class_name);
  out += ">\n";
  for (const KeyBinding& key : name.keys) append_key(out, key);
  out += "</INSTANCENAME>\n";
}

void append_namespace_path(std::string& out, std::string_view name_space) {
  out += "<LOCALNAMESPACEPATH>\n";
  while (!name_space.empty()) {
    const std::size_t slash = name_space.find('/');
    append_attribute(out, "<NAMESPACE NAME=\"", name_space.substr(0, slash));
    out += "/>\n";
    name_space.remove_prefix(slash == std::string_view::npos ? name_space.size() : slash + 1);
  }
  out += "</LOCALNAMESPACEPATH>\n";
}

void append_path(std::string& out, const Reference& reference) {
  const std::string element = reference.is_class ? "CLASSPATH" : "INSTANCEPATH";
  out += '<' + element + ">\n<NAMESPACEPATH>\n<HOST>";
  append_escaped(out, reference.host);
  out += "</HOST>\n";
  append_namespace_path(out, reference.name_space);
  out += "</NAMESPACEPATH>\n";
  append_reference_target(out, reference);
  out += "</" + element + ">\n";
}

InstanceWriter::InstanceWriter(const Class& type, const std::vector<std::size_t>& positions,
                               const Detail& detail) {
  append_attribute(start_, "<INSTANCE CLASSNAME=\"", type.name);
  start_ += " >\n";
  if (detail.qualifiers) append_qualifiers(start_, type.qualifiers);
  for (const std::size_t position : positions) {
    PropertyFrame frame = frame_of(type.properties[position], {}, detail);
    frames_.push_back(
        {position, std::move(frame.before), std::move(frame.after), std::move(frame.instead)});
  }
}

void InstanceWriter::append(std::string& out, const Instance& instance) const {
  out += start_;
  for (const Frame& frame : frames_) {
    const ValuePtr& value = instance.values[frame.position];
    if (!value || value->is_null()) {
      out += frame.instead;
      continue;
    }
    out += frame.before;
    append_value(out, *value);
    out += frame.after;
  }
  out += "</INSTANCE>\n";
}

void append_class(std::string& out, const Class& type, const ClassView& view,
                  const Detail& detail) {
  append_attribute(out, "<CLASS NAME=\"", type.name);
  out += ' ';
  append_attribute(out, " SUPERCLASS=\"", type.superclass_name);
  out += " >\n";
  if (detail.qualifiers) append_qualifiers(out, type.qualifiers, view.local_only);
  for (const std::size_t position : view.properties) {
    const Property& property = type.properties[position];
    const PropertyFrame frame = frame_of(property, {property.propagated, view.local_only}, detail);
    const bool is_null = property.default_value.is_null();
    out += is_null ? frame.instead : frame.before;
    if (is_null) continue;
    append_value(out, property.default_value);
    out += frame.after;
  }
  for (const Method& each : type.methods) {
    if (!view.local_only || !each.propagated) append_method(out, each, view.local_only, detail);
  }
  out += "</CLASS>\n";
}

}  // namespace simulator
