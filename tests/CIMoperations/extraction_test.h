#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "CIMoperations/tree_text.h"
#include "support/trace_recorder.h"
#include "zuCIM.h"

// A context that extracts results from an answer, without any server.
class ExtractionTest : public testing::Test {
 protected:
  ExtractionTest() {
    container_.host = "myhost";
    container_.setCurrentClass("A", "");
  }

  // Makes `text` the answer that the context holds.
  void answer(const std::string& text) {
    container_.result.eclean();
    build_tree(container_.result, text);
  }

  zuCIM::CIMclass& entry() { return *container_.currentClass; }
  std::string names() { return tree_text(entry().instanceNames); }
  std::string instances() { return tree_text(entry().instances); }

  void expect_traces(const std::vector<std::string>& texts) {
    EXPECT_EQ(recorder_.texts(), texts);
    for (const RecordedLine& line : recorder_.lines()) {
      EXPECT_EQ(line.level, zuCIM::trace_level::error);
      EXPECT_EQ(line.source, "Src/CIMoperations");
    }
  }

  zuCIM::CIMcontainer container_;
  TraceRecorder recorder_;
};

inline std::intptr_t address(const zuCIM::CIMelement* element) {
  return reinterpret_cast<std::intptr_t>(element);
}
