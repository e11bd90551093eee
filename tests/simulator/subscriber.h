#pragma once

#include <map>
#include <string>

#include "cim_client.h"

// What the tests of indications ask a simulator for, in the form in which the library asks.

// A property of type string for an INSTANCE.
std::string string_property(const std::string& name, const std::string& value);

// The INSTANCENAME of a returned object as text.
std::string text_of(const pugi::xml_node& node);

// A client that keeps filters, handlers and subscriptions in root/interop.
class Subscriber {
 public:
  // `system_name` is what tells this client's instances from those of others.
  Subscriber(const std::string& url, std::string system_name);

  CimAnswer create_filter(const std::string& query = "select * from CIM_AlertIndication",
                          const std::string& language = "WQL");

  // More properties may be given; names must differ where a client has several.
  CimAnswer create_filter_with(const std::string& name, const std::string& properties);
  CimAnswer create_handler(const std::string& destination);

  // `content` is what stands in both PROPERTY.REFERENCE elements: by default a VALUE.REFERENCE with
  // nothing in it.
  CimAnswer create_subscription(const std::string& content =
                                    "<VALUE.REFERENCE>\n"
                                    "</VALUE.REFERENCE>\n");

  // A subscription whose references are these INSTANCENAMEs.
  CimAnswer create_subscription(const std::string& filter, const std::string& handler);

  // All three, for test indications to a destination.
  void subscribe(const std::string& destination);

  CimAnswer create(const std::string& class_name, const std::string& properties);
  CimAnswer names(const std::string& class_name);
  CimAnswer remove(const std::string& instance_name);

  // The first INSTANCENAME of a class that holds this client's system name anywhere; empty if there
  // is none.
  std::string find_own(const std::string& class_name);

  // Calls a method of the demonstration service with PARAMVALUE elements.
  CimAnswer call_service(const std::string& method, const std::string& arguments);

  // Has test indications sent; to how many subscriptions each of them went. -1 if it was refused.
  int send(int count, const std::string& class_name = {});

  // What became of the indications for a destination; for all together where it is empty.
  std::map<std::string, int> statistics(const std::string& destination = {});

  // Waits until nothing is on its way any more and returns the statistics.
  std::map<std::string, int> settled_statistics(const std::string& destination = {});

 private:
  std::string keys(const std::string& class_name, const std::string& name) const;

  CimClient client_;
  std::string system_name_;
};
