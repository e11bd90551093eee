#pragma once

#include <string>
#include <string_view>

namespace simulator {

// The class that a query of the form "select * from CLASS" selects from. Throws CimError for other
// queries and for languages that are not known.
std::string read_query(std::string_view language, std::string_view query);

// The class that the query of an indication filter selects from: "select ... from CLASS", with
// properties in the place of the asterisk or a condition at the end if the client likes. Throws
// CimError for other queries and for languages that are not known.
std::string read_filter_query(std::string_view language, std::string_view query);

}  // namespace simulator
