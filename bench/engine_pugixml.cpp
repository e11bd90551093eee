#include <memory>
#include <pugixml.hpp>

#include "engines.h"

namespace bench {
namespace {

class StringWriter : public pugi::xml_writer {
 public:
  void write(const void* data, std::size_t size) override {
    text.append(static_cast<const char*>(data), size);
  }

  std::string text;
};

}  // namespace

bool parse_with_pugixml(const std::string& text) {
  pugi::xml_document document;
  return static_cast<bool>(document.load_buffer(text.data(), text.size()));
}

Generate generate_with_pugixml(const std::string& text) {
  const auto document = std::make_shared<pugi::xml_document>();
  document->load_buffer(text.data(), text.size());
  return [document] {
    StringWriter writer;
    document->save(writer, "");
    return writer.text.size();
  };
}

}  // namespace bench
