#include <curl/curl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "support/failing_allocator.h"
#include "support/http_answer.h"
#include "support/trace_recorder.h"
#include "wire/wire_client.h"
#include "zuCIM/vocabulary.h"

// Exchanges of which an allocation fails.
namespace zuCIM {
namespace {

constexpr const char* source = "Src/CIMconnection";
const std::string out_of_memory = "sendRequest_recvResponse: Exception raised: std::bad_alloc";

class ShortExchange {
 public:
  // With a handle of each exchange's own it is made while memory is short, too.
  explicit ShortExchange(bool has_own_handle) : has_own_handle_(has_own_handle) {
    // libcurl makes what it needs once in a process.
    EXPECT_EQ(client_.exchange(), 0);
  }

  // Runs an exchange for each allocation and returns the statuses. The next exchange has to succeed
  // and the requests have to be the same, whatever has failed.
  std::set<int> statuses(AllocationKind kind) {
    std::set<int> statuses;
    for_each_failing_allocation([&](AllocationFailure& failure) { statuses.insert(run(failure)); },
                                kind);
    const std::vector<std::string> requests = server_.requests();
    for (const std::string& request : requests) EXPECT_EQ(request, requests.front());
    return statuses;
  }

 private:
  int run(AllocationFailure& failure) {
    forget_buffers();
    const TraceRecorder traces(trace_level::error | trace_level::warning);
    failure.arm();
    const int status = client_.exchange();
    failure.disarm();
    EXPECT_TRUE(status == 0 || failure.happened());
    if (status == 0)
      expect_success(traces);
    else
      EXPECT_THAT(traces.texts(),
                  testing::Contains(testing::HasSubstr("ErrCode:" + std::to_string(status) + " ")));
    EXPECT_EQ(traces.count(trace_level::error, source, out_of_memory), status == 1001 ? 1 : 0);
    EXPECT_EQ(client_.exchange(), 0);
    EXPECT_EQ(client_.responseBody, good_document);
    return status;
  }

  // What they hold must not serve the exchange.
  void forget_buffers() {
    client_.responseHeader = client_.responseBody = std::string();
    client_.responseHeader.shrink_to_fit();
    client_.responseBody.shrink_to_fit();
    if (!has_own_handle_) return;
    const std::string request = client_.request;
    client_.releaseCurlHandle();
    client_.request = request;
  }

  // Without its headers a request is not sent, and the trace alone tells.
  void expect_success(const TraceRecorder& traces) {
    if (client_.headers == nullptr) {
      EXPECT_THAT(traces.texts(), testing::Contains(testing::EndsWith("ErrCode:0 No error")));
      EXPECT_EQ(client_.responseBody, "");
      EXPECT_EQ(client_.result.next, nullptr);
      return;
    }
    EXPECT_EQ(client_.responseBody, good_document);
    CIMelement expected;
    EXPECT_EQ(expected.ParseCIMXML(good_document), 0U);
    std::string text;
    std::string expected_text;
    EXPECT_EQ(client_.result.GenerateCIMXML(text), expected.GenerateCIMXML(expected_text));
    EXPECT_EQ(text, expected_text);
  }

  ScriptedServer server_{always_answer(http_answer(good_document))};
  WireClient client_{server_};
  const bool has_own_handle_;
};

// 23 is a data callback that could not take the data, 5002 an answer that found no place as a tree.
TEST(Exchange, SurvivesEveryShortageOfMemory) {
  for (const bool has_own_handle : {false, true})
    EXPECT_EQ(ShortExchange(has_own_handle).statuses(AllocationKind::cpp),
              (std::set<int>{0, CURLE_WRITE_ERROR, 1001, 5002}));
}

// libcurl tells most of its shortages as such; without a place for the server's address it finds no
// such host.
TEST(Exchange, SurvivesEveryShortageOfMemoryInTheLibraryOfC) {
  const std::set<int> with_a_handle{0, CURLE_OUT_OF_MEMORY, 5002};
  std::set<int> with_its_own = with_a_handle;
  with_its_own.insert({CURLE_FAILED_INIT, CURLE_COULDNT_RESOLVE_HOST});
  EXPECT_EQ(ShortExchange(false).statuses(AllocationKind::c),
            malloc_can_fail ? with_a_handle : std::set<int>{0});
  EXPECT_EQ(ShortExchange(true).statuses(AllocationKind::c),
            malloc_can_fail ? with_its_own : std::set<int>{0});
}

}  // namespace
}  // namespace zuCIM
