#pragma once

#include <string>

// Parses `text`; a document is then written, parsed again and compared, and written once more,
// unless the generator leaves something of it out. Aborts with a description when the two trees or
// the two texts differ.
void check_round_trip(const std::string& text);
