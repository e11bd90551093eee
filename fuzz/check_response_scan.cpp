#include "check_response_scan.h"

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <memory>
#include <string_view>

#include "CIMconnection/response_scan.h"
#include "failure.h"
#include "zuCIM/vocabulary.h"

namespace {

constexpr long long largest = std::numeric_limits<int>::max();
constexpr long long smallest = std::numeric_limits<int>::min();

// A copy in a block that ends with it, so that a byte too much is seen.
std::unique_ptr<char[]> exact_copy(std::string_view text) {
  auto copy = std::make_unique<char[]>(text.size());
  std::ranges::copy(text, copy.get());
  return copy;
}

int plain_number(const std::string& text) {
  return static_cast<int>(std::clamp(std::strtoll(text.c_str(), nullptr, 10), smallest, largest));
}

void check_verdict(const std::optional<zuCIM::HeaderVerdict>& verdict, std::string_view header,
                   std::string_view name) {
  const std::size_t start = header.find(name);
  require(verdict.has_value() == (start != header.npos), "a verdict stands for what is there");
  if (!verdict) return;
  require(verdict->text.data() == header.data() + start, "its text starts with the name");
  require(verdict->text.size() <= header.size() - start, "its text lies within the header");
}

}  // namespace

void check_header_scan(const std::string& header) {
  const auto copy = exact_copy(header);
  const std::string_view view(copy.get(), header.size());
  require(zuCIM::decimal_number(view) == plain_number(header), "the number is strtoll's");
  require(zuCIM::http_status(plain_number(header)) >= plain_number(header), "nothing wraps");
  check_verdict(zuCIM::find_status_line(view), view, "HTTP/1.");
  const auto code = zuCIM::find_cim_status_code(view);
  check_verdict(code, view, "CIMStatusCode:");
  if (code) require(code->number == plain_number(std::string(code->text.substr(14))), "the code");
}

void check_error_scan(const std::string& attributes) {
  zuCIM::CIMelement root;
  root.ParseCIMXML("<?xml ?><CIM ><ERROR " + attributes + "/></CIM>");
  zuCIM::CIMelement* const error = zuCIM::find_error_element(root);
  if (error == nullptr) return;
  const zuCIM::ErrorVerdict verdict = zuCIM::read_error_element(*error);
  require(verdict.code > 0, "an ERROR element is a failure");
  require(verdict.text != nullptr, "an ERROR element has a text");
}
