#pragma once

#include <string>

#include "fair_shared_mutex.h"
#include "indications/indications.h"
#include "protocol.h"
#include "repository.h"
#include "xml_writer.h"

namespace simulator {

// Works on requests: finds the operation that a message calls and frames what it answers. Any
// number of threads may ask at the same time; a change keeps all others out.
class Dispatcher {
 public:
  Dispatcher(Repository& repository, Indications& indications, const WireStyle& style)
      : repository_(repository), indications_(indications), style_(style) {}

  // The response message. Errors of the operation are in it; errors of the protocol are thrown.
  std::string answer(const RequestMessage& message) const;

  // Sends a test indication of a class, as a method call would.
  void send_test_indication(const std::string& class_name) const;

 private:
  void append_return_value(const RequestMessage& message, std::string& out) const;
  void call_method(const RequestMessage& message, std::string& out) const;
  void work(const RequestMessage& message, std::string& out) const;
  Namespace& require_namespace(const std::string& name) const;

  Repository& repository_;
  Indications& indications_;
  WireStyle style_;
  mutable FairSharedMutex mutex_;  // of the repository and what watches over it
};

}  // namespace simulator
