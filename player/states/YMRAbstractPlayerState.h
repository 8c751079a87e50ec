#pragma once

#include <memory>
#include <string>

#include "platform/coremedia/CMTime.h"
#include "platform/foundation/NSNotificationCenter.h"
#include "platform/foundation/NSObject.h"
#include "player/states/YMRPlayerStateHub.h"

// What the player makes of an event depends on where in the presentation it is: one class for each such place. A state
// has no data; the player hands it every raw event of both players, and a transition puts a new state object in its
// place. Main thread. `ymrPlayer` is valid for the call only.
class YMRAbstractPlayerState {
 public:
  YMRAbstractPlayerState() = default;
  YMRAbstractPlayerState(const YMRAbstractPlayerState&) = delete;
  YMRAbstractPlayerState& operator=(const YMRAbstractPlayerState&) = delete;
  virtual ~YMRAbstractPlayerState();

  // Both must be overridden; here they throw NSInternalInconsistencyException.
  virtual void log();
  virtual void observeValueForKeyPath(const std::string& keyPath, const std::shared_ptr<NSObject>& object,
                                      const NSKeyValueChange& change, void* context, YMRPlayerStateHub& ymrPlayer);

  // Do nothing unless overridden. Ticks come once a second of media time; a jump's notification is posted by the item.
  virtual void vodPlayerPeriodicTimeObserver(const CMTime& time, YMRPlayerStateHub& ymrPlayer);
  virtual void adPlayerPeriodicTimeObserver(const CMTime& time, YMRPlayerStateHub& ymrPlayer);
  virtual void videoDidSeek(const NSNotification& notification, YMRPlayerStateHub& ymrPlayer);
};
