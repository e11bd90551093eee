#pragma once

#include <string>

#include "support/hosts_table.h"
#include "support/registry_cleaner.h"
#include "support/simulator_process.h"
#include "zuCIM.h"

// A server's name and this machine's, as a small network would have them.
class SmallNetwork {
 public:
  explicit SmallNetwork(const std::string& server_address) {
    hosts_.add("esx.example", {server_address})
        .add_reverse(server_address, {ReverseAnswer::name("esx.example")})
        .add("console.example", {"127.0.1.1"})
        .set_host_name("console.example");
  }

 private:
  HostsTable hosts_;
};

// A registered context of the server esx.example, admitted and marked as busy.
inline zuCIM::CIMcontainer* admitted_context(const std::string& port, const std::string& password,
                                             const std::string& ca_file = "") {
  const zuCIM::_THR_SERVER_ server{
      "esx.example", "root", password.c_str(), port.c_str(), ca_file.c_str(), "", ""};
  const auto index = zuCIM::makeContainer(&server, 0);
  auto* const context = zuCIM::getContainer(static_cast<unsigned>(zuCIM::getCIM(index)));
  context->addContainer();
  context->ESXi_Occupied(true);
  return context;
}

// How many elements of this kind follow each other from `first` on.
inline int count_elements(zuCIM::CIMelement* first, int kind) {
  int count = 0;
  for (; first != nullptr && first->name == zuCIM::known_cim_elements[kind]; ++count)
    first = first->getLastElement()->next;
  return count;
}
