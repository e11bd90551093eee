#pragma once

#include <cctype>
#include <chrono>
#include <concepts>
#include <cstddef>
#include <functional>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "CIMlistener/running_listener.h"
#include "CIMoperations/server_context.h"
#include "support/script.h"
#include "support/tls_channel.h"
#include "wire/wire_client.h"

// What ends an exchange with a hostile peer.
enum class EndedBy {
  peer,   // What the peer does; the clock stands still meanwhile.
  limit,  // A limit of the library; the clock stands still meanwhile.
  clock,  // The time-out, by a clock that goes on.
};

// One way in which a peer misbehaves, and what the library owes its caller then. The name goes on
// where "A server sends", or the like, begins.
struct Behaviour {
  std::string name;
  // The status; one of these where it depends on which side is faster.
  std::vector<int> statuses;
  EndedBy ended_by = EndedBy::peer;
  // The memory that the process needs for it at most, including what is used for the first time.
  std::size_t most_mebibytes = 16;
  // How long it may take by the wall clock, on a slow machine that does something else as well.
  std::chrono::seconds most_time{20};
};

// The same for what is large.
constexpr std::chrono::seconds time_for_much{60};

// An answer to one exchange.
struct AnswerBehaviour : Behaviour {
  std::function<script::Steps()> steps;
  unsigned info = 0;
  // What one of the trace lines contains.
  std::string trace = "";
  // How the client differs from an ordinary one.
  std::function<void(WireClient&)> prepare = [](WireClient&) {};
  // How many bytes of the answer come before the clock goes on.
  std::size_t awaited = 0;
};

// For the messages of gtest.
template <std::derived_from<Behaviour> Any>
void PrintTo(const Any& behaviour, std::ostream* out) {
  *out << behaviour.name;
}

// A TLS server. The server speaks plainly where it has no options.
struct TlsBehaviour : AnswerBehaviour {
  std::function<std::optional<TlsOptions>()> tls;
};

// A server during a whole operation, which may take many exchanges. Nobody sleeps between them.
struct OperationBehaviour : Behaviour {
  std::function<Scripts()> scripts;
  // Carries the operation out; the result is the status.
  std::function<int(ServerContext&)> operation;
  // How many requests it may take at most.
  std::size_t most_requests = 1;
  std::string trace = "";
};

// What a sender of indications does with a listener. The status is the number of indications that
// reach the callback.
struct SenderBehaviour : Behaviour {
  std::function<void(const RunningListener&)> send;
  std::string trace = "";
};

std::vector<AnswerBehaviour> transport_behaviours();
std::vector<AnswerBehaviour> head_behaviours();
std::vector<AnswerBehaviour> status_behaviours();
std::vector<AnswerBehaviour> document_behaviours();
std::vector<TlsBehaviour> tls_behaviours();
std::vector<OperationBehaviour> operation_behaviours();
std::vector<SenderBehaviour> sender_behaviours();

// The text so many times.
inline std::string repeated(std::size_t times, const std::string& text) {
  std::string result;
  result.reserve(times * text.size());
  while (times-- > 0) result += text;
  return result;
}

// The name as an identifier, for the name of a test.
inline std::string identifier(const std::string& name) {
  std::string result;
  bool starts_word = true;
  for (const char character : name) {
    const auto letter = static_cast<unsigned char>(character);
    if (std::isalnum(letter) != 0)
      result += static_cast<char>(starts_word ? std::toupper(letter) : letter);
    starts_word = std::isalnum(letter) == 0;
  }
  return result;
}
