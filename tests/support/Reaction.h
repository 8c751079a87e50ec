#pragma once

#include <functional>
#include <memory>
#include <string>
#include <utility>

#include "platform/foundation/NSObject.h"

// Does something each time that it is told of a key.
struct Reaction final : NSKeyValueObserver {
  explicit Reaction(std::function<void()> to) : act(std::move(to)) {}
  void observeValueForKeyPath(const std::string&, const std::shared_ptr<NSObject>&, const NSKeyValueChange&,
                              void*) override {
    act();
  }
  std::function<void()> act;
};
