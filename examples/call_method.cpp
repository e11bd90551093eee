// Calls a method with typed parameters and prints what it gives back.
// Usage: call_method HOST PORT USER PASSWORD
#include <cstdint>
#include <iterator>

#include "connect.h"

using namespace zuCIM;

namespace {

// An out parameter of an answer: a PARAMVALUE with its value, or its values, behind it.
void print_parameter(CIMelement* parameter) {
  const char* const name = parameter->attr_find(attr::NAME);
  std::printf("%-14s", name != nullptr ? name : "-");
  const CIMelement* const last = parameter->getLastElement();
  for (CIMelement* node = parameter; node != last; node = node->next)
    if (node->next->value != nullptr) std::printf(" %s", node->next->value);
  std::puts("");
}

}  // namespace

int main(int argc, char* argv[]) {
  CIMcontainer* const context = connect_as_told(argc, argv);
  if (context == nullptr) return 2;

  // Methods are called on an instance; this server has one instance of the class.
  context->setCurrentClass("DEMO_Service", "root/cimv2");
  CIMelement* const service = context->Imethod_EnumerateInstanceNames();
  if (service == nullptr) return report_failure("EnumerateInstanceNames", context->ChkCimStatus());

  const bool flag = true;
  const std::int16_t temperature = -40;
  const std::uint64_t size = 18446744073709551615U;
  const double ratio = 0.125;
  const std::uint32_t primes[] = {2, 3, 5, 7};
  const _paramvalue_ parameters[] = {
      {.name = "ScalarBoolean", .type = type::boolean, .count = 1, .values = &flag},
      {.name = "ScalarString", .type = type::string, .count = 1, .values = "two words"},
      {.name = "ScalarSint16", .type = type::sint16, .count = 1, .values = &temperature},
      {.name = "ScalarUint64", .type = type::uint64, .count = 1, .values = &size},
      {.name = "ScalarReal64", .type = type::real64, .count = 1, .values = &ratio},
      {.name = "ArrayUint32",
       .type = type::uint32 | type::array_bit,
       .count = std::size(primes),
       .values = primes},
      {.name = "Link", .type = type::reference, .count = 1, .values = service},
      {.name = nullptr, .type = 0, .count = 0, .values = nullptr}};

  // The status is what the method returned.
  const int status = context->performExtrinsicMethod("Echo", service, parameters);
  if (status != status::success) return report_failure("Echo", status);

  // The answer stays readable until the next request.
  CIMelement* parameter = context->result.findelement(elem::PARAMVALUE, 0);
  while (parameter != nullptr) {
    print_parameter(parameter);
    parameter = parameter->getLastElement()->next->findelement(elem::PARAMVALUE, 0);
  }

  context->ESXi_Occupied(false);
  return 0;
}
