#pragma once

#include <cstdint>
#include <string>

#include "../repository.h"

namespace simulator {

// What tells one indication from another.
struct IndicationFacts {
  std::uint64_t number;          // of the event, the same for all who hear of it
  std::string context;           // of the numbers that a subscriber sees
  std::int64_t sequence_number;  // from 0, without a gap unless one is lost
  std::string filter_name;
};

// The class of that name, if it is one of indications and not abstract; else null.
const Class* find_indication_class(const Namespace& name_space, const std::string& class_name);

// An INSTANCE element of a class of indications, about nothing in particular.
std::string test_indication(const Class& type, const IndicationFacts& facts);

}  // namespace simulator
