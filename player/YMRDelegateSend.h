#pragma once

#include <functional>
#include <memory>
#include <type_traits>

#include "VAST/HostCall.h"
#include "player/YMRVideoPlayerDelegate.h"
#include "player/states/YMRPlayerStateRules.h"

// Whether the delegate is there and wants this callback.
template <typename Callback>
bool delegateAnswers(const std::weak_ptr<YMRVideoPlayerDelegate>& delegate,
                     Callback YMRVideoPlayerDelegate::*callback) {
  const auto host = delegate.lock();
  return host && (*host).*callback;
}

// Makes one callback, when the delegate answers it.
template <typename... Parameters>
void sendToDelegate(const std::weak_ptr<YMRVideoPlayerDelegate>& delegate,
                    std::function<void(Parameters...)> YMRVideoPlayerDelegate::*callback,
                    const std::type_identity_t<Parameters>&... arguments) {
  callDelegate(ymrPlayerTag, delegate, callback, arguments...);
}
