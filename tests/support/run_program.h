#pragma once

#include <string>
#include <vector>

// How a program ended and what it wrote.
struct ProgramResult {
  int exit_status = -1;  // 128 + signal if a signal ended it
  std::string out;
  std::string err;
};

// Runs a program (found by PATH unless the name has a slash) until it ends.
ProgramResult run_program(const std::vector<std::string>& command);
