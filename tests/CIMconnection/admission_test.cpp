#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <netdb.h>

#include <algorithm>
#include <barrier>
#include <cerrno>
#include <thread>
#include <vector>

#include "CIMconnection/sample_server.h"
#include "support/hosts_table.h"
#include "support/registry_cleaner.h"
#include "support/trace_recorder.h"
#include "zuCIM/container.h"

namespace zuCIM {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr unsigned progress = 2;
constexpr unsigned warning = 4;
constexpr unsigned detail = 16;
constexpr const char* source = "Src/CIMconnection";

class AddressResolution : public testing::Test {
 protected:
  void resolve(const std::string& name) { connection_.setIPAddress(name, ip_, &fqdn_); }

  HostsTable hosts_;
  CIMconnection connection_;
  std::string ip_ = "old";
  std::string fqdn_ = "old";
  TraceRecorder traces_;
};

struct AddressCase {
  std::vector<std::string> addresses;
  const char* ip;
};

TEST_F(AddressResolution, TakesTheFirstUsableAddress) {
  const AddressCase cases[] = {
      {{"10.1.2.3"}, "10.1.2.3"},
      {{"10.1.2.3", "10.1.2.4"}, "10.1.2.3"},
      {{"127.0.0.1", "10.1.2.3"}, "10.1.2.3"},
      {{"127.0.1.1"}, "127.0.1.1"},
      {{"2001:db8::5"}, "2001:db8:0:0:0:0:0:5"},
      {{"::1", "127.0.0.1", "fe80::1"}, "fe80:0:0:0:0:0:0:1"},
      {{HostsTable::foreign_family, "10.1.2.3"}, "10.1.2.3"},
  };
  for (const AddressCase& entry : cases) {
    hosts_.add("far.test", entry.addresses);
    connection_.cimStatus = 0;
    resolve("far.test");
    EXPECT_EQ(ip_, entry.ip);
    EXPECT_EQ(connection_.cimStatus, 0);
  }
}

TEST_F(AddressResolution, FindsNothingInLoopbackAddresses) {
  hosts_.add("far.test", {"127.0.0.1", "::1", HostsTable::foreign_family});
  connection_.cimStatus = 6;
  errno = EXDEV;
  resolve("far.test");
  EXPECT_EQ(ip_, "");
  EXPECT_EQ(connection_.cimStatus, 5003);
  EXPECT_EQ(traces_.texts(warning).back(),
            "[far.test] setIPAddress: cannot get IP-Address. ret=0 WSAGetLastError=" +
                std::to_string(EXDEV));
}

TEST_F(AddressResolution, TracesTheResultAndErrnoOfAFailure) {
  hosts_.add_failure("far.test", EAI_AGAIN, ENETDOWN);
  resolve("far.test");
  EXPECT_EQ(ip_, "");
  EXPECT_EQ(fqdn_, "");
  EXPECT_EQ(connection_.cimStatus, 5003);
  EXPECT_THAT(traces_.texts(), ElementsAre("[far.test] setIPAddress: cannot get IP-Address. ret=" +
                                           std::to_string(EAI_AGAIN) +
                                           " WSAGetLastError=" + std::to_string(ENETDOWN)));
  EXPECT_EQ(traces_.texts(warning).size(), 1U);
}

TEST_F(AddressResolution, AsksNobodyForAnEmptyName) {
  errno = EXDEV;
  resolve("");
  EXPECT_EQ(ip_, "");
  EXPECT_EQ(fqdn_, "");
  EXPECT_EQ(connection_.cimStatus, 5003);
  EXPECT_THAT(hosts_.resolved_names(), IsEmpty());
  EXPECT_EQ(traces_.count(warning, source,
                          "[] setIPAddress: cannot get IP-Address. ret=0 WSAGetLastError=" +
                              std::to_string(EXDEV)),
            1);
}

TEST_F(AddressResolution, TakesTheFirstNameThatIsFound) {
  hosts_.add("far.test", {"10.1.2.3", "10.1.2.4"});
  hosts_.add_reverse("10.1.2.3", {ReverseAnswer::name("one.far.test")});
  hosts_.add_reverse("10.1.2.4", {ReverseAnswer::name("two.far.test")});
  resolve("far.test");
  EXPECT_EQ(fqdn_, "one.far.test");
  EXPECT_THAT(hosts_.reversed_addresses(), ElementsAre("10.1.2.3"));
  EXPECT_THAT(traces_.texts(), ElementsAre("setIPAddress: [far.test] -> 'one.far.test'"));
  EXPECT_EQ(traces_.texts(detail).size(), 1U);
}

TEST_F(AddressResolution, LooksForTheNameOfASkippedAddressToo) {
  hosts_.add("far.test", {"127.0.0.1", "10.1.2.3"});
  hosts_.add_reverse("127.0.0.1", {ReverseAnswer::name("localhost")});
  resolve("far.test");
  EXPECT_EQ(ip_, "10.1.2.3");
  EXPECT_EQ(fqdn_, "localhost");
}

TEST_F(AddressResolution, DoesNotTraceANameThatWasAskedFor) {
  hosts_.add("far.test", {"10.1.2.3"});
  hosts_.add_reverse("10.1.2.3", {ReverseAnswer::name("FAR.test")});
  resolve("far.test");
  EXPECT_EQ(fqdn_, "FAR.test");
  EXPECT_THAT(traces_.texts(), IsEmpty());
}

TEST_F(AddressResolution, TracesAReverseLookupThatGivesTheNumberOnly) {
  hosts_.add("far.test", {"10.1.2.3"});
  resolve("far.test");
  EXPECT_EQ(fqdn_, "10.1.2.3");
  EXPECT_THAT(traces_.texts(),
              ElementsAre("setIPAddress: [far.test] ipAdrr:'10.1.2.3' fqdn:'10.1.2.3', Error???",
                          "setIPAddress: [far.test] -> '10.1.2.3'"));
  EXPECT_EQ(traces_.texts(warning).size(), 1U);
}

TEST_F(AddressResolution, TriesTheNextAddressWhenAReverseLookupFails) {
  hosts_.add("far.test", {"10.1.2.3", "10.1.2.4"});
  hosts_.add_reverse("10.1.2.3", {ReverseAnswer::failure(EAI_AGAIN)});
  hosts_.add_reverse("10.1.2.4", {ReverseAnswer::name("two.far.test")});
  errno = EXDEV;
  resolve("far.test");
  EXPECT_EQ(ip_, "10.1.2.3");
  EXPECT_EQ(fqdn_, "two.far.test");
  EXPECT_EQ(traces_.texts(warning).size(), 1U);
  EXPECT_EQ(traces_.count(
                warning, source,
                "setIPAddress: getnameinfo: Error in 'far.test' iret=" + std::to_string(EAI_AGAIN) +
                    " WSAGetLastError=" + std::to_string(EXDEV)),
            1);
}

TEST_F(AddressResolution, LooksUpNoNameUnlessAsked) {
  hosts_.add("far.test", {"10.1.2.3"});
  connection_.setIPAddress("far.test", ip_, nullptr);
  EXPECT_EQ(ip_, "10.1.2.3");
  EXPECT_THAT(hosts_.reversed_addresses(), IsEmpty());
}

TEST_F(AddressResolution, TakesANumericName) {
  connection_.setIPAddress("10.1.2.3", ip_, nullptr);
  EXPECT_EQ(ip_, "10.1.2.3");
}

TEST_F(AddressResolution, MayReplaceTheNameItself) {
  hosts_.add("far.test", {"10.1.2.3"});
  std::string name = "far.test";
  connection_.setIPAddress(name, name, nullptr);
  EXPECT_EQ(name, "10.1.2.3");
}

class Admission : public testing::Test {
 protected:
  Admission() {
    hosts_.set_host_name("client.test").add("client.test", {"127.0.0.1", "10.9.9.9"});
    add_server("far.test", "10.1.2.3", "far.example.test");
    add_server("near.test", "10.1.2.4", "near.example.test");
  }

  void add_server(const std::string& name, const std::string& address, const std::string& fqdn) {
    hosts_.add(name, {address}).add_reverse(address, {ReverseAnswer::name(fqdn)});
  }

  // A new context for `host`, admitted.
  CIMcontainer& admit(const char* host) { return admit(sample_server(host)); }
  CIMcontainer& admit(const _THR_SERVER_& server) {
    CIMcontainer* const context = make_context(server);
    context->infoFlags = 0x400;
    context->cimStatus = 77;
    context->addContainer();
    return *context;
  }

  void expect_refused(const CIMcontainer& context, int status) {
    EXPECT_EQ(context.cimStatus, status);
    EXPECT_EQ(context.infoFlags, 0x240U);
  }

  RegistryCleaner cleaner_;
  HostsTable hosts_;
  TraceRecorder traces_;
};

TEST_F(Admission, FindsAddressesAndName) {
  const CIMcontainer& context = admit("far.test");
  EXPECT_EQ(context.cimStatus, 0);
  EXPECT_EQ(context.infoFlags, 0x400U);
  EXPECT_EQ(context.serverIP, "10.1.2.3");
  EXPECT_EQ(context.serverName, "far.example.test");
  EXPECT_EQ(context.localIP, "10.9.9.9");
  EXPECT_EQ(traces_.count(progress, source, "[far.test] ENTER addContainer()"), 1);
  EXPECT_EQ(traces_.count(progress, source, "[far.test] LEAVE addContainer"), 1);
  EXPECT_THAT(traces_.texts(warning), IsEmpty());
}

TEST_F(Admission, AdmitsContextsOfDifferentServers) {
  admit("far.test");
  EXPECT_EQ(admit("near.test").cimStatus, 0);
}

TEST_F(Admission, MayBeRepeated) {
  CIMcontainer& context = admit("far.test");
  context.addContainer();
  EXPECT_EQ(context.cimStatus, 0);
}

TEST_F(Admission, RefusesASecondContextWithTheSameAddress) {
  add_server("alias.test", "10.1.2.3", "alias.example.test");
  EXPECT_EQ(admit("far.test").serverName, "alias.example.test");
  add_server("far.test", "10.1.2.3", "other.example.test");
  expect_refused(admit("far.test"), 5008);
  EXPECT_EQ(traces_.count(warning, source, "[far.test] addContainer: duplicate IPaddress / FQDN"),
            1);
}

TEST_F(Admission, RefusesASecondContextWithTheSameName) {
  admit("far.test");
  add_server("alias.test", "10.1.2.5", "far.example.test");
  expect_refused(admit("alias.test"), 5008);
}

TEST_F(Admission, ComparesNamesByTheByte) {
  admit("far.test");
  add_server("alias.test", "10.1.2.5", "FAR.example.test");
  EXPECT_EQ(admit("alias.test").cimStatus, 0);
}

TEST_F(Admission, PassesOverContextsThatLackAddressOrName) {
  CIMcontainer& first = admit("far.test");
  first.serverName.clear();
  EXPECT_EQ(admit("far.test").cimStatus, 0);
  first.serverName = "far.example.test";
  getContainer(1)->serverIP.clear();
  first.serverIP.clear();
  EXPECT_EQ(admit("far.test").cimStatus, 0);
}

TEST_F(Admission, TracesOneDuplicateOnly) {
  admit("far.test");
  admit("far.test");
  traces_.clear();
  admit("far.test");
  EXPECT_EQ(traces_.count(warning, source, "[far.test] addContainer: duplicate IPaddress / FQDN"),
            1);
}

TEST_F(Admission, RefusesAServerWithoutAnAddress) {
  const CIMcontainer& context = admit("unknown.test");
  expect_refused(context, 5003);
  EXPECT_EQ(context.serverIP, "");
  EXPECT_EQ(context.localIP, "10.9.9.9");
  EXPECT_EQ(
      traces_.count(warning, source, "[unknown.test] addContainer: cannot get Host-IP-Address"), 1);
}

TEST_F(Admission, RefusesAServerOnTheFirstLoopbackAddressAndTakesOthers) {
  hosts_.add("one.test", {"127.0.0.1"}).add("two.test", {"127.0.1.1"});
  expect_refused(admit("one.test"), 5003);
  EXPECT_EQ(admit("two.test").cimStatus, 0);
}

TEST_F(Admission, WarnsOfAServerWithoutAName) {
  hosts_.add("bare.test", {"10.1.2.6"});
  const CIMcontainer& context = admit("bare.test");
  EXPECT_EQ(context.cimStatus, 0);
  EXPECT_EQ(context.serverName, "10.1.2.6");
  EXPECT_EQ(
      traces_.count(warning, source, "[bare.test] addContainer: IPaddress = FQDN -> Error???"), 1);
  EXPECT_EQ(traces_.count(warning, source,
                          "setIPAddress: [bare.test] ipAdrr:'10.1.2.6' fqdn:'10.1.2.6', Error???"),
            1);
}

TEST_F(Admission, DoesNotWarnOfAServerThatHasNeither) {
  admit("unknown.test");
  EXPECT_EQ(
      traces_.count(warning, source, "[unknown.test] addContainer: IPaddress = FQDN -> Error???"),
      0);
}

TEST_F(Admission, RefusesAMachineWithoutAnAddressOfItsOwn) {
  hosts_.add("client.test", {"127.0.0.1"});
  const CIMcontainer& context = admit("far.test");
  expect_refused(context, 5004);
  EXPECT_EQ(context.serverIP, "10.1.2.3");
  EXPECT_EQ(traces_.count(warning, source, "[far.test] addContainer: cannot get Client-IP-Address"),
            1);
}

TEST_F(Admission, RefusesAMachineWithoutAName) {
  hosts_.set_host_name_failure(EIO);
  expect_refused(admit("far.test"), 5004);
  EXPECT_THAT(hosts_.resolved_names(), ElementsAre("far.test"));
}

TEST_F(Admission, RefusesMissingCredentials) {
  _THR_SERVER_ no_user = sample_server("far.test");
  no_user.user = "";
  _THR_SERVER_ no_password = sample_server("far.test");
  no_password.password = "";
  _THR_SERVER_ no_port = sample_server("far.test");
  no_port.port = "";
  for (const _THR_SERVER_& server : {no_user, no_password, no_port}) {
    traces_.clear();
    expect_refused(admit(server), 5000);
    EXPECT_EQ(
        traces_.count(warning, source, "[far.test] addContainer: user, passwd or port not found"),
        1);
    remove_context(0);
  }
}

TEST_F(Admission, LetsTheLastFailureDecide) {
  admit("far.test");
  _THR_SERVER_ server = sample_server("far.test");
  server.password = "";
  expect_refused(admit(server), 5000);
  server.host = "unknown.test";
  hosts_.add("client.test", {"127.0.0.1"});
  expect_refused(admit(server), 5000);
  expect_refused(admit("unknown.test"), 5004);
  expect_refused(admit("far.test"), 5004);
}

TEST_F(Admission, RunsForSeveralContextsAtOnce) {
  std::vector<CIMcontainer*> contexts;
  for (int number = 0; number < 8; ++number) {
    const std::string text = std::to_string(number);
    const std::string host = "host" + text + ".test";
    add_server(host, "10.2.0." + text, "full" + text + ".test");
    contexts.push_back(make_context(sample_server(host.c_str())));
  }
  std::vector<std::thread> threads;
  for (CIMcontainer* context : contexts)
    threads.emplace_back([context] { context->addContainer(); });
  for (std::thread& thread : threads) thread.join();
  for (const CIMcontainer* context : contexts) EXPECT_EQ(context->cimStatus, 0);
}

TEST_F(Admission, LetsOneOfTwoContextsOfTheSameServerPass) {
  // Others that have to be looked at leave the two time to meet.
  constexpr int others = 300;
  for (int made = 0; made < others; ++made) make_context(sample_server("other.test"));
  for (int round = 0; round < 100; ++round) {
    CIMcontainer* const contexts[] = {make_context(sample_server("far.test")),
                                      make_context(sample_server("far.test"))};
    std::barrier start(2);
    const auto admit_at_once = [&start](CIMcontainer* context) {
      start.arrive_and_wait();
      context->addContainer();
    };
    std::thread other(admit_at_once, contexts[0]);
    admit_at_once(contexts[1]);
    other.join();
    EXPECT_EQ(std::max(contexts[0]->cimStatus, contexts[1]->cimStatus), 5008);
    EXPECT_EQ(std::min(contexts[0]->cimStatus, contexts[1]->cimStatus), 0);
    remove_context(others + 1);
    remove_context(others);
  }
}

}  // namespace
}  // namespace zuCIM
