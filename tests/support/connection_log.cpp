#include "support/connection_log.h"

std::size_t ConnectionLog::begin() {
  const std::lock_guard<std::mutex> guard(mutex_);
  records_.emplace_back();
  changed_.notify_all();
  return records_.size() - 1;
}

void ConnectionLog::add_bytes(std::size_t connection, const std::string& bytes) {
  const std::lock_guard<std::mutex> guard(mutex_);
  records_.at(connection).received += bytes;
  changed_.notify_all();
}

void ConnectionLog::add_request(std::size_t connection, const std::string& request) {
  const std::lock_guard<std::mutex> guard(mutex_);
  records_.at(connection).requests.push_back(request);
  requests_.push_back(request);
  changed_.notify_all();
}

void ConnectionLog::end(std::size_t connection, Ending ending) {
  const std::lock_guard<std::mutex> guard(mutex_);
  records_.at(connection).ending = ending;
  changed_.notify_all();
}

std::vector<ConnectionRecord> ConnectionLog::records() const {
  const std::lock_guard<std::mutex> guard(mutex_);
  return records_;
}

std::vector<std::string> ConnectionLog::requests() const {
  const std::lock_guard<std::mutex> guard(mutex_);
  return requests_;
}

bool ConnectionLog::wait(const std::function<bool(const std::vector<ConnectionRecord>&)>& reached,
                         std::chrono::milliseconds timeout) const {
  std::unique_lock<std::mutex> guard(mutex_);
  return changed_.wait_for(guard, timeout, [&] { return reached(records_); });
}
