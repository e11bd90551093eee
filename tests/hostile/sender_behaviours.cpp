#include <sys/socket.h>

#include "hostile/behaviour.h"
#include "support/channel.h"

// What a machine does to the listener that it should send indications to. Silence is not among
// these: how long a listener bears it is tested with the readers.

namespace {

const std::string request = export_request("1042");
const std::string body = export_request_body("1042");

// Sends bytes as far as the listener takes them and waits for its end of the connection.
void send_and_wait(const RunningListener& running, const std::string& bytes, std::size_t times) {
  const Descriptor socket = running.connect();
  for (; times > 0; --times)
    if (::send(socket.number(), bytes.data(), bytes.size(), MSG_NOSIGNAL) < 0) break;
  char byte = 0;
  while (::recv(socket.number(), &byte, 1, 0) > 0) {
  }
}

SenderBehaviour sends(const std::string& name, int indications, const std::string& bytes,
                      const std::string& trace = "", std::size_t times = 1) {
  return {{name, {indications}},
          [bytes, times](const RunningListener& running) { send_and_wait(running, bytes, times); },
          trace};
}

SenderBehaviour claims(const std::string& name, const std::string& length,
                       const std::string& trace) {
  return sends(name, 0, export_request_head(length) + body, trace);
}

// Ends its connection after these bytes, in good order or not.
SenderBehaviour leaves(const std::string& name, const std::string& bytes, bool resets,
                       const std::string& trace) {
  return {{name, {0}},
          [=](const RunningListener& running) {
            Descriptor socket = running.connect_and_send(bytes);
            if (resets) reset_socket(socket);
          },
          trace};
}

}  // namespace

std::vector<SenderBehaviour> sender_behaviours() {
  const std::string no_length = "readerThread: missing Content-Length";
  const std::string too_large = "readerThread: Content-Length is too large";
  const std::string closed = "readerThread: connection has been gracefully closed";
  const std::string kilobytes(65536, 'x');
  return {
      claims("a negative length", "-1", no_length),
      claims("a length of 0", "0", no_length),
      claims("a length that is no number", "many", no_length),
      claims("no length", "", no_length),
      claims("a length beyond the limit", "16777217", too_large),
      claims("a length beyond 64 bits", "99999999999999999999999", too_large),
      sends("a head of 10 MiB", 0, "POST / HTTP/1.1\r\nX: " + kilobytes, no_length, 160),
      sends("header lines of 10 MiB", 0, "X: " + kilobytes.substr(0, 60) + "\r\n", no_length,
            150000),
      sends("garbage", 0, std::string(10000, '\xA5'), no_length),
      sends("binary zeros", 0, std::string(10000, '\0'), no_length),
      sends("the greeting of a TLS client", 0,
            std::string("\x16\x03\x01\x00\x05\x01\x00\x00\x01\x03", 10), no_length),
      sends("the preface of HTTP/2", 0, "PRI * HTTP/2.0\r\n\r\nSM\r\n\r\n", no_length),
      sends("chunks instead of a length", 0,
            "POST / HTTP/1.1\r\nTransfer-Encoding: chunked\r\n\r\n5\r\nabcde\r\n0\r\n\r\n",
            no_length),
      sends("a length that is too small", 1, export_request_head("1") + body),
      sends("two different lengths", 1,
            export_request_head("1\r\nContent-Length: 999999999") + body),
      sends("a hundred requests over one connection", 1, request, "", 100),
      sends("a body that goes on for ever behind its length", 1, request + kilobytes, "", 1000),
      sends("a message id beyond every number", 1, export_request(std::string(100, '9'))),
      sends("a message id with markup", 1, export_request("\"><x y=\"")),
      {{"a body of the largest size", {1}, EndedBy::peer, 128, time_for_much},
       [](const RunningListener& running) {
         std::string largest = body;
         largest.resize(zuCIM::listener_limit::largest_body, ' ');
         send_and_wait(running, export_request_with(largest), 1);
       }},
      leaves("nothing, and closes", "", false, closed),
      leaves("half a request, and closes", request.substr(0, request.size() - 50), false, closed),
      leaves("half a request, and resets", request.substr(0, request.size() - 50), true,
             "readerThread: ERROR in 'recv'"),
      {{"a flood of three hundred connections that close at once",
        {0},
        EndedBy::peer,
        64,
        time_for_much},
       [](const RunningListener& running) {
         for (int i = 0; i < 300; ++i) running.connect();
       }},
      {{"more half-open connections than there are readers", {0}, EndedBy::peer, 64, time_for_much},
       [](const RunningListener& running) {
         std::vector<Descriptor> sockets;
         for (int i = 0; i < zuCIM::listener_limit::most_readers + 50; ++i)
           sockets.push_back(running.connect_and_send("POST / HTTP/1.1\r\nContent-Length: 9\r\n"));
       }},
  };
}
