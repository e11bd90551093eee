#include "support/simulator_process.h"

#include <regex>
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
  static const std::regex form("listening on (https?)://([0-9.]+):([0-9]+)");
  const std::string line = process_.read_line();
  std::smatch found;
  if (!std::regex_match(line, found, form)) {
    process_.wait();
    throw std::runtime_error("the simulator did not start: " + line + process_.standard_error());
  }
  scheme_ = found[1];
  address_ = found[2];
  port_ = std::stoi(found[3]);
}

std::string SimulatorProcess::url() const {
  return scheme_ + "://" + address_ + ':' + std::to_string(port_);
}

int SimulatorProcess::stop(int signal) {
  process_.send(signal);
  return process_.wait();
}
