#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

// How a connection of the scripted server ended.
enum class Ending {
  running,         // It is still playing.
  played,          // The script was played to its end.
  closed_by_peer,  // The peer closed or reset it before that.
  refused,         // The TLS handshake failed, or no script was left for it.
  server_stopped,  // The server was destroyed.
};

// What one connection did.
struct ConnectionRecord {
  std::string received;
  std::vector<std::string> requests;
  Ending ending = Ending::running;
};

// What all connections of a server did, safe to read and wait on from any thread.
class ConnectionLog {
 public:
  // Notes a new connection and returns its number.
  std::size_t begin();
  // Notes bytes that arrived.
  void add_bytes(std::size_t connection, const std::string& bytes);
  // Notes a whole HTTP request.
  void add_request(std::size_t connection, const std::string& request);
  // Notes the end of a connection.
  void end(std::size_t connection, Ending ending);

  // A copy of the records, in the order of the connections.
  std::vector<ConnectionRecord> records() const;
  // All whole requests, in the order in which they were complete.
  std::vector<std::string> requests() const;
  // Waits until `reached` says so of the records; false when `timeout` passes first.
  bool wait(const std::function<bool(const std::vector<ConnectionRecord>&)>& reached,
            std::chrono::milliseconds timeout) const;

 private:
  mutable std::mutex mutex_;
  mutable std::condition_variable changed_;
  std::vector<ConnectionRecord> records_;
  std::vector<std::string> requests_;
};
