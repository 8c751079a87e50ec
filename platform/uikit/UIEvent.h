#pragma once

#include <utility>
#include <vector>

#include "platform/uikit/UITouch.h"

// What happened to touches at one moment. A plain value.
//
// Kept from the platform: the touches. Left out: time stamps, kinds of events, coalesced and predicted touches.
class UIEvent {
 public:
  explicit UIEvent(std::vector<UITouch> touches = {}) : touches_(std::move(touches)) {}

  // All that are down or have just come up, those that went down first before the others.
  const std::vector<UITouch>& allTouches() const { return touches_; }

 private:
  std::vector<UITouch> touches_;
};
