#include "support/sample_messages.h"

#include <fstream>
#include <iterator>
#include <stdexcept>

std::vector<std::string> messages_of_page(const std::string& path) {
  const std::string start = "```xml\n";
  const std::string end = "```\n";
  const std::string omission = " more lines)\n";
  std::ifstream file(path);
  if (!file) throw std::runtime_error("cannot read " + path);
  const std::string page{std::istreambuf_iterator<char>(file), {}};
  std::vector<std::string> messages;
  std::size_t position = page.find(start);
  while (position != page.npos) {
    const std::size_t after = position + start.size();
    const std::size_t length = page.find(end, after) - after;
    if (page.substr(after, length).find(omission) == page.npos)
      messages.push_back(page.substr(after, length));
    position = page.find(start, after + length + end.size());
  }
  return messages;
}
