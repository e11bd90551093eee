#pragma once

#include <cstdio>
#include <cstdlib>
#include <string>

// Ends the process with a text that tells which promise was broken; the fuzzer keeps the input.
[[noreturn]] inline void report(const std::string& what) {
  std::fprintf(stderr, "broken: %s\n", what.c_str());
  std::abort();
}

inline void require(bool holds, const char* what) {
  if (!holds) report(what);
}
