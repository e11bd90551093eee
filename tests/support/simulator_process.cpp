#include "support/simulator_process.h"

#include <array>
#include <cstdio>
#include <stdexcept>

namespace {

std::vector<std::string> command_line(const std::string& program,
                                      const std::vector<std::string>& arguments) {
  std::vector<std::string> command{program, "--port", "0"};
  command.insert(command.end(), arguments.begin(), arguments.end());
  return command;
}

}  // namespace

SimulatorProcess::SimulatorProcess(const std::string& program,
                                   const std::vector<std::string>& arguments)
    : process_(command_line(program, arguments)) {
  const std::string line = process_.read_line();
  std::array<char, 6> scheme{};
  std::array<char, 16> address{};
  if (std::sscanf(line.c_str(), "listening on %5[a-z]://%15[0-9.]:%d", scheme.data(),
                  address.data(), &port_) != 3) {
    process_.wait();
    throw std::runtime_error("the simulator did not start: " + line + process_.standard_error());
  }
  scheme_ = scheme.data();
  address_ = address.data();
}

std::string SimulatorProcess::url() const {
  return scheme_ + "://" + address_ + ':' + std::to_string(port_);
}

int SimulatorProcess::stop(int signal) {
  process_.send(signal);
  return process_.wait();
}
