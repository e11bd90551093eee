#include "CIMconnection/data_callback.h"

#include <string>

namespace zuCIM {

std::size_t append_data(char* data, std::size_t size, std::size_t count, void* text) noexcept {
  const std::size_t length = size * count;
  if (length == 0 || text == nullptr) return 0;
  try {
    static_cast<std::string*>(text)->append(data, length);
    return length;
  } catch (...) {
    return 0;
  }
}

}  // namespace zuCIM
