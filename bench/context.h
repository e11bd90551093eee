#pragma once

#include <string>

#include "zuCIM.h"

namespace bench {

// A registered context for the server at an address of this machine, of which it knows no more.
// Returns its index.
unsigned make_plain_context(const std::string& host, const std::string& port);

// The same, but taken and ready for operations on the class HOST_NumericSensor. Admission, which
// asks name servers, is left out.
unsigned make_context(const std::string& host, const std::string& port);

// The context with this index, looked up as a caller would.
zuCIM::CIMcontainer& context_of(unsigned index);

// A context that is given an answer, and has no server behind it.
class AnswerHolder {
 public:
  // `text` is the answer to an enumeration of the class.
  AnswerHolder(const char* class_name, std::string text);

  // Forgets what was extracted, and parses the answer.
  void take_answer();
  void extract() { context_.ExtractNamedInstances(); }

 private:
  std::string text_;
  zuCIM::CIMcontainer context_;
};

// Aborts when the last operation of the context failed.
void expect_success(zuCIM::CIMcontainer& context);

}  // namespace bench
