#include <array>

#include "documents.h"
#include "writer.h"

namespace bench {
namespace {

constexpr unsigned seed = 5990;

// The elements that nest, from the outside in.
constexpr std::array<const char*, 4> levels{"VALUE.OBJECT", "INSTANCE", "PROPERTY", "VALUE.ARRAY"};

std::string level_name(std::size_t depth) {
  return levels[depth % levels.size()];
}

void close_levels(Writer& out, std::size_t depth) {
  while (depth-- > 0) out.close(level_name(depth));
}

// Opens levels until the text, with the end tags that belong to it, has about `size` bytes. Each
// level begins with what `add_content` writes.
template <class AddContent>
std::string nest_until(std::size_t size, AddContent add_content) {
  Writer out;
  begin_answer(out, "EnumerateInstances");
  std::size_t depth = 0;
  for (std::size_t end_tags = 0; out.size() + end_tags < size; ++depth) {
    out.open(level_name(depth));
    add_content(out, depth);
    end_tags += level_name(depth).size() + 4;
  }
  close_levels(out, depth);
  return end_answer(out);
}

}  // namespace

std::string long_text(std::size_t length) {
  Random random(seed);
  std::string text;
  while (text.size() < length) text += random.word() + ' ';
  text.resize(length);
  Writer out;
  begin_answer(out, "EnumerateInstances");
  out.open("VALUE.NAMEDINSTANCE").open("INSTANCENAME CLASSNAME=\"CIM_Log\"").close("INSTANCENAME");
  out.open("INSTANCE CLASSNAME=\"CIM_Log\" ").open("PROPERTY NAME=\"Text\"  TYPE=\"string\"");
  out.value(text).close("PROPERTY").close("INSTANCE").close("VALUE.NAMEDINSTANCE");
  return end_answer(out);
}

std::string nested(std::size_t depth) {
  Writer out;
  begin_answer(out, "EnumerateInstances");
  for (std::size_t i = 0; i < depth; ++i) out.open(level_name(i));
  out.value("deep");
  close_levels(out, depth);
  return end_answer(out);
}

std::string stray_quotes(std::size_t size) {
  return nest_until(size, [](Writer& out, std::size_t depth) {
    const char* const text = depth % 2 == 0 ? "it's" : "3.5\" disk";
    out.value(text).value(text);
  });
}

std::string lookalikes(std::size_t size) {
  return nest_until(size, [](Writer& out, std::size_t depth) {
    const std::string name = level_name(depth);
    out.value("\"<" + name + "> </" + name + ">\"").line('<' + name + "\t/>");
  });
}

std::string comments(std::size_t size) {
  return nest_until(size, [](Writer& out, std::size_t depth) {
    out.line("<!-- </" + level_name(depth) + "> it's <" + level_name(depth) + " -->");
  });
}

std::string unclosed(std::size_t size) {
  Writer out;
  begin_answer(out, "EnumerateInstances");
  for (std::size_t depth = 0; out.size() < size; ++depth) out.open(level_name(depth));
  return out.take();
}

}  // namespace bench
