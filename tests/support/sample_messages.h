#pragma once

#include <string>
#include <vector>

// The messages that docs/requests.md shows whole: a request and an answer for each operation.
// Throws std::runtime_error when the page cannot be read.
std::vector<std::string> messages_of_page(const std::string& path);

#ifdef ZUCIM_SOURCE_DIR
// The same; test programs know where the page lies.
inline std::vector<std::string> sample_messages() {
  return messages_of_page(ZUCIM_SOURCE_DIR "/docs/requests.md");
}
#endif
