#pragma once

#include <signal.h>

#include <string>
#include <vector>

#include "support/child_process.h"

// A zucim-simulator that runs as long as this object lives, on a port of its own that the system
// picked. Unless the arguments say otherwise it listens on 127.0.0.2 and wants the user "root"
// with the password "secret".
//
//   SimulatorProcess simulator({"--instances", "CIM_NumericSensor=1000"});
//   ... connect to simulator.address(), simulator.port() ...
class SimulatorProcess {
 public:
  // Returns when the simulator listens. Throws std::runtime_error, with what the simulator wrote
  // on standard error, if it ends instead. Test programs know where the simulator lies.
#ifdef ZUCIM_SIMULATOR
  explicit SimulatorProcess(const std::vector<std::string>& arguments = {})
      : SimulatorProcess(ZUCIM_SIMULATOR, arguments) {}
#endif
  SimulatorProcess(const std::string& program, const std::vector<std::string>& arguments);

  // "http" or "https".
  const std::string& scheme() const {
    return scheme_;
  }
  const std::string& address() const {
    return address_;
  }
  int port() const {
    return port_;
  }

  // For example "http://127.0.0.2:40001".
  std::string url() const;

  // What it wrote on standard error up to now (with "--verbose", a line for each request).
  std::string log() const {
    return process_.standard_error();
  }

  // Ends it by a signal and returns its exit status.
  int stop(int signal = SIGTERM);

 private:
  ChildProcess process_;
  std::string scheme_;
  std::string address_;
  int port_ = 0;
};
