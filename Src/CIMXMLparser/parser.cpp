#include <cstring>
#include <exception>
#include <string_view>

#include "BRQ/Trace.h"
#include "CIMXMLparser/exact_parser.h"
#include "CIMXMLparser/quick_parser.h"
#include "CIMXMLparser/text.h"
#include "zuCIM/element.h"
#include "zuCIM/vocabulary.h"

namespace zuCIM {
namespace {

constexpr const char* trace_source = "Src/CIMXMLparser";

// Whether the document in `text` is complete. Plain messages take the quick way; the others are
// parsed once more by the exact one, which also knows what to trace.
bool parse_document(std::string_view text, CIMelement& root) {
  const std::size_t declaration = codec::find_unquoted(text, "<?xml ", 0);
  if (declaration == codec::npos) return false;
  const std::size_t begin = codec::find_unquoted(text, "<CIM ", declaration);
  if (begin == codec::npos) return false;
  const codec::QuickResult quick = codec::parse_quickly(text, begin, root);
  if (quick != codec::QuickResult::not_plain) return quick == codec::QuickResult::complete;
  root.eclean();
  return codec::parse_exactly(text, begin, root) == elem::CIM;
}

}  // namespace

unsigned CIMelement::ParseCIMXML(const std::string& text) noexcept {
  if (this == nullptr) return status::failure;
  try {
    eclean();
    const std::string_view message(text.c_str(), std::strlen(text.c_str()));
    return parse_document(message, *this) ? status::success : status::failure;
  } catch (const std::exception& error) {
    BRQ_TRACE(BRQ_MODULE_INFO_zuCIM, trace_level::error, trace_source,
              "ParseCIMXML: Exception raised: %s", error.what());
    return status::failure;
  }
}

}  // namespace zuCIM
