#include "courier.h"

#include <utility>

namespace simulator {

namespace {

// A destination that is not used keeps its thread for so long.
constexpr std::chrono::seconds idle_span{30};

}  // namespace

Courier::Courier(std::function<void(const std::string& line)> report, const DeliveryRules& rules) {
  desk_.report = std::move(report);
  desk_.rules = rules;
}

void Courier::post(const std::string& destination, Delivery delivery) {
  const std::lock_guard lock(mutex_);
  if (stopped_) return;
  forget_idle();
  auto found = outboxes_.find(destination);
  if (found == outboxes_.end()) {
    found = outboxes_.emplace(destination, std::make_unique<Outbox>(destination, desk_)).first;
  }
  found->second->push(std::move(delivery));
}

void Courier::look_at_tickets() {
  const std::lock_guard lock(mutex_);
  for (const auto& [destination, outbox] : outboxes_) outbox->wake();
}

void Courier::stop() {
  const std::lock_guard lock(mutex_);
  stopped_ = true;
  outboxes_.clear();
}

void Courier::forget_idle() {
  std::erase_if(outboxes_, [](const auto& each) { return each.second->is_idle_for(idle_span); });
}

}  // namespace simulator
