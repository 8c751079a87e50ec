#pragma once

#include <exception>
#include <functional>
#include <memory>
#include <type_traits>

#include "player/YMRVideoPlayerDelegate.h"

// Logs what a host's callback threw.
void logThrownByHost(const char* message);

// Runs code of the host's; what it throws stays here.
template <typename Call>
void callHost(const Call& call) {
  try {
    call();
  } catch (const std::exception& thrown) {
    logThrownByHost(thrown.what());
  } catch (...) {
    logThrownByHost("no exception type of the standard library's");
  }
}

// Whether the delegate is there and wants this callback.
template <typename Callback>
bool delegateAnswers(const std::weak_ptr<YMRVideoPlayerDelegate>& delegate,
                     Callback YMRVideoPlayerDelegate::*callback) {
  const auto host = delegate.lock();
  return host && (*host).*callback;
}

// Makes one callback, when the delegate answers it. The host may destroy the delegate, or replace the very function
// that runs; what it throws stays here.
template <typename... Parameters>
void sendToDelegate(const std::weak_ptr<YMRVideoPlayerDelegate>& delegate,
                    std::function<void(Parameters...)> YMRVideoPlayerDelegate::*callback,
                    const std::type_identity_t<Parameters>&... arguments) {
  const auto host = delegate.lock();
  if (!host) return;
  const auto call = (*host).*callback;
  if (call) callHost([&] { call(arguments...); });
}
