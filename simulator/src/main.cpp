#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <exception>
#include <optional>
#include <thread>

#include "dispatcher.h"
#include "endpoint.h"
#include "growth.h"
#include "indications/courier.h"
#include "indications/indications.h"
#include "loader.h"
#include "options.h"
#include "repository.h"
#include "server.h"
#include "ticker.h"

namespace {

using namespace simulator;

// To be called before any thread starts: the signals that end the program are taken by wait_for.
sigset_t hold_back_signals() {
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGTERM);
  sigaddset(&signals, SIGINT);
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);
  return signals;
}

void wait_for(const sigset_t& signals) {
  int received = 0;
  sigwait(&signals, &received);
}

void log_line(const std::string& line) {
  std::fprintf(stderr, "%s\n", line.c_str());
}

void ignore_line(const std::string&) {}

int run(const Options& options) {
  const sigset_t signals = hold_back_signals();
  Repository repository;
  load_directory(repository, options.data);
  for (const auto& [class_name, count] : options.growth) grow(repository, class_name, count);

  Courier courier(options.verbose ? log_line : ignore_line);
  Indications indications(repository, courier);
  const Dispatcher dispatcher(repository, indications, options.style);
  const Endpoint endpoint(dispatcher, {options.user, options.password, options.anonymous});
  Server server(endpoint, options);
  const int port = server.bind();
  std::printf("listening on %s://%s:%d\n", options.https ? "https" : "http",
              options.address.c_str(), port);
  std::fflush(stdout);

  std::thread serving([&] {
    if (!server.serve()) kill(getpid(), SIGTERM);
  });
  std::optional<Ticker> ticker;
  if (options.indications_per_second > 0) {
    ticker.emplace(
        options.indications_per_second,
        [&] { dispatcher.send_test_indication(Indications::usual_class); },
        [](const std::string& line) { log_line("no test indication: " + line); });
  }
  wait_for(signals);
  ticker.reset();
  courier.stop();
  server.stop();
  serving.join();
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  const CommandLine command_line = read_command_line(argc, argv);
  if (!command_line.go_on) return command_line.exit_status;
  try {
    return run(command_line.options);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "zucim-simulator: %s\n", error.what());
    return 1;
  }
}
