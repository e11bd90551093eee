#pragma once

#include <string>

namespace simulator {

// The message that hands an indication, an INSTANCE element, to a listener.
std::string export_request(int message_id, const std::string& indication);

// What is wrong with the body of an answer to the message of that number; empty if it says that the
// indication was taken.
std::string fault_of_export_response(const std::string& body, int message_id);

}  // namespace simulator
