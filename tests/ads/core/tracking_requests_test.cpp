#include <gmock/gmock.h>

#include <cstdlib>
#include <set>

#include "ads/core/SKVASTEventProcessor.h"
#include "platform/dispatch/PlainRunLoop.h"
#include "platform/foundation/URLLoader.h"
#include "tests/support/HTTPServer.h"

using namespace std::chrono_literals;
using testing::Gt;
using testing::Lt;

namespace {

struct TrackingRequests : testing::Test {
  TrackingRequests() {
    server.onOthers([](const HTTPServer::Request&) { return HTTPServer::Reply{.body = "GIF89a"}; });
  }
  NSURL target(const std::string& path) const { return *NSURL::URLWithString(server.url(path)); }

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
  std::set<std::string> came;
  for (const auto& request : server.log()) came.insert(request.method + " " + request.target);
  EXPECT_EQ(came.size(), count) << "a request was sent twice";
  EXPECT_EQ(came.lower_bound("GET /"), came.begin());
  EXPECT_LE(server.connections(), 6);
  while (!URLLoader::shared()->wasAnsweredLately() && loop.now() - began < 20s)
    loop.runUntil([] { return false; }, 1ms);
  EXPECT_TRUE(URLLoader::shared()->wasAnsweredLately()) << "proof of a network";
}

TEST_F(TrackingRequests, aSlowTrackerCostsItsOwnSecondAndHoldsUpNobodyElse) {
  HTTPServer slow;
  slow.on("/slow", HTTPServer::Reply{.silent = true});
  for (int i = 0; i < 12; ++i) processor->sendTrackingRequest(*NSURL::URLWithString(slow.url("/slow")));
  const auto began = std::chrono::steady_clock::now();
  processor->sendTrackingRequest(target("/quick"));
  ASSERT_TRUE(server.waitForRequests(1, 5s));
  EXPECT_LT(server.log().front().at - began, 900ms) << "it waited for the slow one";
  // The second six begin when the first six have had their second; the wait does not count against theirs.
  ASSERT_TRUE(slow.waitForRequests(12, 5s));
  const auto log = slow.log();
  EXPECT_THAT(log[11].at - log[0].at, testing::AllOf(Gt(300ms), Lt(8s)));
}

TEST_F(TrackingRequests, theEndOfAProcessWaitsForWhatIsOnItsWayButNotForServersThatDoNotAnswer) {
  server.on("/silent", HTTPServer::Reply{.silent = true});
  std::string command = TRACKING_EXIT_PROGRAM, silent = command;
  for (int i = 0; i < 20; ++i) command += " '" + server.url("/" + std::to_string(i)) + "'";
  for (int i = 0; i < 60; ++i) silent += " '" + server.url("/silent") + "'";
  EXPECT_EQ(std::system(command.c_str()), 0);
  EXPECT_EQ(server.log().size(), 20u);
  const auto began = loop.now();
  EXPECT_EQ(std::system(silent.c_str()), 0);
  EXPECT_LT(loop.now() - began, 4s);
}

}  // namespace
