#pragma once

#include <chrono>
#include <thread>

// Waits until `condition` holds; false when it does not within a minute. It sleeps between its
// looks, so that what it waits for has the processor.
template <class Condition>
bool comes_true(const Condition& condition) {
  const auto end = std::chrono::steady_clock::now() + std::chrono::minutes(1);
  while (!condition()) {
    if (std::chrono::steady_clock::now() > end) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return true;
}
