#include "platform/foundation/NSObject.h"

#include <algorithm>

#include "platform/foundation/MainThread.h"
#include "platform/foundation/NSException.h"

struct NSObject::Registration {
  std::weak_ptr<NSKeyValueObserver> observer;
  const NSKeyValueObserver* identity;  // outlives `observer` as a name only
  std::string keyPath;
  std::uint32_t options;
  void* context;
  bool removed = false;
};

NSKeyValueObserver::~NSKeyValueObserver() = default;

NSObject::NSObject() = default;
NSObject::~NSObject() = default;

std::any NSObject::valueForKey(std::string_view) const {
  return {};
}

void NSObject::addObserver(const std::shared_ptr<NSKeyValueObserver>& observer, std::string_view keyPath,
                           std::uint32_t options, void* context) {
  YMR_ASSERT_MAIN_THREAD();
  if (!observer) return;
  std::erase_if(registrations_, [](const auto& registration) { return registration->observer.expired(); });
  registrations_.push_back(
      std::make_shared<Registration>(Registration{observer, observer.get(), std::string(keyPath), options, context}));
  if (options & NSKeyValueObservingOptionInitial) {
    NSKeyValueChange change{{}, true};
    if (options & NSKeyValueObservingOptionNew) change.newValue = valueForKey(keyPath);
    observer->observeValueForKeyPath(std::string(keyPath), shared_from_this(), change, context);
  }
}

void NSObject::removeObserver(const NSKeyValueObserver* observer, std::string_view keyPath) {
  YMR_ASSERT_MAIN_THREAD();
  const auto last = std::find_if(registrations_.rbegin(), registrations_.rend(), [&](const auto& registration) {
    return registration->identity == observer && registration->keyPath == keyPath;
  });
  if (last == registrations_.rend()) {
    throw NSRangeException("Cannot remove an observer for the key path \"" + std::string(keyPath) +
                           "\" because it is not registered as an observer.");
  }
  (*last)->removed = true;
  registrations_.erase(std::next(last).base());
}

bool NSObject::isObserved(std::string_view keyPath) const {
  return std::any_of(registrations_.begin(), registrations_.end(), [&](const auto& registration) {
    return registration->keyPath == keyPath && !registration->observer.expired();
  });
}

void NSObject::didChangeValueForKey(std::string_view key) {
  YMR_ASSERT_MAIN_THREAD();
  if (registrations_.empty()) return;
  const auto self = shared_from_this();
  const std::string keyPath(key);
  for (const auto snapshot = registrations_; const auto& registration : snapshot) {
    if (registration->removed || registration->keyPath != keyPath) continue;
    const auto observer = registration->observer.lock();
    if (!observer) continue;
    NSKeyValueChange change;
    if (registration->options & NSKeyValueObservingOptionNew) change.newValue = valueForKey(keyPath);
    observer->observeValueForKeyPath(keyPath, self, change, registration->context);
  }
}
