#pragma once

#include <functional>
#include <memory>
#include <string>

#include "VAST/SKVASTError.h"
#include "platform/foundation/NSURL.h"

class SKVASTViewController;

// What the stand-alone ad screen tells its host, and a tracking processor whom it serves. Each is optional: an empty
// function does not answer. Held weakly by who calls it; called on the main thread.
struct SKVASTViewControllerDelegate {
  using Sender = std::shared_ptr<SKVASTViewController>;

  std::function<void(const Sender&)> vastReady;
  std::function<void(const Sender&, SKVASTError)> vastError;
  std::function<void(const Sender&)> vastWillPresentFullScreen;
  std::function<void(const Sender&)> vastDidDismissFullScreen;
  std::function<void(const NSURL&)> vastOpenBrowseWithUrl;    // where a click leads
  std::function<void(const std::string&)> vastTrackingEvent;  // the event's name
};
