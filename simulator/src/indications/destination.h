#pragma once

#include <string>

namespace simulator {

// Whether indications can be sent to a URL: it is a whole one, with the scheme http and a host.
bool is_destination(const std::string& url);

}  // namespace simulator
