#include "context.h"

#include <cstdio>
#include <cstdlib>
#include <utility>

namespace bench {

unsigned make_plain_context(const std::string& host, const std::string& port) {
  const zuCIM::_THR_SERVER_ server{host.c_str(), "root", "secret", port.c_str(), "", "", ""};
  return zuCIM::makeContainer(&server, 0);
}

unsigned make_context(const std::string& host, const std::string& port) {
  const unsigned index = make_plain_context(host, port);
  zuCIM::CIMcontainer& context = context_of(index);
  context.skipIpCheck = true;
  context.ESXi_Occupied(true);
  context.setCurrentClass("HOST_NumericSensor", "");
  return index;
}

zuCIM::CIMcontainer& context_of(unsigned index) {
  return *zuCIM::getContainer(static_cast<unsigned>(zuCIM::getCIM(index)));
}

AnswerHolder::AnswerHolder(const char* class_name, std::string text) : text_(std::move(text)) {
  context_.setCurrentClass(class_name, "");
}

void AnswerHolder::take_answer() {
  zuCIM::CIMclass& entry = *context_.currentClass;
  entry.kill_element(&entry.instanceNames);
  entry.kill_element(&entry.instances);
  context_.result.ParseCIMXML(text_);
}

void expect_success(zuCIM::CIMcontainer& context) {
  const int status = context.ChkCimStatus();
  if (status == zuCIM::status::success) return;
  std::fprintf(stderr, "an operation failed: status %d\n", status);
  std::abort();
}

}  // namespace bench
