#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <poll.h>
#include <sys/socket.h>

#include <array>
#include <condition_variable>
#include <mutex>
#include <set>

#include "indications/courier.h"
#include "listener.h"
#include "support/comes_true.h"
#include "support/http_answer.h"

namespace {

using namespace simulator;
using namespace std::chrono_literals;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;

// Longer than any test lives.
constexpr std::chrono::milliseconds never = 1h;

std::string indication(int number) {
  return "<INSTANCE CLASSNAME=\"T\"><PROPERTY NAME=\"N\" TYPE=\"uint32\"><VALUE>" +
         std::to_string(number) + "</VALUE></PROPERTY></INSTANCE>\n";
}

std::vector<std::string> numbers_of(const std::vector<std::string>& requests) {
  return pieces_of(requests, "<VALUE>", "</VALUE>");
}

Descriptor accept_one(const Descriptor& listening) {
  pollfd waiting{listening.number(), POLLIN, 0};
  ::poll(&waiting, 1, static_cast<int>(ScriptedServer::patience.count()));
  return Descriptor(::accept4(listening.number(), nullptr, nullptr, SOCK_CLOEXEC));
}

std::string receive_once(const Descriptor& socket) {
  std::array<char, 65536> buffer{};
  const ssize_t count = ::recv(socket.number(), buffer.data(), buffer.size(), 0);
  return {buffer.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0))};
}

// The lines that a courier reports, from whichever thread.
class Lines {
 public:
  void add(const std::string& line) {
    const std::lock_guard lock(mutex_);
    lines_.push_back(line);
    changed_.notify_all();
  }

  // Waits for a line with these words; false if it does not come in time.
  bool wait_for(const std::string& words) {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, ScriptedServer::patience,
                             [&] { return testing::Value(lines_, Contains(HasSubstr(words))); });
  }

  std::vector<std::string> all() const {
    const std::lock_guard lock(mutex_);
    return lines_;
  }

 private:
  mutable std::mutex mutex_;
  std::condition_variable changed_;
  std::vector<std::string> lines_;
};

class CourierTest : public testing::Test {
 protected:
  static DeliveryRules rules() { return {3, 1ms, 100, {}}; }

  void post(Courier& courier, const std::string& destination, int number) {
    courier.post(destination, {indication(number), ticket});
  }

  Lines lines;
  std::function<void(const std::string&)> report = [this](const std::string& line) {
    lines.add(line);
  };
  std::shared_ptr<Ticket> ticket = std::make_shared<Ticket>();
};

TEST_F(CourierTest, DeliversInOrderAndEachOnAConnectionOfItsOwn) {
  const ScriptedServer listener(accepting());
  Courier courier(report, rules());
  for (int i = 0; i < 20; ++i) post(courier, url_of(listener), i);
  ASSERT_TRUE(listener.wait_for_requests(20));
  std::vector<std::string> expected;
  for (int i = 0; i < 20; ++i) expected.push_back(std::to_string(i));
  EXPECT_EQ(numbers_of(listener.requests()), expected);
  EXPECT_EQ(listener.connection_count(), 20U);
  std::set<std::string> ids;
  for (const std::string& each : listener.requests()) ids.insert(message_id_of(each));
  EXPECT_EQ(ids.size(), 20U);
}

// With its head and its body in one piece, since listeners may look for both in what comes first.
TEST_F(CourierTest, SendsARequestInOnePiece) {
  const Descriptor listening = listen_on("127.0.0.2", 0);
  Courier courier(report, {1, 1ms, 100, {never, never}});
  post(courier, "http://127.0.0.2:" + std::to_string(local_port(listening)) + "/", 1);
  const Descriptor accepted = accept_one(listening);
  EXPECT_THAT(receive_once(accepted), testing::EndsWith("</CIM>\n"));
}

struct Answer {
  const char* what;
  std::string bytes;
  const char* complaint;
};

std::string message(const std::string& id, const std::string& content) {
  return "<CIM CIMVERSION=\"2.0\" DTDVERSION=\"2.0\"><MESSAGE ID=\"" + id +
         "\" PROTOCOLVERSION=\"1.0\">" + content + "</MESSAGE></CIM>";
}

TEST_F(CourierTest, AnswersThatDoNotSayThatTheIndicationWasTakenAreFailures) {
  const std::string taken =
      "<SIMPLEEXPRSP><EXPMETHODRESPONSE NAME=\"ExportIndication\"/></SIMPLEEXPRSP>";
  const std::string refused =
      "<SIMPLEEXPRSP><EXPMETHODRESPONSE NAME=\"ExportIndication\"><ERROR CODE=\"4\"/>"
      "</EXPMETHODRESPONSE></SIMPLEEXPRSP>";
  const Answer answers[] = {
      {"not 200", http_answer(message("1001", taken), "HTTP/1.1 500 Oops"), "HTTP status 500"},
      {"no XML", http_answer("thank you"), "no XML"},
      {"no body", http_answer(""), "no XML"},
      {"another message", http_answer(message("7", taken)), "belongs to another message"},
      {"no export response", http_answer(message("1001", "<SIMPLERSP/>")), "no export response"},
      {"an error", http_answer(message("1001", refused)), "answers with error 4"},
      {"no HTTP", "thank you", curl_easy_strerror(CURLE_UNSUPPORTED_PROTOCOL)},
      {"nothing", "", curl_easy_strerror(CURLE_GOT_NOTHING)},
      {"too little", http_answer_claiming(1000, "<CIM>"), curl_easy_strerror(CURLE_PARTIAL_FILE)},
  };
  for (const Answer& each : answers) {
    const ScriptedServer listener(answering(each.bytes));
    Lines said;
    Courier courier([&](const std::string& line) { said.add(line); }, {1, 1ms, 100, {}});
    post(courier, url_of(listener), 1);
    EXPECT_TRUE(said.wait_for("given up")) << each.what;
    EXPECT_THAT(said.all(), Contains(HasSubstr(each.complaint))) << each.what;
  }
}

TEST_F(CourierTest, TriesAgainUntilTheListenerTakesIt) {
  const ScriptedServer listener(Scripts{
      {{script::Reset{}}, answering(http_answer("", "HTTP/1.1 503 Later")), accepting()}, true});
  Courier courier(report, rules());
  post(courier, url_of(listener), 1);
  post(courier, url_of(listener), 2);
  ASSERT_TRUE(lines.wait_for("attempt 3: accepted"));
  ASSERT_TRUE(lines.wait_for("attempt 1: accepted"));
  EXPECT_THAT(numbers_of(listener.requests()), ElementsAre("1", "1", "2"));
  EXPECT_NE(message_id_of(listener.requests()[0]), message_id_of(listener.requests()[1]));
}

TEST_F(CourierTest, GivesUpAfterTheLastAttemptAndGoesOnWithTheNext) {
  const auto later = answering(http_answer("", "HTTP/1.1 503 Later"));
  const ScriptedServer listener(Scripts{{later, later, later, accepting()}, true});
  Courier courier(report, rules());
  post(courier, url_of(listener), 1);
  post(courier, url_of(listener), 2);
  ASSERT_TRUE(lines.wait_for("attempt 1: accepted"));
  EXPECT_THAT(lines.all(), Contains(HasSubstr("given up")));
  EXPECT_THAT(numbers_of(listener.requests()), ElementsAre("1", "1", "1", "2"));
}

TEST_F(CourierTest, CountsWhatBecomesOfTheIndicationsForEachDestination) {
  const ScriptedServer good(Scripts{{{script::Reset{}}, accepting()}, true});
  const std::string dead = std::string("http://127.0.0.2:") + dead_port + "/test";
  Courier courier(report, rules());
  post(courier, url_of(good), 1);
  post(courier, dead, 2);
  ASSERT_TRUE(lines.wait_for("accepted"));
  ASSERT_TRUE(lines.wait_for("given up"));
  courier.stop();
  const Tally to_good = courier.tally(url_of(good));
  EXPECT_EQ(to_good.queued, 1U);
  EXPECT_EQ(to_good.sent, 2U);
  EXPECT_EQ(to_good.retried, 1U);
  EXPECT_EQ(to_good.accepted, 1U);
  EXPECT_EQ(to_good.failed, 0U);
  EXPECT_EQ(to_good.pending(), 0U);
  const Tally to_dead = courier.tally(dead);
  EXPECT_EQ(to_dead.sent, 3U);
  EXPECT_EQ(to_dead.retried, 2U);
  EXPECT_EQ(to_dead.failed, 1U);
  EXPECT_EQ(to_dead.accepted, 0U);
  EXPECT_EQ(courier.tally({}).queued, 2U);
  EXPECT_EQ(courier.tally("http://nowhere/").queued, 0U);
}

TEST_F(CourierTest, ADestinationThatHangsHoldsUpNobodyElse) {
  const ScriptedServer hanging({script::ReadRequest{}, script::WaitForPeerClose{}});
  const ScriptedServer listener(accepting());
  Courier courier(report, {3, 1ms, 100, {never, never}});
  for (int i = 0; i < 3; ++i) post(courier, url_of(hanging), i);
  ASSERT_TRUE(hanging.wait_for_requests(1));
  for (int i = 0; i < 3; ++i) post(courier, url_of(listener), i);
  EXPECT_TRUE(listener.wait_for_requests(3));
  EXPECT_EQ(hanging.connection_count(), 1U);
  EXPECT_EQ(courier.tally(url_of(hanging)).pending(), 3U);
}

TEST_F(CourierTest, AListenerThatIsTooSlowCountsAsFailed) {
  const ScriptedServer hanging({script::ReadRequest{}, script::WaitForPeerClose{}});
  Courier courier(report, {2, 1ms, 100, {10ms, 10ms}});
  post(courier, url_of(hanging), 1);
  EXPECT_TRUE(lines.wait_for("given up"));
}

TEST_F(CourierTest, StopsAtOnceWhateverItIsDoing) {
  const ScriptedServer hanging({script::ReadRequest{}, script::WaitForPeerClose{}});
  const std::string dead = std::string("http://127.0.0.2:") + dead_port + "/test";
  Courier courier(report, {3, never, 100, {never, never}});
  post(courier, url_of(hanging), 1);
  post(courier, url_of(hanging), 2);
  post(courier, dead, 3);
  ASSERT_TRUE(hanging.wait_for_requests(1));
  ASSERT_TRUE(lines.wait_for("attempt 1"));
  courier.stop();
  EXPECT_TRUE(hanging.wait_for_ended_connections(1));
  post(courier, url_of(hanging), 4);
  EXPECT_EQ(hanging.connection_count(), 1U);
}

TEST_F(CourierTest, DropsWhatWaitsForASubscriptionThatIsGone) {
  const std::string dead = std::string("http://127.0.0.2:") + dead_port + "/test";
  Courier courier(report, {3, never, 100, {}});
  post(courier, dead, 1);
  post(courier, dead, 2);
  ASSERT_TRUE(lines.wait_for("attempt 1"));
  const auto other = std::make_shared<Ticket>();
  courier.post(dead, {indication(3), other});
  ticket->ended = true;
  courier.look_at_tickets();
  // The third belongs to another subscription and is tried.
  ASSERT_TRUE(comes_true([&] { return courier.tally(dead).sent >= 2; }));
  EXPECT_EQ(courier.tally(dead).dropped, 2U);
  EXPECT_EQ(courier.tally(dead).pending(), 1U);
}

TEST_F(CourierTest, DropsWhatFindsNoRoom) {
  const WakeUp go_on;
  const ScriptedServer listener({script::ReadRequest{}, script::WaitForEvent{&go_on},
                                 script::SendMadeFromRequest{accepting_answer}});
  Courier courier(report, {3, 1ms, 2, {never, never}});
  post(courier, url_of(listener), 0);
  ASSERT_TRUE(listener.wait_for_requests(1));
  for (int i = 1; i < 5; ++i) post(courier, url_of(listener), i);
  EXPECT_EQ(courier.tally(url_of(listener)).dropped, 2U);
  EXPECT_THAT(lines.all(), Contains(HasSubstr("dropped: too many wait")));
  go_on.set();
  ASSERT_TRUE(listener.wait_for_requests(3));
  EXPECT_THAT(numbers_of(listener.requests()), ElementsAre("0", "1", "2"));
}

}  // namespace
