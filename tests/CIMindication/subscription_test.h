#pragma once

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <string>
#include <vector>

#include "CIMindication/interop_answers.h"
#include "CIMindication/property_lists.h"
#include "CIMlistener/thread_watch.h"
#include "support/comes_true.h"
#include "support/http_answer.h"
#include "support/loopback.h"
#include "support/scripted_server.h"
#include "support/trace_recorder.h"
#include "zuCIM.h"

inline constexpr const char* indication_traces = "Src/CIMindication";

inline script::Steps answering(const std::string& answer) {
  return {script::ReadRequest{}, script::Send{last_http_answer(answer)}};
}

// Waits until the thread of a listener that was started listens, or has ended without.
inline void wait_until_settled(zuCIM::CIMindication& listener) {
  const std::atomic_ref<zuCIM::IndicationCallback> callback(listener.pCallBack);
  EXPECT_TRUE(
      comes_true([&] { return listener.check_Listener() == 0 || callback.load() == nullptr; }));
}

// Gives a context a listener that listens on a port of the system's choice.
inline void give_listener(zuCIM::CIMcontainer& context) {
  context.listener = new zuCIM::CIMindication;
  context.listener->pCallBack = [](std::string&) { return 0; };
  context.listener->port = 0;
  ASSERT_EQ(context.listener->start_Listener(), 0);
  wait_until_settled(*context.listener);
}

// Registers a context of this server; it is subscribed and busy.
inline zuCIM::CIMcontainer* make_subscribed(const std::string& address, const std::string& port) {
  const zuCIM::_THR_SERVER_ server{address.c_str(), "user", "secret", port.c_str(), "", "", ""};
  const std::uint32_t index = zuCIM::makeContainer(&server, 0);
  auto* const context = zuCIM::getContainer(static_cast<unsigned>(zuCIM::getCIM(index)));
  context->skipIpCheck = true;
  context->localIP = "10.1.2.3";
  context->ESXi_Occupied(true);
  give_listener(*context);
  return context;
}

// A context with a known owner name and a server that gives the answers one after the other. The
// first operation tries nothing again.
class SubscriptionTest : public testing::Test {
 protected:
  // The listener's thread must not change the count of listeners in the next test.
  void TearDown() override {
    if (context_ == nullptr || context_->listener == nullptr) return;
    wait_until_settled(*context_->listener);
    context_->listener->stop_Listener();
  }

  void serve(const std::vector<std::string>& answers) {
    Scripts scripts;
    for (const std::string& answer : answers) scripts.in_order.push_back(answering(answer));
    serve_scripts(scripts);
  }

  void serve_scripts(const Scripts& scripts) {
    server_ = std::make_unique<ScriptedServer>(scripts);
    context_ = std::make_unique<ServerContext>(server_->address(), server_->port_text());
    context_->localIP = "10.1.2.3";
    context_->createdAt = 0x0F00ABCD;
    context_->SetExtraTimeOut(-1);
  }

  // The same, with a context that has a listener.
  void serve_subscribed(const std::vector<std::string>& answers) {
    serve(answers);
    give_listener(*context_);
  }

  int subscribe() { return lists_.subscribe(*context_, unused_port("0.0.0.0")); }

  // What the n-th request carries between `begin` and `end`.
  std::string between(const std::string& begin, const std::string& end, std::size_t n) {
    const std::string text = body_of(server_->requests().at(n));
    const std::size_t found = text.find(begin);
    if (found == std::string::npos) return "";
    const std::size_t from = found + begin.size();
    return text.substr(from, text.find(end, from) - from);
  }

  std::string parameters(std::size_t n) {
    return between("</LOCALNAMESPACEPATH>\n", "</IMETHODCALL>", n);
  }

  // The n-th request in short: method, class and, for a deletion, the name's last key.
  std::string summary(std::size_t n) {
    const std::string method = between("<IMETHODCALL NAME=\"", "\"", n);
    const char* const attribute =
        method == "EnumerateInstanceNames" ? "<CLASSNAME NAME=\"" : " CLASSNAME=\"";
    std::string text = method + " " + between(attribute, "\"", n);
    if (method == "DeleteInstance") text += " " + between("NAME=\"Name\">\n<KEYVALUE>", "<", n);
    return text;
  }

  std::vector<std::string> summaries() {
    std::vector<std::string> texts;
    for (std::size_t n = 0; n < server_->requests().size(); ++n) texts.push_back(summary(n));
    return texts;
  }

  int count_traces(unsigned level, int line, const std::string& text) {
    return recorder_.count(level, indication_traces, line, text);
  }

  bool is_subscribed() { return context_->listener != nullptr; }

  TraceRecorder recorder_;
  PropertyLists lists_;
  std::unique_ptr<ScriptedServer> server_;
  std::unique_ptr<ServerContext> context_;
};

// Requests in short.
inline const std::string list_subscriptions = "EnumerateInstanceNames CIM_IndicationSubscription";
inline const std::string list_filters = "EnumerateInstanceNames CIM_IndicationFilter";
inline const std::string list_handlers = "EnumerateInstanceNames CIM_IndicationHandlerCIMXML";
inline const std::string make_filter = "CreateInstance CIM_IndicationFilter";
inline const std::string make_handler = "CreateInstance CIM_IndicationHandlerCIMXML";
inline const std::string make_subscription = "CreateInstance CIM_IndicationSubscription";
inline const std::string delete_filter = "DeleteInstance CIM_IndicationFilter 1";
inline const std::string delete_handler = "DeleteInstance CIM_IndicationHandlerCIMXML 1";
inline const std::string delete_subscription = "DeleteInstance CIM_IndicationSubscription 1";

using Summaries = std::vector<std::string>;
