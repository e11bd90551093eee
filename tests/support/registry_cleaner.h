#pragma once

#include <gtest/gtest.h>

#include "zuCIM/container.h"

// Empties the registry of contexts, in which contexts lie by value. No other thread may use them.
inline void empty_registry() {
  zuCIM::CIMarray& registry = zuCIM::gCIMContainers;
  for (std::uint32_t i = 0; i < registry.argc; ++i)
    static_cast<zuCIM::CIMcontainer*>(registry.argv[i])->~CIMcontainer();
  registry.setmaxargc(0);
}

// Empties the registry at the end of its life.
class RegistryCleaner {
 public:
  RegistryCleaner() = default;
  ~RegistryCleaner() { empty_registry(); }
  RegistryCleaner(const RegistryCleaner&) = delete;
  RegistryCleaner& operator=(const RegistryCleaner&) = delete;
};

// A fixture whose tests leave no context behind.
class RegistryTest : public testing::Test {
 private:
  RegistryCleaner cleaner_;
};
