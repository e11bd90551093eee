#include <cerrno>

#include "CIMindication/subscription_test.h"
#include "CIMlistener/socket_faults.h"
#include "CIMoperations/recording_clock.h"

namespace {

using namespace zuCIM;

class Subscribe : public SubscriptionTest {};

std::string value_property(const std::string& name, const std::string& value) {
  return "<PROPERTY NAME=\"" + name + "\" TYPE=\"string\">\n<VALUE>" + value +
         "</VALUE>\n</PROPERTY>\n";
}

std::string new_instance(const std::string& class_name, const std::string& properties) {
  return "<IPARAMVALUE NAME=\"NewInstance\">\n<INSTANCE CLASSNAME=\"" + class_name + "\">\n" +
         properties + "</INSTANCE>\n</IPARAMVALUE>\n";
}

std::string reference(const std::string& name, const std::string& class_name) {
  return "<PROPERTY.REFERENCE NAME=\"" + name + "\" REFERENCECLASS=\"" + class_name +
         "\">\n<VALUE.REFERENCE>\n" + name_in(class_name) +
         "</VALUE.REFERENCE>\n</PROPERTY.REFERENCE>\n";
}

TEST_F(Subscribe, MakesFilterHandlerAndSubscriptionInThisOrder) {
  serve({filter_made, handler_made, subscription_made});
  const int port = unused_port("0.0.0.0");
  EXPECT_EQ(lists_.subscribe(*context_, port), 0);
  ASSERT_EQ(server_->requests().size(), 3U);
  EXPECT_EQ(parameters(0), new_instance(filter_class_name,
                                        value_property("Name", "my filter") +
                                            value_property("CreationClassName", filter_class_name) +
                                            value_property("SystemName", owner) +
                                            value_property("Query", "select * from CIM_A")));
  EXPECT_EQ(
      parameters(1),
      new_instance(
          handler_class_name,
          value_property("CreationClassName", handler_class_name) +
              value_property("Destination", "http://10.1.2.3:" + std::to_string(port) + "/test") +
              value_property("Name", "my handler") + value_property("SystemName", owner)));
  EXPECT_EQ(parameters(2),
            new_instance(subscription_class_name, reference("Filter", filter_class_name) +
                                                      reference("Handler", handler_class_name)));
}

TEST_F(Subscribe, AddressesTheInteropNamespace) {
  serve({filter_made, handler_made, subscription_made});
  EXPECT_EQ(subscribe(), 0);
  for (const std::string& request : server_->requests()) {
    EXPECT_NE(request.find("CIMObject: root%2Finterop\r\n"), std::string::npos);
    EXPECT_NE(request.find("<NAMESPACE NAME=\"root\"/>\n<NAMESPACE NAME=\"interop\"/>\n"),
              std::string::npos);
  }
}

TEST_F(Subscribe, GivesTheContextAListener) {
  serve({filter_made, handler_made, subscription_made});
  EXPECT_EQ(subscribe(), 0);
  ASSERT_TRUE(is_subscribed());
  EXPECT_EQ(context_->listener->startResult, 0);
  wait_until_settled(*context_->listener);
  EXPECT_EQ(context_->listener->check_Listener(), 0);
  EXPECT_EQ(recorder_.texts(trace_level::error), Summaries{});
  EXPECT_EQ(context_->ChkCimStatus(), 0);
}

TEST_F(Subscribe, GivesTheListenerTheLimitsOfTheContext) {
  serve({filter_made, handler_made, subscription_made});
  context_->listenerLimits.largestBody = 7;
  context_->listenerLimits.stallSeconds = 8;
  EXPECT_EQ(subscribe(), 0);
  ASSERT_TRUE(is_subscribed());
  EXPECT_EQ(context_->listener->limits.largestBody, 7U);
  EXPECT_EQ(context_->listener->limits.stallSeconds, 8);
  EXPECT_EQ(context_->listener->limits.mostReaders, listener_limit::most_readers);
}

TEST_F(Subscribe, CountsAsReceivingWhileItSends) {
  std::vector<int> counts;
  const auto answer = [&counts](const std::string& body) {
    return script::Steps{script::ReadRequest{}, script::SendMadeFromRequest{[&, body](auto&) {
                           counts.push_back(active_readers());
                           return last_http_answer(body);
                         }}};
  };
  serve_scripts({{answer(filter_made), answer(handler_made), answer(subscription_made)}});
  const int before = active_readers();
  EXPECT_EQ(subscribe(), 0);
  EXPECT_EQ(counts, std::vector<int>(3, before + 1));
  EXPECT_EQ(active_readers(), before);
}

TEST_F(Subscribe, FindsPropertiesInAnyCase) {
  serve({filter_made, handler_made, subscription_made});
  lists_.filter[1].name = "creationclassname";
  lists_.filter[2].name = "SYSTEMNAME";
  lists_.handler[1].name = "dESTINATION";
  EXPECT_EQ(subscribe(), 0);
  EXPECT_NE(parameters(0).find(value_property("creationclassname", filter_class_name)),
            std::string::npos);
  EXPECT_NE(parameters(0).find(value_property("SYSTEMNAME", owner)), std::string::npos);
}

TEST_F(Subscribe, SetsTheFirstPropertyOfAName) {
  serve({filter_made, handler_made, subscription_made});
  lists_.filter[0] = text_property("SystemName", "the first");
  lists_.filter[2].values = "the second";
  EXPECT_EQ(subscribe(), 0);
  EXPECT_STREQ(static_cast<const char*>(lists_.filter[2].values), "the second");
}

TEST_F(Subscribe, RefusesASecondSubscriptionWithoutTouchingTheLists) {
  serve({filter_made, handler_made, subscription_made});
  EXPECT_EQ(subscribe(), 0);
  const CIMindication* const listener = context_->listener;
  PropertyLists untouched;
  EXPECT_EQ(untouched.subscribe(*context_, 1), 1001);
  EXPECT_EQ(
      count_traces(trace_level::error, 59, "subscribe: Indication-Subscription already done!"), 1);
  EXPECT_EQ(server_->requests().size(), 3U);
  EXPECT_EQ(context_->listener, listener);
  EXPECT_EQ(untouched.filter[1].values, nullptr);
  EXPECT_EQ(untouched.handler[0].values, nullptr);
}

// Nothing was sent, and there is no listener.
void expect_nothing_happened(const ServerContext& context, const ScriptedServer& server) {
  EXPECT_EQ(server.connection_count(), 0U);
  EXPECT_EQ(context.listener, nullptr);
}

TEST_F(Subscribe, RefusesMissingData) {
  serve({});
  const IndicationCallback callback = [](std::string&) { return 0; };
  _properties_* const filter = lists_.filter.data();
  _properties_* const handler = lists_.handler.data();
  EXPECT_EQ(context_->subscribe(nullptr, 1, filter, handler), 1001);
  EXPECT_EQ(context_->subscribe(callback, 0, filter, handler), 1001);
  EXPECT_EQ(context_->subscribe(callback, -1, filter, handler), 1001);
  EXPECT_EQ(context_->subscribe(callback, 1, nullptr, handler), 1001);
  EXPECT_EQ(context_->subscribe(callback, 1, filter, nullptr), 1001);
  EXPECT_EQ(count_traces(trace_level::error, 64, "subscribe: missing data"), 5);
  EXPECT_EQ(recorder_.texts(trace_level::error).size(), 5U);
  EXPECT_EQ(lists_.filter[1].values, nullptr);
  expect_nothing_happened(*context_, *server_);
}

TEST_F(Subscribe, RefusesListsThatLackAProperty) {
  struct Case {
    std::vector<_properties_> PropertyLists::*list;
    std::size_t position;
    std::string name;
  };
  const Case cases[] = {{&PropertyLists::filter, 1, "CreationClassName"},
                        {&PropertyLists::handler, 0, "CreationClassName"},
                        {&PropertyLists::filter, 2, "SystemName"},
                        {&PropertyLists::handler, 3, "SystemName"},
                        {&PropertyLists::handler, 1, "Destination"}};
  for (const Case& one : cases) {
    serve({});
    recorder_.clear();
    PropertyLists lists;
    (lists.*one.list)[one.position].name = "SomethingElse";
    EXPECT_EQ(lists.subscribe(*context_, 1), 1001) << one.name;
    EXPECT_EQ(count_traces(trace_level::warning, 51,
                           "set_prop_value: Missing Indication-Property: " + one.name),
              1);
    EXPECT_EQ(recorder_.lines().size(), 1U) << one.name;
    EXPECT_EQ(context_->ChkCimStatus(), 0);
    expect_nothing_happened(*context_, *server_);
  }
}

TEST_F(Subscribe, RefusesEmptyLists) {
  serve({});
  lists_.filter = {text_property(nullptr, nullptr)};
  EXPECT_EQ(subscribe(), 1001);
  expect_nothing_happened(*context_, *server_);
}

// The listener was asked to stop, and no longer receives.
void expect_unsubscribed(const ServerContext& context, const TraceRecorder& recorder) {
  EXPECT_EQ(context.listener, nullptr);
  EXPECT_EQ(context.cimStatus, 0);
  EXPECT_EQ(active_readers(), 0);
  EXPECT_EQ(recorder.count(trace_level::error, indication_traces, 123,
                           "subscribe: cannot subscribe Indication!"),
            1);
}

TEST_F(Subscribe, DeletesTheFilterAgainWhenTheHandlerIsRefused) {
  serve({filter_made, refusal, none_listed, listed(name_in(filter_class_name)), deleted,
         none_listed, none_listed});
  EXPECT_EQ(subscribe(), 1001);
  EXPECT_EQ(summaries(), (Summaries{make_filter, make_handler, list_subscriptions, list_filters,
                                    delete_filter, list_filters, list_handlers}));
  expect_unsubscribed(*context_, recorder_);
}

// Stopping waits for a thread that never was, as long as for any other.
TEST_F(Subscribe, MakesNothingWhenTheListenerDoesNotStart) {
  serve({none_listed, none_listed, none_listed});
  const RecordingClock clock;
  SocketFaults faults;
  faults.on(Call::thread, in_turn({Outcome::failure(EAGAIN)}));
  EXPECT_EQ(lists_.subscribe(*context_, 5998), 1001);
  EXPECT_EQ(summaries(), (Summaries{list_subscriptions, list_filters, list_handlers}));
  EXPECT_EQ(clock.pauses(), std::vector<unsigned>(30, 1000));
  EXPECT_EQ(recorder_.count(trace_level::error, "Src/CIMlistener", 421,
                            "stop_Listener: Listener-Thread is not stopped yet!"),
            1);
  expect_unsubscribed(*context_, recorder_);
}

TEST_F(Subscribe, MakesNothingElseWhenTheFilterIsRefused) {
  serve({refusal, none_listed, none_listed, none_listed});
  EXPECT_EQ(subscribe(), 1001);
  EXPECT_EQ(summaries(), (Summaries{make_filter, list_subscriptions, list_filters, list_handlers}));
  expect_unsubscribed(*context_, recorder_);
}

TEST_F(Subscribe, DeletesFilterAndHandlerWhenTheSubscriptionIsRefused) {
  serve({filter_made, handler_made, refusal, none_listed, listed(name_in(filter_class_name)),
         deleted, none_listed, listed(name_in(handler_class_name)), deleted, none_listed});
  EXPECT_EQ(subscribe(), 1001);
  EXPECT_EQ(summaries(), (Summaries{make_filter, make_handler, make_subscription,
                                    list_subscriptions, list_filters, delete_filter, list_filters,
                                    list_handlers, delete_handler, list_handlers}));
  expect_unsubscribed(*context_, recorder_);
}

// Status 0 is no success: the subscription needs the names.
TEST_F(Subscribe, FailsWhenTheServerDoesNotNameTheNewInstance) {
  serve({return_value(""), none_listed, none_listed, none_listed});
  EXPECT_EQ(subscribe(), 1001);
  expect_unsubscribed(*context_, recorder_);
}

TEST_F(Subscribe, LeavesTheContextSubscribedWhenTheCleanUpFailsToo) {
  serve({filter_made, refusal, refusal});
  EXPECT_EQ(subscribe(), 1001);
  EXPECT_TRUE(is_subscribed());
  EXPECT_EQ(context_->ChkCimStatus(), 1);
  EXPECT_EQ(active_readers(), 0);
}

TEST_F(Subscribe, IsRefusedByAContextThatIsNotBusy) {
  serve({});
  context_->ESXi_Occupied(false);
  EXPECT_EQ(subscribe(), 1001);
  EXPECT_EQ(context_->ChkCimStatus(), 27);
  EXPECT_EQ(server_->connection_count(), 0U);
  EXPECT_TRUE(is_subscribed());
}

TEST_F(Subscribe, SucceedsOnAPortThatIsTaken) {
  serve({filter_made, handler_made, subscription_made});
  const Descriptor taken = listen_on("0.0.0.0", 0);
  EXPECT_EQ(lists_.subscribe(*context_, local_port(taken)), 0);
  wait_until_settled(*context_->listener);
  EXPECT_EQ(context_->listener->check_Listener(), 1);
}

TEST_F(Subscribe, WritesTheTimeAsEightHexadecimalDigits) {
  const std::pair<std::uint32_t, std::string> cases[] = {
      {0, "00000000"}, {0xFFFFFFFF, "FFFFFFFF"}, {0xABCDEF, "00ABCDEF"}, {1, "00000001"}};
  for (const auto& [time, text] : cases) {
    serve({filter_made, handler_made, subscription_made});
    context_->createdAt = time;
    EXPECT_EQ(subscribe(), 0);
    EXPECT_NE(parameters(0).find(value_property("SystemName", "10.1.2.3_" + text)),
              std::string::npos)
        << parameters(0);
  }
}

}  // namespace
