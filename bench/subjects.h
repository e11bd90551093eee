#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace bench {

// A document of the codec's table.
struct Subject {
  std::string name;
  std::function<std::string()> make;
  // Number of instances or names in it.
  std::size_t items = 1;
  // How deep its elements are nested, roughly.
  std::size_t depth = 10;
};

const std::vector<Subject>& subjects();

}  // namespace bench
