#include "outbox.h"

#include <exception>
#include <utility>

namespace simulator {

namespace {

constexpr int message_ids = 1'000'000'000;

}  // namespace

Outbox::Outbox(std::string destination, DeliveryDesk& desk)
    : destination_(std::move(destination)),
      desk_(desk),
      client_(desk.rules.limits),
      worker_([this] { run(); }) {}

Outbox::~Outbox() {
  {
    const std::lock_guard lock(mutex_);
    stopping_ = true;
  }
  client_.interrupt();
  changed_.notify_all();
  worker_.join();
}

void Outbox::push(Delivery delivery) {
  desk_.tallies.count(destination_, &Tally::queued);
  {
    const std::lock_guard lock(mutex_);
    last_used_ = Clock::now();
    if (waiting_.size() < desk_.rules.longest_queue) {
      waiting_.push_back(std::move(delivery));
      changed_.notify_all();
      return;
    }
  }
  conclude(&Tally::dropped, "dropped: too many wait");
}

void Outbox::wake() {
  const std::lock_guard lock(mutex_);
  changed_.notify_all();
}

bool Outbox::is_idle_for(std::chrono::seconds span) const {
  const std::lock_guard lock(mutex_);
  return !busy_ && waiting_.empty() && Clock::now() - last_used_ >= span;
}

void Outbox::run() {
  while (const auto delivery = next()) {
    deliver(*delivery);
    finish();
  }
}

// Nothing when there is nothing more to do.
std::optional<Delivery> Outbox::next() {
  std::unique_lock lock(mutex_);
  changed_.wait(lock, [this] { return stopping_ || !waiting_.empty(); });
  if (stopping_) return std::nullopt;
  Delivery delivery = std::move(waiting_.front());
  waiting_.pop_front();
  busy_ = true;
  return delivery;
}

void Outbox::finish() {
  const std::lock_guard lock(mutex_);
  busy_ = false;
  last_used_ = Clock::now();
}

void Outbox::deliver(const Delivery& delivery) {
  auto span = desk_.rules.first_pause;
  for (int number = 1; !delivery.ticket->ended; ++number, span *= 2) {
    if (attempt(delivery, number)) return;
    if (number >= desk_.rules.attempts) return conclude(&Tally::failed, "given up");
    if (!pause(delivery, span)) break;
  }
  conclude(&Tally::dropped, "dropped: its subscription is gone");
}

bool Outbox::attempt(const Delivery& delivery, int number) {
  const int message_id = 1 + desk_.last_message_id++ % message_ids;
  desk_.tallies.count(destination_, &Tally::sent);
  if (number > 1) desk_.tallies.count(destination_, &Tally::retried);
  const std::string fault = fault_of_post(delivery, message_id);
  const std::string what =
      "message " + std::to_string(message_id) + ", attempt " + std::to_string(number);
  if (fault.empty()) {
    conclude(&Tally::accepted, what + ": accepted");
    return true;
  }
  desk_.report("indication to " + destination_ + ": " + what + ": " + fault);
  return false;
}

// Empty if the listener took it. What the simulator itself lacks is a fault like any other: this
// thread has nobody to tell it to.
std::string Outbox::fault_of_post(const Delivery& delivery, int message_id) {
  try {
    return client_.post(destination_, message_id, delivery.indication);
  } catch (const std::exception& error) {
    return std::string("it cannot be sent: ") + error.what();
  }
}

// False if there is no reason to go on after it.
bool Outbox::pause(const Delivery& delivery, std::chrono::milliseconds span) {
  std::unique_lock lock(mutex_);
  return !changed_.wait_for(lock, span, [&] { return stopping_ || delivery.ticket->ended.load(); });
}

void Outbox::conclude(TallyBook::Field field, const std::string& line) {
  desk_.report("indication to " + destination_ + ": " + line);
  desk_.tallies.count(destination_, field);
}

}  // namespace simulator
