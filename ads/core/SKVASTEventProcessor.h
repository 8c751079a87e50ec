#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "VAST/Parser/YMRVastModel.h"
#include "VAST/SKVASTUrlWithId.h"
#include "ads/core/SKVASTViewControllerDelegate.h"
#include "platform/Export.h"
#include "platform/foundation/NSObject.h"

enum SKVASTTrackingEvent : std::uint32_t {
  SKVASTTrackingEventStart = 0,
  SKVASTTrackingEventCreativeView = 1,
  SKVASTTrackingEventFirstQuartile = 2,
  SKVASTTrackingEventMidpoint = 3,
  SKVASTTrackingEventThirdQuartile = 4,
  SKVASTTrackingEventComplete = 5,
  SKVASTTrackingEventClose = 6,
  SKVASTTrackingEventPause = 7,
  SKVASTTrackingEventResume = 8,
};

// Sends the tracking requests of one ad, and forgets them: nothing waits for an answer, a request that fails is neither
// repeated nor reported. Main thread.
//
// Requests are GETs that end within a second of their own start, over connections that all processors share, handed
// over in the order of the calls. Only http and https are requested. When ten thousand wait, further ones are dropped
// and counted. The end of the process waits for those on their way, for a bounded time.
class YMR_API SKVASTEventProcessor : public NSObject {
 public:
  // URLs by the event's name ("start", "creativeView", …).
  using TrackingEvents = std::map<std::string, std::vector<NSURL>>;

  SKVASTEventProcessor(TrackingEvents trackingEvents, std::weak_ptr<SKVASTViewControllerDelegate> delegate);
  ~SKVASTEventProcessor() override;

  const TrackingEvents& trackingEvents() const { return trackingEvents_; }
  void setTrackingEvents(TrackingEvents events) { trackingEvents_ = std::move(events); }
  std::shared_ptr<SKVASTViewControllerDelegate> delegate() const { return delegate_.lock(); }
  void setDelegate(std::weak_ptr<SKVASTViewControllerDelegate> delegate) { delegate_ = std::move(delegate); }

  // Whose macros are filled in each address, and with what; the exact profile's, which are none, at first. The
  // function is called for each request.
  void setRules(const YMRTagRules& rules, std::function<VASTMacroValues()> values);
  // What trackProgress() requests.
  void setProgress(std::vector<YMRVastModel::Progress> progress) { progress_ = std::move(progress); }

  // Tells the delegate the event's name ("Unknown" for a value that has none), then requests its URLs in order.
  void trackEvent(SKVASTTrackingEvent event);
  // The same for "skip": the viewer has skipped the ad.
  void trackSkip();
  // Requests what is due at `second` of a film that is `duration` seconds long, not a number when that is not known.
  // Each once, also where the film jumps over its moment.
  void trackProgress(double second, double duration);
  // Requests what wants to hear of each that is not run.
  void sendNotRun(const std::vector<VASTNotRun>& notRun);
  // Requests every URL in order; an entry whose URL is nil requests nothing.
  void sendVASTUrlsWithId(const std::vector<SKVASTUrlWithId>& urls);
  // The same with `errorCode` in place of every "[ERRORCODE]" and "%5BERRORCODE%5D".
  void sendVASTError(const std::vector<SKVASTUrlWithId>& urls, const std::string& errorCode);
  // Queues the request behind those already queued; the answer is ignored.
  void sendTrackingRequest(const NSURL& url);

  // Requests of the process that were dropped because too many waited. Any thread.
  static std::uint64_t droppedRequests();

 private:
  void tellDelegate(const std::string& event);
  void sendEvent(const std::string& event, const char* message);
  NSURL address(const NSURL& url) const;

  TrackingEvents trackingEvents_;
  std::weak_ptr<SKVASTViewControllerDelegate> delegate_;
  const YMRTagRules* rules_;
  std::function<VASTMacroValues()> values_;
  VASTMacroValues ofRequest_;                     // what the request at hand adds to them
  std::vector<YMRVastModel::Progress> progress_;  // not requested yet
};
