#include <gmock/gmock.h>

#include <cstdlib>

#include "ads/core/SKVASTEventProcessor.h"
#include "platform/dispatch/PlainRunLoop.h"
#include "platform/foundation/CurlURLLoader.h"
#include "tests/support/HTTPServer.h"

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::Gt;
using testing::Lt;

namespace {

struct TrackingRequests : testing::Test {
  TrackingRequests() {
    server.onOthers([](const HTTPServer::Request&) {
      HTTPServer::Reply pixel;
      pixel.body = "GIF89a";
      return pixel;
    });
  }
  ~TrackingRequests() override { URLLoader::setShared(nullptr); }

  NSURL target(const std::string& path) const { return *NSURL::URLWithString(server.url(path)); }
  std::vector<std::string> targets() const {
    std::vector<std::string> list;
    for (const auto& request : server.log()) list.push_back(request.target);
    return list;
  }

  PlainRunLoop loop;
  HTTPServer server;
  const std::shared_ptr<SKVASTEventProcessor> processor = std::make_shared<SKVASTEventProcessor>(
      SKVASTEventProcessor::TrackingEvents(), std::weak_ptr<SKVASTViewControllerDelegate>());
};

TEST_F(TrackingRequests, areGETsOverFewConnectionsThatAreUsedAgain) {
  constexpr std::size_t count = 300;
  const auto began = loop.now();
  for (std::size_t i = 0; i < count; ++i) processor->sendTrackingRequest(target("/" + std::to_string(i)));
  EXPECT_LT(loop.now() - began, 1s);
  ASSERT_TRUE(server.waitForRequests(count, 10s));
  auto came = targets();
  EXPECT_EQ(server.log().front().method, "GET");
  std::sort(came.begin(), came.end());
  EXPECT_EQ(std::unique(came.begin(), came.end()), came.end()) << "a request was sent twice";
  EXPECT_LE(server.connections(), 6);
}

TEST_F(TrackingRequests, aSlowTrackerCostsItsOwnSecondAndHoldsUpNobodyElse) {
  HTTPServer slow;
  HTTPServer::Reply silent;
  silent.silent = true;
  slow.on("/slow", silent);
  for (int i = 0; i < 12; ++i) processor->sendTrackingRequest(*NSURL::URLWithString(slow.url("/slow")));
  const auto began = std::chrono::steady_clock::now();
  processor->sendTrackingRequest(target("/quick"));
  ASSERT_TRUE(server.waitForRequests(1, 5s));
  EXPECT_LT(server.log().front().at - began, 900ms) << "it waited for the slow one";
  // The second six begin when the first six have had their second; the wait does not count against theirs.
  ASSERT_TRUE(slow.waitForRequests(12, 5s));
  const auto log = slow.log();
  EXPECT_THAT(log[11].at - log[0].at, testing::AllOf(Gt(900ms), Lt(4s)));
}

TEST_F(TrackingRequests, whatPassesTheBoundOfTheQueueIsDroppedAndCounted) {
  // The whole queue hangs at one server; a loader of its own, so that nothing of it is left for the other cases.
  HTTPServer slow;
  HTTPServer::Reply silent;
  silent.silent = true;
  slow.onOthers([silent](const HTTPServer::Request&) { return silent; });
  struct Impatient final : URLLoader {
    bool send(URLRequest request) override {
      return transfers.start(std::move(request), [](const URLResponse&) {});
    }
    void load(URLRequest, const dispatch_queue_t&, Completion) override {}
    CurlTransfers transfers{{.atOnce = 32, .perHost = 6, .waiting = 10'000}};
  };
  URLLoader::setShared(std::make_shared<Impatient>());
  const auto before = SKVASTEventProcessor::droppedRequests();
  const NSURL url = *NSURL::URLWithString(slow.url("/"));
  for (int i = 0; i < 10'500; ++i) processor->sendTrackingRequest(url);
  EXPECT_THAT(SKVASTEventProcessor::droppedRequests() - before, testing::AllOf(testing::Ge(470u), testing::Le(500u)));
  slow.stop();
}

TEST_F(TrackingRequests, theEndOfAProcessWaitsForWhatIsOnItsWay) {
  std::string command = TRACKING_EXIT_PROGRAM;
  for (int i = 0; i < 20; ++i) command += " '" + server.url("/" + std::to_string(i)) + "'";
  EXPECT_EQ(std::system(command.c_str()), 0);
  EXPECT_EQ(server.log().size(), 20u);
}

TEST_F(TrackingRequests, theEndOfAProcessIsNotHeldUpByServersThatDoNotAnswer) {
  HTTPServer::Reply silent;
  silent.silent = true;
  server.on("/silent", silent);
  std::string command = TRACKING_EXIT_PROGRAM;
  for (int i = 0; i < 60; ++i) command += " '" + server.url("/silent") + "'";
  const auto began = loop.now();
  EXPECT_EQ(std::system(command.c_str()), 0);
  EXPECT_LT(loop.now() - began, 4s);
}

}  // namespace
