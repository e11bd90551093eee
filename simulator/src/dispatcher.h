#pragma once

#include <string>

#include "protocol.h"
#include "repository.h"
#include "xml_writer.h"

namespace simulator {

// Works on requests: finds the operation that a message calls and frames what it answers.
class Dispatcher {
 public:
  Dispatcher(const Repository& repository, const WireStyle& style)
      : repository_(repository), style_(style) {}

  // The response message. Errors of the operation are in it; errors of the protocol are thrown.
  std::string answer(const RequestMessage& message) const;

 private:
  void append_return_value(const RequestMessage& message, std::string& out) const;
  [[noreturn]] void refuse_extrinsic(const RequestMessage& message) const;
  const Namespace& require_namespace(const std::string& name) const;

  const Repository& repository_;
  WireStyle style_;
};

}  // namespace simulator
