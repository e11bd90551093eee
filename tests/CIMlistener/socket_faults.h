#pragma once

#include <atomic>
#include <cstddef>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

// The calls to the system that can be made to fail.
enum class Call { recv, send, poll, accept, socket, listen, thread };

// What such a call is about to do.
struct CallDetails {
  int descriptor = -1;
  // recv and send: the number of bytes.
  std::size_t size = 0;
  // recv and send: the flags; poll: the milliseconds; listen: the backlog.
  int argument = 0;
};

// What a call does.
struct Outcome {
  enum class Kind { as_usual, failure, result, at_most, patient };

  // The real thing.
  static Outcome as_usual() { return {}; }
  // It fails with this `errno`; the start of a thread returns it.
  static Outcome failure(int error) { return {Kind::failure, error, 0}; }
  // It returns this without doing anything.
  static Outcome result(int value) { return {Kind::result, value, 0}; }
  // recv and send: the real thing for at most so many bytes.
  static Outcome at_most(std::size_t size) { return {Kind::at_most, 0, size}; }
  // poll: the real thing, but without end.
  static Outcome patient() { return {Kind::patient, 0, 0}; }

  Kind kind = Kind::as_usual;
  int value = 0;
  std::size_t size = 0;
};

// Decides on a call, on the thread that makes it.
using Fault = std::function<Outcome(const CallDetails&)>;

// These outcomes, one for each call; every further call is as usual.
inline Fault in_turn(std::vector<Outcome> outcomes) {
  auto next = std::make_shared<std::atomic<std::size_t>>(0);
  return [next, outcomes = std::move(outcomes)](const CallDetails&) {
    const std::size_t index = next->fetch_add(1);
    return index < outcomes.size() ? outcomes[index] : Outcome::as_usual();
  };
}

// The fault for calls with this argument only.
inline Fault only_with(int argument, Fault fault) {
  return [argument, fault = std::move(fault)](const CallDetails& call) {
    return call.argument == argument ? fault(call) : Outcome::as_usual();
  };
}

// Keeps the argument of each call, and has it end so. `arguments` must outlive the fault.
inline Fault keeping_arguments(std::vector<int>& arguments, Outcome outcome) {
  return [&arguments, outcome](const CallDetails& call) {
    arguments.push_back(call.argument);
    return outcome;
  };
}

// How many threads that this process started have not come to their end. Who sees one less also
// sees all that the thread did.
int living_threads();

// While it lives, decides on the calls that this process makes, whoever makes them. One at a time.
class SocketFaults {
 public:
  SocketFaults();
  ~SocketFaults();
  SocketFaults(const SocketFaults&) = delete;
  SocketFaults& operator=(const SocketFaults&) = delete;

  // Has `fault` decide on these calls from now on.
  SocketFaults& on(Call call, Fault fault);
};
