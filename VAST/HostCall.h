#pragma once

#include <exception>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>

#include "VAST/SKLogger.h"

// Runs code of a host's; what it throws is logged under `tag` and stays here.
template <typename Call>
void callHost(std::string_view tag, const Call& call) {
  const auto log = [tag](const char* thrown) {
    SKLogger::error(tag, std::string("A callback of the host's threw: ") + thrown);
  };
  try {
    call();
  } catch (const std::exception& thrown) {
    log(thrown.what());
  } catch (...) {
    log("no exception type of the standard library's");
  }
}

// Makes one callback of a host's delegate, a struct of functions, when the delegate is there and answers it. The host
// may destroy the delegate, or replace the very function that runs.
template <typename Delegate, typename... Parameters>
void callDelegate(std::string_view tag, const std::weak_ptr<Delegate>& delegate,
                  std::function<void(Parameters...)> Delegate::*callback,
                  const std::type_identity_t<Parameters>&... arguments) {
  const auto host = delegate.lock();
  if (!host) return;
  const auto call = (*host).*callback;
  if (call) callHost(tag, [&] { call(arguments...); });
}
