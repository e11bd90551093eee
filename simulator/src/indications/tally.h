#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <string>

namespace simulator {

// What became of the indications for a destination.
struct Tally {
  std::uint64_t queued = 0;    // indications that were to be delivered
  std::uint64_t sent = 0;      // requests that were tried
  std::uint64_t accepted = 0;  // indications that the listener took
  std::uint64_t retried = 0;   // requests that were not the first for their indication
  std::uint64_t failed = 0;    // indications that were given up after the last attempt
  std::uint64_t dropped = 0;   // indications whose subscription went, or that found no room

  // Indications that nothing has become of yet.
  std::uint64_t pending() const { return queued - accepted - failed - dropped; }
};

// The tallies of all destinations. Safe to use from any thread.
class TallyBook {
 public:
  using Field = std::uint64_t Tally::*;

  // Counts one more.
  void count(const std::string& destination, Field field);

  // The tally of a destination; of all together where it is empty.
  Tally of(const std::string& destination) const;

 private:
  mutable std::mutex mutex_;
  std::map<std::string, Tally> tallies_;
};

}  // namespace simulator
