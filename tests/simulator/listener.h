#pragma once

#include <string>
#include <vector>

#include "support/scripted_server.h"

// Listeners for indications, as scripts of a scripted server.

// What a listener answers that took the indication: like the library's own, with lines that end
// without carriage returns.
std::string accepting_answer(const std::string& request);

// A connection that takes one indication.
script::Steps accepting();

// A connection that reads one request and sends these bytes.
script::Steps answering(const std::string& bytes);

// Where a listener is reached.
std::string url_of(const ScriptedServer& server, const std::string& path = "/test");

// The MESSAGE ID of an export request.
std::string message_id_of(const std::string& request);

// What stands between `before` and `after` in each request; empty where it does not.
std::vector<std::string> pieces_of(const std::vector<std::string>& requests,
                                   const std::string& before, const std::string& after);

// The SequenceNumbers of requests.
std::vector<std::string> sequence_numbers_of(const std::vector<std::string>& requests);
