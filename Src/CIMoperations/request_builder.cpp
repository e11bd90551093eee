#include <cstring>
#include <exception>
#include <iterator>
#include <string>
#include <string_view>

#include "CIMoperations/failure.h"
#include "CIMoperations/held_answer.h"
#include "zuCIM/container.h"
#include "zuCIM/vocabulary.h"

// The builder appends finished pieces of text: the bytes of a request are exactly these, and a
// request of many property names costs no formatting.
namespace zuCIM {
namespace {

constexpr const char* optional_parameters[] = {"LocalOnly", "IncludeQualifiers",
                                               "IncludeClassOrigin", "DeepInheritance"};

bool is_empty(const char* text) {
  return text == nullptr || *text == '\0';
}

// An id outside its table stands for the unknown name.
const char* element_name(int id) {
  return known_cim_elements[id >= 0 && id < elem::UNKNOWN ? id : elem::UNKNOWN];
}

const char* intrinsic_method_name(int id) {
  return known_cim_imethods[id >= 0 && id < imethod::unknown ? id : imethod::unknown];
}

void append_start(std::string& text, int element, const char* tail) {
  text.append("<").append(element_name(element));
  if (tail != nullptr) text.append(tail);
}

void append_attribute(std::string& text, int id, std::string_view value, const char* tail) {
  if (id >= 0 && id < attr::UNKNOWN && !value.empty())
    text.append(" ").append(known_cim_attributes[id]).append("=\"").append(value).append("\"");
  if (tail != nullptr) text.append(tail);
}

void append_end(std::string& text, int element) {
  text.append("</").append(element_name(element)).append(">\n");
}

void append_value(std::string& text, const char* value) {
  if (is_empty(value)) return;
  append_start(text, elem::VALUE, ">");
  text.append(value);
  append_end(text, elem::VALUE);
}

void append_parameter_start(std::string& text, const char* name, const char* tail) {
  append_start(text, elem::IPARAMVALUE, nullptr);
  append_attribute(text, attr::NAME, name, tail);
}

void append_namespace(std::string& text, std::string_view name) {
  append_start(text, elem::NAMESPACE, nullptr);
  append_attribute(text, attr::NAME, name, "/>\n");
}

// A namespace goes out in at most two pieces: only its first "/" separates.
void append_namespace_path(std::string& text, std::string_view name_space) {
  append_start(text, elem::LOCALNAMESPACEPATH, ">\n");
  const std::size_t slash = name_space.find('/');
  append_namespace(text, name_space.substr(0, slash));
  if (slash != std::string_view::npos && slash + 1 < name_space.size())
    append_namespace(text, name_space.substr(slash + 1));
  append_end(text, elem::LOCALNAMESPACEPATH);
}

void append_property_list(std::string& text, const CIMarray& names) {
  append_parameter_start(text, "PropertyList", ">\n");
  append_start(text, elem::VALUE_ARRAY, ">\n");
  for (unsigned i = 0; names.argv != nullptr && i < names.argc; ++i)
    append_value(text, static_cast<const char*>(names.argv[i]));
  append_end(text, elem::VALUE_ARRAY);
  append_end(text, elem::IPARAMVALUE);
}

// Runs `append` on the request text. A request whose text could not be completed must not be sent.
template <class Append>
void build(CIMcontainer& container, const char* function, Append append) noexcept {
  try {
    append(container.request);
  } catch (const std::exception& error) {
    abandon_request(container, function, error.what());
  }
}

}  // namespace

CIMclass* CIMcontainer::setCurrentClass(const char* class_name, const char* name_space) noexcept {
  const char* const name = class_name != nullptr ? class_name : "";
  const char* const space = is_empty(name_space) ? nsCIMV2 : name_space;
  currentClass = classes.findClassName(name, space);
  if (currentClass == nullptr) currentClass = classes.makeNextClass(name, space);
  return currentClass;
}

void CIMcontainer::beginElement(int element, const char* tail) noexcept {
  build(*this, "beginElement", [&](std::string& text) { append_start(text, element, tail); });
}

void CIMcontainer::addAttribute(int attribute, const char* text, const char* tail) noexcept {
  const std::string_view value = text != nullptr ? text : "";
  build(*this, "addAttribute",
        [&](std::string& out) { append_attribute(out, attribute, value, tail); });
}

void CIMcontainer::addValue(const char* text) noexcept {
  build(*this, "addValue", [&](std::string& out) { append_value(out, text); });
}

void CIMcontainer::endElement(int element) noexcept {
  build(*this, "endElement", [&](std::string& text) {
    if (element < 0)
      text.append("/>\n");
    else
      append_end(text, element);
  });
}

void CIMcontainer::addCIMXMLheader() noexcept {
  cleanXMLbuffer();
  cimStatus = status::success;
  messageId = static_cast<std::int32_t>(static_cast<std::uint32_t>(messageId) + 1U);
  build(*this, "addCIMXMLheader", [this](std::string& text) {
    text.append("<?xml version=\"1.0\" encoding=\"utf-8\" ?>\n")
        .append("<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\">\n")
        .append("<MESSAGE ID=\"")
        .append(std::to_string(messageId))
        .append("\" PROTOCOLVERSION=\"1.0\">\n");
  });
}

void CIMcontainer::beginIntrinsicMethod(int method) noexcept {
  methodName = intrinsic_method_name(method);
  addCIMXMLheader();
  build(*this, "beginIntrinsicMethod", [this](std::string& text) {
    append_start(text, elem::SIMPLEREQ, ">\n");
    append_start(text, elem::IMETHODCALL, nullptr);
    append_attribute(text, attr::NAME, methodName, ">\n");
  });
  addLocalNameSpacePath();
}

void CIMcontainer::addLocalNameSpacePath() noexcept {
  if (currentClass == nullptr || currentClass->nameSpace == nullptr) {
    reject_request(*this, "addLocalNameSpacePath() missing parameter: ClassName/NameSpace");
    return;
  }
  build(*this, "addLocalNameSpacePath",
        [this](std::string& text) { append_namespace_path(text, currentClass->nameSpace); });
}

void CIMcontainer::addClassNameParam(int required) noexcept {
  if (currentClass == nullptr || is_empty(currentClass->className)) {
    if (required == 1) reject_request(*this, "addClassNameParam() missing parameter: ClassName");
    return;
  }
  build(*this, "addClassNameParam", [this](std::string& text) {
    append_parameter_start(text, "ClassName", ">");
    append_start(text, elem::CLASSNAME, nullptr);
    append_attribute(text, attr::NAME, currentClass->className, "/>");
    append_end(text, elem::IPARAMVALUE);
  });
}

void CIMcontainer::addInstanceNameParam(CIMelement* instance_name) noexcept {
  if (instance_name == nullptr) {
    reject_request(*this, "addInstanceNameParam() InstanceName = NULL");
    return;
  }
  build(*this, "addInstanceNameParam", [&](std::string& text) {
    append_parameter_start(text, "InstanceName", ">\n");
    if (!is_document(*this, instance_name) && instance_name->GenerateCIMXML(text) == 0)
      append_end(text, elem::IPARAMVALUE);
    else
      reject_request(*this, "addInstanceNameParam() bad CIMelement: InstanceName");
  });
}

void CIMcontainer::addOptionalParameter(int parameter, int value) noexcept {
  const bool is_known = parameter >= 0 && parameter < std::ssize(optional_parameters);
  if (!is_known || (value != 0 && value != 1)) return;
  build(*this, "addOptionalParameter", [&](std::string& text) {
    append_parameter_start(text, optional_parameters[parameter], ">");
    append_value(text, value == 1 ? "true" : "false");
    append_end(text, elem::IPARAMVALUE);
  });
}

void CIMcontainer::addOptionalPropertyList(const CIMarray* names) noexcept {
  if (names == nullptr) return;
  build(*this, "addOptionalPropertyList",
        [&](std::string& text) { append_property_list(text, *names); });
}

}  // namespace zuCIM
