#pragma once

#include <gtest/gtest.h>

#include "support/registry_cleaner.h"
#include "zuCIM/connection.h"

// Connections and contexts while memory is short.
class OutOfMemory : public testing::Test {
 protected:
  static constexpr const char* source = "Src/CIMconnection";
  // Too long to be kept inside a std::string.
  static constexpr const char* long_text = "a text that is long enough to need memory of its own";

 private:
  RegistryCleaner cleaner_;
};
