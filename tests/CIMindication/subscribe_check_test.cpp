#include <utility>

#include "CIMindication/subscription_test.h"

namespace {

using namespace zuCIM;

// While it lives, do_cim_debug has a bit that libcurl does not look at.
class Debugging {
 public:
  Debugging() { do_cim_debug = 2; }
  ~Debugging() { do_cim_debug = 0; }
  Debugging(const Debugging&) = delete;
  Debugging& operator=(const Debugging&) = delete;
};

class SubscribeCheck : public SubscriptionTest {
 protected:
  // Answers to the three questions: the own instances of the classes whose bit (1, 2, 4) is clear.
  static std::vector<std::string> answers_without(unsigned missing) {
    std::vector<std::string> answers;
    for (const std::string& class_name : class_names) {
      const std::string other = name_in(class_name, other_owner, "2");
      answers.push_back(listed(missing & 1U ? other : other + name_in(class_name)));
      missing >>= 1U;
    }
    return answers;
  }

  // The lines of subscribe_check at the warning level.
  std::vector<std::pair<int, std::string>> listing() {
    std::vector<std::pair<int, std::string>> lines;
    for (const RecordedLine& line : recorder_.lines())
      if (line.source == std::string(indication_traces) && line.level == trace_level::warning)
        lines.emplace_back(line.line, line.text);
    return lines;
  }
};

TEST_F(SubscribeCheck, TellsEveryCombinationOfWhatIsMissing) {
  for (unsigned bits = 0; bits < 16; ++bits) {
    serve(answers_without(bits));
    if ((bits & 8U) == 0) give_listener(*context_);
    const unsigned expected =
        (bits & 1U) | (bits & 2U) << 3U | (bits & 4U) << 6U | (bits & 8U) << 9U;
    EXPECT_EQ(context_->subscribe_check(), expected);
    EXPECT_EQ(summaries(), (Summaries{list_subscriptions, list_filters, list_handlers}));
  }
}

TEST_F(SubscribeCheck, MissesEverythingWithoutASubscription) {
  serve({none_listed, none_listed, none_listed});
  EXPECT_EQ(context_->subscribe_check(), 0x1111U);
}

TEST_F(SubscribeCheck, MissesAListenerThatDoesNotListen) {
  serve(answers_without(0));
  context_->listener = new CIMindication;
  EXPECT_EQ(context_->subscribe_check(), 0x1000U);
}

TEST_F(SubscribeCheck, MissesWhatTheServerDoesNotTell) {
  serve_subscribed({refusal, refusal, refusal});
  EXPECT_EQ(context_->subscribe_check(), 0x111U);
  EXPECT_EQ(context_->ChkCimStatus(), 1);
}

TEST_F(SubscribeCheck, FramesEachQuestionWithTraces) {
  serve(answers_without(7));
  EXPECT_EQ(context_->subscribe_check(), 0x1111U);
  EXPECT_EQ(count_traces(trace_level::detail, 240, "Before can.Imethod_EnumerateInstanceNames()"),
            3);
  EXPECT_EQ(count_traces(trace_level::detail, 242, "After can.Imethod_EnumerateInstanceNames()"),
            3);
  EXPECT_TRUE(listing().empty());
}

TEST_F(SubscribeCheck, ListsTheInstancesWhenDebugging) {
  const Debugging debugging;
  serve_subscribed(
      {listed(name_in(subscription_class_name) + name_in(subscription_class_name, other_owner)),
       listed(name_in(filter_class_name)),
       listed(name_in(handler_class_name) + "<INSTANCENAME CLASSNAME=\"X\"/>\n")});
  EXPECT_EQ(context_->subscribe_check(), 0U);
  using Lines = std::vector<std::pair<int, std::string>>;
  EXPECT_EQ(listing(),
            (Lines{{256, "chk_subscr: CIM_IndicationSubscription: SystemName = " + owner},
                   {256, "chk_subscr: CIM_IndicationSubscription: SystemName = " + other_owner},
                   {256, "chk_subscr: CIM_IndicationFilter: SystemName = " + owner},
                   {256, "chk_subscr: CIM_IndicationHandlerCIMXML: SystemName = " + owner},
                   {256, "chk_subscr: CIM_IndicationHandlerCIMXML: SystemName = "},
                   {285, "Listener is running"}}));
}

TEST_F(SubscribeCheck, TellsAStoppedListenerWhenDebugging) {
  const Debugging debugging;
  serve({none_listed, none_listed, none_listed});
  EXPECT_EQ(context_->subscribe_check(), 0x1111U);
  using Lines = std::vector<std::pair<int, std::string>>;
  EXPECT_EQ(listing(), (Lines{{285, "Listener was stopped"}}));
}

TEST_F(SubscribeCheck, TellsARunningListenerWhateverTheServerLacks) {
  const Debugging debugging;
  serve_subscribed({none_listed, none_listed, none_listed});
  EXPECT_EQ(context_->subscribe_check(), 0x111U);
  EXPECT_EQ(count_traces(trace_level::warning, 285, "Listener is running"), 1);
}

}  // namespace
