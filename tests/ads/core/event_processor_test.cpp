#include "ads/core/SKVASTEventProcessor.h"

#include <gmock/gmock.h>

#include "VAST/Parser/YMRVastModel.h"
#include "platform/dispatch/VirtualRunLoop.h"
#include "tests/VAST/Parser/RecordedLog.h"
#include "tests/VAST/Parser/VASTTexts.h"
#include "tests/support/ScriptedURLLoader.h"

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

NSURL url(const std::string& text) {
  return *NSURL::URLWithString(text);
}

struct EventProcessor : testing::Test {
  EventProcessor() {
    delegate->vastTrackingEvent = [this](const std::string& event) { told.push_back(event); };
  }
  std::shared_ptr<SKVASTEventProcessor> processor(SKVASTEventProcessor::TrackingEvents events) {
    return std::make_shared<SKVASTEventProcessor>(std::move(events), delegate);
  }

  VirtualRunLoop loop;
  ScriptedLoaderInPlace network;
  const std::shared_ptr<SKVASTViewControllerDelegate> delegate = std::make_shared<SKVASTViewControllerDelegate>();
  std::vector<std::string> told;
};

TEST_F(EventProcessor, everyEventTellsItsNameAndRequestsItsURLsInOrder) {
  const std::vector<std::string> names{"start",    "creativeView", "firstQuartile", "midpoint", "thirdQuartile",
                                       "complete", "close",        "pause",         "resume"};
  const std::string one = "http://t.example/1", two = "http://t.example/2";
  for (std::uint32_t value = 0; value < names.size(); ++value) {
    const auto sender = processor({{names[value], {url(one), url(two)}}, {"other", {url("http://t.example/3")}}});
    const RecordedLog log;
    sender->trackEvent(static_cast<SKVASTTrackingEvent>(value));
    EXPECT_EQ(std::exchange(told, {}), std::vector{names[value]});
    EXPECT_THAT(network.loader->sentURLs(), ElementsAre(one, two));
    network.loader->forgetSent();
    const std::string request = "debug VAST - Event Processor: Event processor sending request to url: ";
    EXPECT_THAT(log.lines(), ElementsAre(request + one, HasSubstr("Sent"), request + two, HasSubstr("Sent")));
  }
}

TEST_F(EventProcessor, requestsWhatCanBeRequestedAndTellsTheRest) {
  const auto sender = processor({{"pause", {url("file:///etc/passwd")}}, {"Unknown", {url("http://t.example/")}}});
  for (const std::uint32_t value : {0u, 7u, 9u, 0xFFFFFFFFu})
    sender->trackEvent(static_cast<SKVASTTrackingEvent>(value));
  EXPECT_THAT(told, ElementsAre("start", "pause", "Unknown", "Unknown"));
  EXPECT_THAT(network.loader->sentURLs(), IsEmpty());
  const RecordedLog log;
  sender->sendVASTUrlsWithId({{"a", url("http://i.example/1")}, {{}, url("http://i.example/2")}, {"c", {}}});
  EXPECT_THAT(network.loader->sentURLs(), ElementsAre("http://i.example/1", "http://i.example/2"));
  EXPECT_THAT(log.lines(), ElementsAre(testing::_, HasSubstr("Sent http request a to url: http://i.example/1"),
                                       testing::_, HasSubstr("Sent http request to url: http://i.example/2")));
}

TEST_F(EventProcessor, theErrorCodeTakesThePlaceOfBothFormsOfItsMacroEverywhere) {
  processor({})->sendVASTError({{"id", std::nullopt},
                                {"id", url("http://e.example/[ERRORCODE]/%5BERRORCODE%5D/[ERRORCODE]?x")},
                                {"id", url("http://e.example/?code=%5berrorcode%5d")},
                                {"id", url("http://e.example/[ERROR[ERRORCODE]CODE]")}},
                               "401");
  EXPECT_THAT(network.loader->sentURLs(),
              ElementsAre("http://e.example/401/401/401?x", "http://e.example/?code=%5berrorcode%5d",
                          "http://e.example/[ERROR401CODE]"));
}

TEST_F(EventProcessor, theErrorCodeGoesToEveryWrapperOfAChain) {
  const auto model = std::make_shared<YMRVastModel>();
  const auto error = [](const std::string& name) { return "<Error>http://e.example/" + name + "?[ERRORCODE]</Error>"; };
  for (const char* name : {"outer", "inner"}) {
    model->addVASTDocument(VASTDocument(vast::document(vast::wrapper("http://ads.test/next", "", error(name)))));
  }
  model->addVASTDocument(VASTDocument(vast::document(vast::inLine(error("ad")))));
  processor({})->sendVASTError(model->errors(), "401");
  EXPECT_THAT(network.loader->sentURLs(),
              ElementsAre("http://e.example/outer?401", "http://e.example/inner?401", "http://e.example/ad?401"));
}

TEST_F(EventProcessor, countsWhatTheLoaderHasNoRoomFor) {
  struct Full : URLLoader {
    bool send(URLRequest) override { return false; }
    void load(URLRequest, const dispatch_queue_t&, Completion) override {}
  };
  URLLoader::setShared(std::make_shared<Full>());
  const auto before = SKVASTEventProcessor::droppedRequests();
  processor({{"start", {url("http://t.example/"), url("http://t.example/")}}})->trackEvent(SKVASTTrackingEventStart);
  EXPECT_EQ(SKVASTEventProcessor::droppedRequests(), before + 2);
}

TEST_F(EventProcessor, aDelegateMayLetGoOfTheProcessorAndItsTable) {
  auto sender = processor({{"start", {url("http://t.example/")}}});
  delegate->vastTrackingEvent = [&](const std::string&) {
    sender->setTrackingEvents({});
    sender.reset();
  };
  sender->trackEvent(SKVASTTrackingEventStart);
  EXPECT_THAT(network.loader->sentURLs(), IsEmpty()) << "the table was empty when its turn came";
}

}  // namespace
