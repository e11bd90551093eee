#include "documents.h"
#include "writer.h"

namespace bench {
namespace {

constexpr unsigned seed = 5988;
constexpr int properties = 80;
constexpr int methods = 12;

std::string qualifier(const char* name, const char* type) {
  return "QUALIFIER NAME=\"" + std::string(name) + "\" TYPE=\"" + type + "\" TRANSLATABLE=\"true\"";
}

void add_text(Writer& out, const char* name, const std::string& text) {
  out.open(qualifier(name, "string")).value(text).close("QUALIFIER");
}

void add_flag(Writer& out, const char* name) {
  out.open(qualifier(name, "boolean")).value("TRUE").close("QUALIFIER");
}

void add_list(Writer& out, const char* name, Random& random, std::size_t count) {
  out.open(qualifier(name, "string")).open("VALUE.ARRAY");
  for (std::size_t i = 0; i < count; ++i) out.value(random.words(2));
  out.close("VALUE.ARRAY").close("QUALIFIER");
}

std::string description(Random& random) {
  return random.words(30) + " &lt;" + random.word() + "&gt;: " + random.words(40) + ".&#10;";
}

void add_property(Writer& out, Random& random, int index) {
  const std::string name = "Property" + std::to_string(index);
  out.open("PROPERTY NAME=\"" + name +
           "\"  CLASSORIGIN=\"CIM_ManagedElement\" PROPAGATED=\"true\" TYPE=\"uint16\"");
  add_text(out, "Description", description(random));
  if (index < 4) add_flag(out, "Key");
  if (index % 3 == 0) {
    add_list(out, "ValueMap", random, 12);
    add_list(out, "Values", random, 12);
  }
  if (index % 5 == 0) add_list(out, "ModelCorrespondence", random, 2);
  out.close("PROPERTY");
}

void add_parameter(Writer& out, Random& random, int index) {
  out.open("PARAMETER NAME=\"Parameter" + std::to_string(index) + "\" TYPE=\"string\"");
  add_flag(out, index % 2 == 0 ? "IN" : "OUT");
  add_text(out, "Description", description(random));
  out.close("PARAMETER");
}

void add_method(Writer& out, Random& random, int index) {
  out.open("METHOD NAME=\"Method" + std::to_string(index) + "\"  TYPE=\"uint32\"");
  add_text(out, "Description", description(random));
  for (int i = 0; i < 4; ++i) add_parameter(out, random, i);
  out.close("METHOD");
}

}  // namespace

std::string class_definition() {
  Random random(seed);
  Writer out;
  begin_answer(out, "GetClass");
  out.open("CLASS NAME=\"HOST_NumericSensor\"  SUPERCLASS=\"CIM_NumericSensor\" ");
  add_text(out, "Version", "2.36.0");
  add_text(out, "Description", description(random));
  for (int i = 0; i < properties; ++i) add_property(out, random, i);
  for (int i = 0; i < methods; ++i) add_method(out, random, i);
  out.close("CLASS");
  return end_answer(out);
}

}  // namespace bench
