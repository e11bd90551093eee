#pragma once

#include <string>
#include <string_view>

namespace simulator {

// The class that a query of the form "select * from CLASS" selects from. Throws CimError for other
// queries and for languages that are not known.
std::string read_query(std::string_view language, std::string_view query);

}  // namespace simulator
