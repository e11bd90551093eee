#include "tally.h"

namespace simulator {

namespace {

constexpr TallyBook::Field fields[] = {&Tally::queued,  &Tally::sent,   &Tally::accepted,
                                       &Tally::retried, &Tally::failed, &Tally::dropped};

}  // namespace

void TallyBook::count(const std::string& destination, Field field) {
  const std::lock_guard lock(mutex_);
  ++(tallies_[destination].*field);
}

Tally TallyBook::of(const std::string& destination) const {
  const std::lock_guard lock(mutex_);
  Tally sum;
  for (const auto& [name, tally] : tallies_) {
    if (!destination.empty() && name != destination) continue;
    for (const Field field : fields) sum.*field += tally.*field;
  }
  return sum;
}

}  // namespace simulator
