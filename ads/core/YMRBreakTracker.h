#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "VAST/Parser/YMRTagRules.h"
#include "VAST/SKVASTError.h"
#include "platform/Export.h"
#include "platform/foundation/NSURL.h"

class SKVASTEventProcessor;

// Tells the trackers of one ad break, as a schedule document names them, how it went. Each is told once. Main thread.
class YMR_API YMRBreakTracker {
 public:
  using TrackingEvents = std::map<std::string, std::vector<NSURL>>;

  // Macros as SKVASTEventProcessor fills them in.
  YMRBreakTracker(const TrackingEvents& events, const YMRTagRules& rules, std::function<VASTMacroValues()> values);
  ~YMRBreakTracker();

  // Its ads are being taken.
  void breakDidStart();
  // It has nothing more to show. With `failure` it has shown nothing at all.
  void breakDidEnd(std::optional<SKVASTError> failure);

 private:
  void send(const std::string& event);

  TrackingEvents events_;  // not told yet
  const std::shared_ptr<SKVASTEventProcessor> processor_;
  bool hasStarted_ = false;
};
