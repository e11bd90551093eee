#pragma once

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "xml_writer.h"

namespace simulator {

// What the command line says.
struct Options {
  std::string address = "127.0.0.2";
  int port = 0;
  bool https = false;
  std::string certificate;
  std::string key;
  std::string client_ca;
  std::string user = "root";
  std::string password = "secret";
  bool anonymous = false;
  std::string data;
  std::vector<std::pair<std::string, std::size_t>> growth;  // class name, number of instances
  double indications_per_second = 0;                        // 0 sends none
  WireStyle style;
  bool verbose = false;
};

// How reading the command line ended: go on, or exit with a status.
struct CommandLine {
  Options options;
  bool go_on = true;
  int exit_status = 0;
};

// Reads the command line; prints help or what is wrong with it.
CommandLine read_command_line(int argc, char** argv);

}  // namespace simulator
