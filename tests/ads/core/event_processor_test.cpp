#include "ads/core/SKVASTEventProcessor.h"

#include <gmock/gmock.h>

#include "VAST/SKLogger.h"
#include "platform/dispatch/VirtualRunLoop.h"
#include "tests/support/ScriptedURLLoader.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

NSURL url(const std::string& text) {
  return *NSURL::URLWithString(text);
}

struct EventProcessor : testing::Test {
  EventProcessor() {
    delegate->vastTrackingEvent = [this](const std::string& event) { told.push_back(event); };
  }
  ~EventProcessor() override { SKLogger::installSink(0, nullptr); }

  // Starts to keep the log; the lines of one tag.
  void keepLog() {
    SKLogger::installSink(SKLogLevelDebug, [this](int level, std::string_view tag, std::string_view message) {
      if (tag == "VAST - Event Processor") logged.push_back(std::to_string(level) + " " + std::string(message));
    });
  }
  std::shared_ptr<SKVASTEventProcessor> processor(SKVASTEventProcessor::TrackingEvents events) {
    return std::make_shared<SKVASTEventProcessor>(std::move(events), delegate);
  }

  VirtualRunLoop loop;
  ScriptedLoaderInPlace network;
  const std::shared_ptr<SKVASTViewControllerDelegate> delegate = std::make_shared<SKVASTViewControllerDelegate>();
  std::vector<std::string> told, logged;
};

TEST_F(EventProcessor, everyEventTellsItsNameRequestsItsURLsInOrderAndLogsThem) {
  const std::pair<std::string, std::string> rows[] = {{"start", "track start"},
                                                      {"creativeView", "track creativeView"},
                                                      {"firstQuartile", "firstQuartile"},
                                                      {"midpoint", "midpoint"},
                                                      {"thirdQuartile", "thirdQuartile"},
                                                      {"complete", "complete"},
                                                      {"close", "close"},
                                                      {"pause", "pause start"},
                                                      {"resume", "resume start"}};
  for (std::uint32_t value = 0; value < std::size(rows); ++value) {
    const auto& [name, words] = rows[value];
    const std::string one = "http://t.example/1", two = "http://t.example/2", sent = "4 Sent " + words + " to url: ";
    const auto sender = processor({{name, {url(one), url(two)}}, {"other", {url("http://t.example/3")}}});
    keepLog();
    sender->trackEvent(static_cast<SKVASTTrackingEvent>(value));
    EXPECT_THAT(std::exchange(told, {}), ElementsAre(name));
    EXPECT_THAT(network.loader->sentURLs(), ElementsAre(one, two));
    EXPECT_THAT(std::exchange(logged, {}), ElementsAre("4 Event processor sending request to url: " + one, sent + one,
                                                       "4 Event processor sending request to url: " + two, sent + two));
    network.loader->forgetSent();
  }
}

TEST_F(EventProcessor, requestsWhatCanBeRequestedAndTellsTheRest) {
  const auto sender = processor({{"pause", {url("file:///etc/passwd")}}, {"Unknown", {url("http://t.example/")}}});
  for (const std::uint32_t value : {0u, 7u, 9u, 0xFFFFFFFFu})
    sender->trackEvent(static_cast<SKVASTTrackingEvent>(value));
  EXPECT_THAT(told, ElementsAre("start", "pause", "Unknown", "Unknown"));
  EXPECT_THAT(network.loader->sentURLs(), IsEmpty());
  EXPECT_EQ(SKVASTEventProcessor::droppedRequests(), 0u) << "a file was handed to the loader, which refused it";
  keepLog();
  sender->sendVASTUrlsWithId({{"a", url("http://i.example/1")}, {{}, url("http://i.example/2")}, {"c", {}}});
  EXPECT_THAT(network.loader->sentURLs(), ElementsAre("http://i.example/1", "http://i.example/2"));
  EXPECT_THAT(logged, ElementsAre(testing::_, "4 Sent http request a to url: http://i.example/1", testing::_,
                                  "4 Sent http request to url: http://i.example/2"));
}

TEST_F(EventProcessor, theErrorCodeTakesThePlaceOfBothFormsOfItsMacroEverywhere) {
  const std::vector<std::pair<const char*, const char*>> rows{
      {"http://e.example/?code=[ERRORCODE]", "http://e.example/?code=401"},
      {"http://e.example/[ERRORCODE]/%5BERRORCODE%5D/[ERRORCODE]?x", "http://e.example/401/401/401?x"},
      {"http://e.example/?code=%5berrorcode%5d", "http://e.example/?code=%5berrorcode%5d"},
      {"http://e.example/[ERROR[ERRORCODE]CODE]", "http://e.example/[ERROR401CODE]"},
  };
  std::vector<SKVASTUrlWithId> errors{{"id", std::nullopt}};
  std::vector<std::string> expected;
  for (const auto& [given, requested] : rows) {
    errors.emplace_back("id", url(given));
    expected.emplace_back(requested);
  }
  processor({})->sendVASTError(errors, "401");
  EXPECT_EQ(network.loader->sentURLs(), expected);
}

TEST_F(EventProcessor, aDelegateMayBeMissingSilentThrowingOrLetGoOfTheProcessor) {
  const SKVASTEventProcessor::TrackingEvents events{{"start", {url("http://t.example/")}}};
  auto sender = processor(events);
  const auto requestsOne = [&] {
    network.loader->forgetSent();
    sender->trackEvent(SKVASTTrackingEventStart);
    return network.loader->sentURLs().size() == 1;
  };
  sender->setDelegate(std::make_shared<SKVASTViewControllerDelegate>());  // gone at once
  EXPECT_TRUE(requestsOne());
  sender->setDelegate(delegate);
  delegate->vastTrackingEvent = nullptr;
  EXPECT_TRUE(requestsOne());
  delegate->vastTrackingEvent = [](const std::string&) { throw 7; };
  EXPECT_TRUE(requestsOne());
  delegate->vastTrackingEvent = [&](const std::string&) {
    sender->setTrackingEvents({});
    delegate->vastTrackingEvent = nullptr;
    sender.reset();
  };
  const std::weak_ptr<SKVASTEventProcessor> weak = sender;
  network.loader->forgetSent();
  sender->trackEvent(SKVASTTrackingEventStart);
  EXPECT_TRUE(weak.expired());
  EXPECT_THAT(network.loader->sentURLs(), IsEmpty()) << "the table was empty when its turn came";
}

}  // namespace
