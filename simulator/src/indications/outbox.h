#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

#include "export_client.h"
#include "tally.h"

namespace simulator {

// How hard delivery is tried.
struct DeliveryRules {
  int attempts = 5;
  std::chrono::milliseconds first_pause{250};  // each pause is twice as long as the one before
  std::size_t longest_queue = 10000;           // of one destination
  PostLimits limits;
};

// What all destinations have in common; outlives them.
struct DeliveryDesk {
  DeliveryRules rules;
  std::function<void(const std::string& line)> report;  // may be called from any thread
  TallyBook tallies;
  std::atomic<int> last_message_id = 1000;
};

// Whether a subscription still stands.
struct Ticket {
  std::atomic<bool> ended = false;
};

// An indication on its way.
struct Delivery {
  std::string indication;  // an INSTANCE element
  std::shared_ptr<const Ticket> ticket;
};

// Delivers indications to one destination, one after the other, on a thread of its own: what cannot
// be delivered holds up nobody else.
//
// Thread rule: all members may be called from any thread. The destructor ends what is at work at
// once and drops what waits.
class Outbox {
 public:
  Outbox(std::string destination, DeliveryDesk& desk);
  ~Outbox();
  Outbox(const Outbox&) = delete;
  Outbox& operator=(const Outbox&) = delete;

  // Takes an indication; where too many wait already it is dropped.
  void push(Delivery delivery);

  // Looks again at whether a subscription has ended.
  void wake();

  // Whether nothing has waited or been at work for that long.
  bool is_idle_for(std::chrono::seconds span) const;

 private:
  using Clock = std::chrono::steady_clock;

  void run();
  std::optional<Delivery> next();
  void finish();
  void deliver(const Delivery& delivery);
  bool attempt(const Delivery& delivery, int number);
  std::string fault_of_post(const Delivery& delivery, int message_id);
  bool pause(const Delivery& delivery, std::chrono::milliseconds span);
  void conclude(TallyBook::Field field, const std::string& line);

  const std::string destination_;
  DeliveryDesk& desk_;
  ExportClient client_;
  mutable std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<Delivery> waiting_;
  bool busy_ = false;
  bool stopping_ = false;
  Clock::time_point last_used_ = Clock::now();
  std::thread worker_;  // last, so that it starts when all else is there
};

}  // namespace simulator
