#include "platform/foundation/NSObject.h"

#include <algorithm>

#include "platform/foundation/MainThread.h"
#include "platform/foundation/NSException.h"

struct NSObject::Registration : ObserverListEntry {
  Registration(const std::shared_ptr<NSKeyValueObserver>& from, std::string_view key, std::uint32_t with, void* given)
      : observer(from), identity(from.get()), keyPath(key), options(with), context(given) {}

  const std::weak_ptr<NSKeyValueObserver> observer;
  const NSKeyValueObserver* const identity;  // outlives `observer` as a name only
  const std::string keyPath;
  const std::uint32_t options;
  void* const context;
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
  registrations_.removeIf([](const auto& registration) { return registration->observer.expired(); });
  registrations_.add(std::make_shared<Registration>(observer, keyPath, options, context));
  if (options & NSKeyValueObservingOptionInitial) {
    NSKeyValueChange change{{}, true};
    if (options & NSKeyValueObservingOptionNew) change.newValue = valueForKey(keyPath);
    observer->observeValueForKeyPath(std::string(keyPath), shared_from_this(), change, context);
  }
}

void NSObject::removeObserver(const NSKeyValueObserver* observer, std::string_view keyPath) {
  YMR_ASSERT_MAIN_THREAD();
  const auto& all = registrations_.entries();
  const auto last = std::find_if(all.rbegin(), all.rend(), [&](const auto& registration) {
    return registration->identity == observer && registration->keyPath == keyPath;
  });
  if (last == all.rend()) {
    throw NSRangeException("Cannot remove an observer for the key path \"" + std::string(keyPath) +
                           "\" because it is not registered as an observer.");
  }
  registrations_.remove(std::shared_ptr(*last));
}

bool NSObject::isObserved(std::string_view keyPath) const {
  const auto& all = registrations_.entries();
  return std::any_of(all.begin(), all.end(), [&](const auto& registration) {
    return registration->keyPath == keyPath && !registration->observer.expired();
  });
}

void NSObject::didChangeValueForKey(std::string_view key) {
  YMR_ASSERT_MAIN_THREAD();
  if (registrations_.entries().empty()) return;
  const auto self = shared_from_this();
  const std::string keyPath(key);
  registrations_.callEach([&](const Registration& registration) {
    const auto observer = registration.keyPath == keyPath ? registration.observer.lock() : nullptr;
    if (!observer) return;
    NSKeyValueChange change;
    if (registration.options & NSKeyValueObservingOptionNew) change.newValue = valueForKey(keyPath);
    observer->observeValueForKeyPath(keyPath, self, change, registration.context);
  });
}
