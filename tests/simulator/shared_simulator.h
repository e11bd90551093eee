#pragma once

#include <gtest/gtest.h>

#include "cim_client.h"
#include "support/simulator_process.h"

// The simulator that the tests of one program share: started by the first that asks.
inline const SimulatorProcess& shared_simulator() {
  static const SimulatorProcess simulator;
  return simulator;
}

// A test with a client of the shared simulator.
class SimulatorTest : public ::testing::Test {
 protected:
  CimClient client{shared_simulator().url()};
};
