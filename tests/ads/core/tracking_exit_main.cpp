// Tracks one event for each URL given and ends at once, as a host does that is closed after an ad.
#include "ads/core/SKVASTEventProcessor.h"
#include "platform/dispatch/PlainRunLoop.h"

int main(int argc, char** argv) {
  PlainRunLoop loop;
  std::vector<NSURL> urls;
  for (int i = 1; i < argc; ++i) urls.push_back(*NSURL::URLWithString(argv[i]));
  const auto processor = std::make_shared<SKVASTEventProcessor>(SKVASTEventProcessor::TrackingEvents{{"start", urls}},
                                                                std::weak_ptr<SKVASTViewControllerDelegate>());
  processor->trackEvent(SKVASTTrackingEventStart);
  return 0;
}
