#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "outbox.h"

namespace simulator {

// Delivers indications to all destinations, each at its own pace. Safe to use from any thread.
class Courier {
 public:
  // `report` gets a line for each indication that is delivered or fails, on any thread.
  explicit Courier(std::function<void(const std::string& line)> report,
                   const DeliveryRules& rules = {});

  // Sends an indication on its way; later ones for the same destination arrive after it.
  void post(const std::string& destination, Delivery delivery);

  // To be called when a subscription has ended: what waits for another attempt is dropped.
  void look_at_tickets();

  // What became of the indications for a destination; for all together where it is empty.
  Tally tally(const std::string& destination) const { return desk_.tallies.of(destination); }

  // Ends all deliveries at once; nothing is taken from here on.
  void stop();

 private:
  void forget_idle();

  DeliveryDesk desk_;
  std::mutex mutex_;
  std::map<std::string, std::unique_ptr<Outbox>> outboxes_;
  bool stopped_ = false;
};

}  // namespace simulator
