#pragma once

#include <cstdint>
#include <string>

#include "CIMoperations/operation_test.h"

inline constexpr zuCIM::_paramvalue_ end_of_parameters{nullptr, 0, 0, nullptr};

// An answer to an extrinsic method that carries `content`.
inline std::string extrinsic_answer(const std::string& content) {
  return "<?xml version=\"1.0\" encoding=\"utf-8\" ?>\n"
         "<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\">\n"
         "<MESSAGE ID=\"1001\" PROTOCOLVERSION=\"1.0\">\n"
         "<SIMPLERSP>\n"
         "<METHODRESPONSE NAME=\"Start\">\n" +
         content +
         "</METHODRESPONSE>\n"
         "</SIMPLERSP>\n"
         "</MESSAGE>\n"
         "</CIM>\n";
}

// An answer with a return value.
inline std::string returning(const std::string& number) {
  return extrinsic_answer("<RETURNVALUE PARAMTYPE=\"uint32\">\n<VALUE>" + number +
                          "</VALUE>\n</RETURNVALUE>\n");
}

// Calls of the method Start of an instance.
class ExtrinsicTest : public OperationTest {
 protected:
  int call(const zuCIM::_paramvalue_* parameters) {
    return context_->performExtrinsicMethod("Start", &name_, parameters);
  }

  int call() {
    const zuCIM::_paramvalue_ none[] = {end_of_parameters};
    return call(none);
  }

  Tree name_{name_tree};
};
