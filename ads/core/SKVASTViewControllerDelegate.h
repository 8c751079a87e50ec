#pragma once

#include <functional>
#include <memory>
#include <string>

#include "VAST/SKVASTError.h"
#include "platform/foundation/NSURL.h"

class SKVASTViewController;

// What the stand-alone ad screen tells its host, and a tracking processor its owner. Each is optional: an empty
// function is not called. Held weakly by who calls it; called on the main thread. What one of them throws is caught
// and logged.
struct SKVASTViewControllerDelegate {
  using Sender = std::shared_ptr<SKVASTViewController>;

  // An ad has been loaded and can be played. Its film has not been asked for.
  std::function<void(const Sender&)> vastReady;
  // A load brought nothing, playing was refused, or the film failed; the last comes before the dismissal, or right
  // after it when no picture came in time.
  std::function<void(const Sender&, SKVASTError)> vastError;
  // The screen is about to appear; and is gone, whoever took it away.
  std::function<void(const Sender&)> vastWillPresentFullScreen;
  std::function<void(const Sender&)> vastDidDismissFullScreen;
  // The viewer wants to know more: where the click leads. To open it is the host's.
  std::function<void(const NSURL&)> vastOpenBrowseWithUrl;
  // An event is being tracked, by its name in VAST ("start"), also when the ad has no URL for it.
  std::function<void(const std::string&)> vastTrackingEvent;
};
