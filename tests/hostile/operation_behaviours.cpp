#include <atomic>
#include <memory>

#include "CIMindication/interop_answers.h"
#include "hostile/behaviour.h"
#include "hostile/memory_growth.h"
#include "support/http_answer.h"
#include "zuCIM/vocabulary.h"

// What a server does to a client that asks it more than once.

namespace {

using zuCIM::CIMarray;
using zuCIM::CIMelement;

constexpr std::size_t many = MemoryGrowth::under_sanitizer ? 10000 : 200000;
constexpr std::size_t most_deletions = 20;
// For each deletion a list and a deletion, and the list at the end.
constexpr std::size_t requests_of_a_class = 2 * most_deletions + 1;
constexpr const char* too_many = "the server lists more instances than may be deleted";

// Gives the answer that `make` makes of the request, over a connection for each.
Scripts answering(const std::function<std::string(const std::string&)>& make) {
  const auto send = [make](const std::string& request) { return last_http_answer(make(request)); };
  return {{{script::ReadRequest{}, script::SendMadeFromRequest{send}}}, true};
}

Scripts always(const script::Step& step) {
  return {{{script::ReadRequest{}, step}}, true};
}

Scripts listing_with(const std::string& document) {
  return answering([document](const std::string&) { return document; });
}

bool is_deletion(const std::string& request) {
  return request.find("NAME=\"DeleteInstance\"") != std::string::npos;
}

// Claims every deletion and lists what `list` says, given how often it was asked.
Scripts pretending(const std::function<std::string(unsigned)>& list) {
  const auto asked = std::make_shared<std::atomic<unsigned>>(0);
  return answering([list, asked](const std::string& request) {
    return is_deletion(request) ? deleted : listed(list(asked->fetch_add(1)));
  });
}

int unsubscribe(ServerContext& context) {
  context.mostDeletions = most_deletions;
  context.localIP = "10.1.2.3";
  context.createdAt = 0x0F00ABCD;
  context.listener = new zuCIM::CIMindication;
  context.unsubscribe();
  return context.ChkCimStatus();
}

int unsubscribe_all(ServerContext& context) {
  context.mostDeletions = most_deletions;
  return context.unsubscribe_all();
}

int list_namespaces(ServerContext& context) {
  context.largestBody = 64 * 1024 * 1024;
  CIMarray names;
  return context.getNameSpace(names);
}

int list_names(ServerContext& context) {
  context.Imethod_EnumerateInstanceNames();
  return context.ChkCimStatus();
}

int list_instances(ServerContext& context) {
  context.Imethod_EnumerateInstances(-1, -1, -1, -1, nullptr);
  return context.ChkCimStatus();
}

int get_class(ServerContext& context) {
  return context.Imethod_GetClass(-1, -1, -1, nullptr);
}

int call_method(ServerContext& context) {
  CIMelement name;
  name.name = zuCIM::known_cim_elements[zuCIM::elem::INSTANCENAME];
  name.attr_put(zuCIM::attr::CLASSNAME, "CIM_A");
  const zuCIM::_paramvalue_ none{nullptr, 0, 0, nullptr};
  return context.performExtrinsicMethod("Reset", &name, &none);
}

std::string own_filter(unsigned number) {
  return plain_name(filter_class_name, owner, std::to_string(number));
}

std::string namespace_instance(const std::string& key) {
  return "<VALUE.NAMEDINSTANCE><INSTANCENAME CLASSNAME=\"CIM_Namespace\"><KEYBINDING NAME=\"" +
         key +
         "\"><KEYVALUE>a</KEYVALUE></KEYBINDING></INSTANCENAME><INSTANCE "
         "CLASSNAME=\"CIM_Namespace\"></INSTANCE></VALUE.NAMEDINSTANCE>";
}

OperationBehaviour deletes(const std::string& name, const std::function<int(ServerContext&)>& way,
                           const std::string& trace, std::size_t most_requests,
                           const std::function<std::string(unsigned)>& list) {
  return {{name, {1001}, EndedBy::limit},
          [list] { return pretending(list); },
          way,
          most_requests,
          trace};
}

OperationBehaviour answers(const std::string& name, int status,
                           const std::function<int(ServerContext&)>& operation,
                           const std::function<std::string()>& make,
                           std::size_t most_mebibytes = 16) {
  return {{name, {status}, EndedBy::peer, most_mebibytes, time_for_much},
          [make] { return listing_with(make()); },
          operation};
}

// Fails each of the eleven tries.
OperationBehaviour fails(const std::string& name, int status, const Scripts& scripts,
                         std::size_t most_requests = 11) {
  return {{name, {status}}, [scripts] { return scripts; }, list_names, most_requests};
}

}  // namespace

std::vector<OperationBehaviour> operation_behaviours() {
  const std::string nested =
      "<INSTANCENAME CLASSNAME=\"A\"><KEYBINDING NAME=\"a\">"
      "<VALUE.REFERENCE>";
  const std::string end_of_nested = "</VALUE.REFERENCE></KEYBINDING></INSTANCENAME>";
  return {
      deletes("deletions that it only claims, to unsubscribe", unsubscribe,
              "the server still lists an instance that it has deleted", 3,
              [](unsigned) { return own_filter(1); }),
      deletes("two names in turn, to unsubscribe", unsubscribe, too_many, requests_of_a_class,
              [](unsigned asked) { return own_filter(asked % 2); }),
      deletes("a new name for each that is deleted, to unsubscribe", unsubscribe, too_many,
              requests_of_a_class, own_filter),
      deletes("deletions that it only claims, to unsubscribe_all", unsubscribe_all,
              "the server still lists an instance that it has deleted", 9,
              [](unsigned) { return own_filter(1); }),
      deletes("two names in turn, to unsubscribe_all", unsubscribe_all, too_many,
              3 * requests_of_a_class, [](unsigned asked) { return own_filter(asked % 2); }),
      deletes("a new name for each that is deleted, to unsubscribe_all", unsubscribe_all, too_many,
              3 * requests_of_a_class, own_filter),
      {{"the instances of others without end, to unsubscribe", {0}},
       [] {
         return pretending([](unsigned asked) {
           return plain_name(filter_class_name, other_owner, std::to_string(asked));
         });
       },
       unsubscribe,
       3},
      answers(
          "two hundred thousand namespaces", 0, list_namespaces,
          [] { return return_value(repeated(many, namespace_instance("Name"))); }, 512),
      answers("namespaces without a name", 5005, list_namespaces,
              [] { return return_value(repeated(100, namespace_instance("Other"))); }),
      {{"namespaces without end", {23}, EndedBy::limit, 256, time_for_much},
       [] {
         return Scripts{{{script::ReadRequest{},
                          script::Send{"HTTP/1.1 200 OK\r\n\r\n"
                                       "<?xml version=\"1.0\"?><CIM CIMVERSION=\"2.0\">"},
                          script::SendRepeatedly{repeated(100, namespace_instance("Name")), 0}}},
                        true};
       },
       list_namespaces,
       1,
       "the answer is too large"},
      answers(
          "two hundred thousand names", 0, list_names,
          [] { return return_value(repeated(many, own_filter(1))); }, 512),
      answers(
          "a name within a name, ten thousand times", 0, list_names,
          [=] {
            return return_value(repeated(10000, nested) +
                                "<INSTANCENAME CLASSNAME=\"A\"></INSTANCENAME>" +
                                repeated(10000, end_of_nested));
          },
          64),
      answers(
          "instances within instances, ten thousand times", 0, list_instances,
          [] {
            return return_value(repeated(10000, "<VALUE.NAMEDINSTANCE>") +
                                repeated(10000, "</VALUE.NAMEDINSTANCE>"));
          },
          64),
      answers("instances where names were asked for", 0, list_names,
              [] { return return_value(namespace_instance("Name")); }),
      answers("names where instances were asked for", 0, list_instances,
              [] { return return_value(own_filter(1)); }),
      answers("names where a class was asked for", 1001, get_class,
              [] { return return_value(own_filter(1)); }),
      answers(
          "two hundred thousand properties of a class", 0, get_class,
          [] {
            return return_value("<CLASS NAME=\"CIM_A\">" +
                                repeated(many, "<PROPERTY NAME=\"a\" TYPE=\"string\"/>") +
                                "</CLASS>");
          },
          512),
      answers("nothing where the result of a method was asked for", 1001, call_method,
              [] { return method_answer(""); }),
      answers("the request itself as an answer", 0, list_names, [] { return good_document; }),
      fails("a refusal of every try", 22,
            always(script::Send{http_answer("", "HTTP/1.1 500 Oops", "Connection: close\r\n")})),
      fails("a closed connection at every try", 52, always(script::Close{})),
      fails("a CIM error 7, which looks like a failed transfer, at every try", 7,
            listing_with(method_answer("<ERROR CODE=\"7\" DESCRIPTION=\"x\"/>"))),
      fails("a reset, which is not tried again", 56, always(script::Reset{}), 1),
  };
}
