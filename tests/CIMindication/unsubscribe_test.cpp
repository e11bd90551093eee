#include "CIMindication/subscription_test.h"

namespace {

using namespace zuCIM;

class Unsubscribe : public SubscriptionTest {
 protected:
  void expect_still_subscribed(int status) {
    EXPECT_EQ(context_->ChkCimStatus(), status);
    ASSERT_TRUE(is_subscribed());
    EXPECT_EQ(context_->listener->check_Listener(), 0);
  }
};

const std::string own_subscription = name_in(subscription_class_name);
const std::string own_filter = name_in(filter_class_name);
const std::string own_handler = name_in(handler_class_name);
constexpr const char* undeleted = "the server still lists an instance that it has deleted";

TEST_F(Unsubscribe, SendsNothingWithoutASubscription) {
  serve({});
  context_->cimStatus = 5;
  EXPECT_EQ(context_->unsubscribe(), 0);
  EXPECT_EQ(context_->ChkCimStatus(), 0);
  EXPECT_EQ(server_->connection_count(), 0U);
}

TEST_F(Unsubscribe, DeletesItsThreeInstancesAndEndsTheListener) {
  serve_subscribed({listed(own_subscription), deleted, none_listed, listed(own_filter), deleted,
                    none_listed, listed(own_handler), deleted, none_listed});
  std::atomic_ref<int>(ListenerThreadIsActive).store(3);
  EXPECT_EQ(context_->unsubscribe(), 0);
  EXPECT_EQ(summaries(),
            (Summaries{list_subscriptions, delete_subscription, list_subscriptions, list_filters,
                       delete_filter, list_filters, list_handlers, delete_handler, list_handlers}));
  EXPECT_EQ(context_->ChkCimStatus(), 0);
  EXPECT_FALSE(is_subscribed());
  EXPECT_EQ(active_readers(), 0);
  EXPECT_EQ(recorder_.count(trace_level::warning, "Src/CIMlistener", 428,
                            "stop_Listener: Listener-Thread stopped."),
            1);
}

TEST_F(Unsubscribe, DeletesByTheNameThatTheServerListed) {
  serve_subscribed({listed(own_subscription), deleted, none_listed, none_listed, none_listed});
  EXPECT_EQ(context_->unsubscribe(), 0);
  EXPECT_EQ(parameters(1),
            "<IPARAMVALUE NAME=\"InstanceName\">\n" + own_subscription + "</IPARAMVALUE>\n");
}

TEST_F(Unsubscribe, LeavesTheInstancesOfOthers) {
  std::vector<std::string> answers;
  for (const std::string& class_name : class_names)
    answers.push_back(listed(name_in(class_name, other_owner)));
  serve_subscribed(answers);
  EXPECT_EQ(context_->unsubscribe(), 0);
  EXPECT_EQ(summaries(), (Summaries{list_subscriptions, list_filters, list_handlers}));
  EXPECT_FALSE(is_subscribed());
}

TEST_F(Unsubscribe, FindsItsInstanceBehindOthers) {
  const std::string others =
      name_in(filter_class_name, other_owner, "2") + name_in(filter_class_name, "", "3");
  serve_subscribed(
      {none_listed, listed(others + own_filter), deleted, listed(others), none_listed});
  EXPECT_EQ(context_->unsubscribe(), 0);
  EXPECT_EQ(summaries(), (Summaries{list_subscriptions, list_filters, delete_filter, list_filters,
                                    list_handlers}));
}

TEST_F(Unsubscribe, FindsItsSubscriptionBehindThatOfAnother) {
  const std::string other = name_in(subscription_class_name, other_owner, "2");
  serve_subscribed(
      {listed(other + own_subscription), deleted, listed(other), none_listed, none_listed});
  EXPECT_EQ(context_->unsubscribe(), 0);
  EXPECT_EQ(summary(1), delete_subscription);
}

TEST_F(Unsubscribe, DeletesAllItsInstancesOfAClass) {
  const std::string second = name_in(filter_class_name, owner, "2");
  serve_subscribed({none_listed, listed(own_filter + second), deleted, listed(second), deleted,
                    none_listed, none_listed});
  EXPECT_EQ(context_->unsubscribe(), 0);
  EXPECT_EQ(summaries(),
            (Summaries{list_subscriptions, list_filters, delete_filter, list_filters,
                       "DeleteInstance CIM_IndicationFilter 2", list_filters, list_handlers}));
}

TEST_F(Unsubscribe, KnowsItsInstancesInAnyCase) {
  serve_subscribed({none_listed, listed(name_in(filter_class_name, "10.1.2.3_0f00abcd")), deleted,
                    none_listed, none_listed});
  EXPECT_EQ(context_->unsubscribe(), 0);
  EXPECT_EQ(summary(2), delete_filter);
}

TEST_F(Unsubscribe, ForgetsAnOlderStatus) {
  serve_subscribed({none_listed, none_listed, none_listed});
  context_->cimStatus = 5;
  EXPECT_EQ(context_->unsubscribe(), 0);
}

TEST_F(Unsubscribe, KeepsTheListenerWhenTheServerRefusesToList) {
  serve_subscribed({refusal, none_listed, none_listed, none_listed});
  EXPECT_EQ(context_->unsubscribe(), 1001);
  EXPECT_EQ(summaries(), Summaries{list_subscriptions});
  expect_still_subscribed(1);
  EXPECT_EQ(context_->unsubscribe(), 0);
  EXPECT_FALSE(is_subscribed());
}

TEST_F(Unsubscribe, KeepsTheListenerWhenTheServerRefusesToDelete) {
  serve_subscribed({none_listed, listed(own_filter), refusal, none_listed, listed(own_filter),
                    deleted, none_listed, none_listed});
  EXPECT_EQ(context_->unsubscribe(), 1001);
  EXPECT_EQ(summaries(), (Summaries{list_subscriptions, list_filters, delete_filter}));
  expect_still_subscribed(1);
  EXPECT_EQ(context_->unsubscribe(), 0);
  EXPECT_FALSE(is_subscribed());
}

TEST_F(Unsubscribe, KeepsTheListenerWhenTheLastClassFails) {
  serve_subscribed({none_listed, none_listed, refusal, none_listed, none_listed, none_listed});
  EXPECT_EQ(context_->unsubscribe(), 1001);
  EXPECT_EQ(summaries(), (Summaries{list_subscriptions, list_filters, list_handlers}));
  expect_still_subscribed(1);
  EXPECT_EQ(context_->unsubscribe(), 0);
  EXPECT_FALSE(is_subscribed());
}

TEST_F(Unsubscribe, GivesUpOnAServerThatOnlyPretendsToDelete) {
  serve_subscribed({none_listed, listed(own_filter), deleted, listed(own_filter)});
  EXPECT_EQ(context_->unsubscribe(), 1001);
  EXPECT_EQ(summaries(),
            (Summaries{list_subscriptions, list_filters, delete_filter, list_filters}));
  expect_still_subscribed(1001);
  int traces = 0;
  for (const std::string& text : recorder_.texts(trace_level::warning))
    traces += text.find("SetCimStatus: CIMindication@") != std::string::npos &&
              text.find(undeleted) != std::string::npos;
  EXPECT_EQ(traces, 1);
}

TEST_F(Unsubscribe, DeletesAsManyInstancesOfAClassAsItMay) {
  const std::string second = name_in(filter_class_name, owner, "2");
  serve_subscribed({none_listed, listed(own_filter + second), deleted, listed(second), deleted,
                    none_listed, none_listed});
  context_->mostDeletions = 2;
  EXPECT_EQ(context_->unsubscribe(), 0);
  EXPECT_EQ(server_->requests().size(), 7U);
}

TEST_F(Unsubscribe, GivesUpOnAServerThatListsOneMore) {
  const std::string second = name_in(filter_class_name, owner, "2");
  serve_subscribed({none_listed, listed(own_filter + second), deleted, listed(second)});
  context_->mostDeletions = 1;
  EXPECT_EQ(context_->unsubscribe(), 1001);
  EXPECT_EQ(server_->requests().size(), 4U);
  expect_still_subscribed(1001);
  int traces = 0;
  for (const std::string& text : recorder_.texts(trace_level::warning))
    traces += text.find("the server lists more instances than may be deleted") != std::string::npos;
  EXPECT_EQ(traces, 1);
}

TEST_F(Unsubscribe, FailsOnAContextThatIsNotBusy) {
  serve_subscribed({});
  context_->ESXi_Occupied(false);
  EXPECT_EQ(context_->unsubscribe(), 1001);
  EXPECT_EQ(server_->connection_count(), 0U);
  expect_still_subscribed(27);
}

class UnsubscribeAll : public SubscriptionTest {};

TEST_F(UnsubscribeAll, DeletesTheInstancesOfEveryone) {
  std::vector<std::string> answers;
  for (const std::string& class_name : class_names) {
    const std::string own = name_in(class_name, owner, "2");
    answers.insert(answers.end(), {listed(name_in(class_name, other_owner) + own), deleted,
                                   listed(own), deleted, none_listed});
  }
  serve(answers);
  EXPECT_EQ(context_->unsubscribe_all(), 0);
  Summaries expected;
  for (const std::string& class_name : class_names) {
    const std::string list = "EnumerateInstanceNames " + class_name;
    const std::string removal = "DeleteInstance " + class_name;
    expected.insert(expected.end(), {list, removal + " 1", list, removal + " 2", list});
  }
  EXPECT_EQ(summaries(), expected);
}

TEST_F(UnsubscribeAll, UnsubscribesTheContextInTheEnd) {
  serve_subscribed({none_listed, none_listed, none_listed, none_listed, none_listed, none_listed});
  EXPECT_EQ(context_->unsubscribe_all(), 0);
  EXPECT_EQ(summaries(), (Summaries{list_subscriptions, list_filters, list_handlers,
                                    list_subscriptions, list_filters, list_handlers}));
  EXPECT_FALSE(is_subscribed());
}

TEST_F(UnsubscribeAll, GoesOnWithTheNextClassAfterAFailure) {
  serve({refusal, listed(own_filter), refusal, listed(own_handler), deleted, none_listed});
  EXPECT_EQ(context_->unsubscribe_all(), 0);
  EXPECT_EQ(summaries(), (Summaries{list_subscriptions, list_filters, delete_filter, list_handlers,
                                    delete_handler, list_handlers}));
}

TEST_F(UnsubscribeAll, ReturnsTheStatusOfTheLastRequest) {
  serve({none_listed, none_listed, listed(own_handler), refusal});
  EXPECT_EQ(context_->unsubscribe_all(), 1);
}

TEST_F(UnsubscribeAll, ReturnsTheStatusOfUnsubscribe) {
  serve_subscribed({none_listed, none_listed, refusal, none_listed, refusal});
  EXPECT_EQ(context_->unsubscribe_all(), 1);
  EXPECT_TRUE(is_subscribed());
}

TEST_F(UnsubscribeAll, GoesOnAfterAServerThatOnlyPretendsToDelete) {
  serve({listed(own_subscription), deleted, listed(own_subscription), none_listed,
         listed(own_handler), deleted, listed(own_handler)});
  EXPECT_EQ(context_->unsubscribe_all(), 1001);
  EXPECT_EQ(summaries(), (Summaries{list_subscriptions, delete_subscription, list_subscriptions,
                                    list_filters, list_handlers, delete_handler, list_handlers}));
}

// Another instance came first in between.
TEST_F(UnsubscribeAll, AsksAgainForAnInstanceThatComesBackLater) {
  const std::string second = name_in(filter_class_name, owner, "2");
  serve({none_listed, listed(own_filter), deleted, listed(second + own_filter), deleted,
         listed(own_filter), deleted, none_listed, none_listed});
  EXPECT_EQ(context_->unsubscribe_all(), 0);
  EXPECT_EQ(server_->requests().size(), 9U);
}

}  // namespace
