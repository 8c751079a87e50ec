#include "platform/foundation/NSNotificationCenter.h"

#include <utility>

#include "platform/foundation/MainThread.h"
#include "platform/foundation/NSObject.h"

struct NSNotificationCenter::Registration : ObserverListEntry {
  Registration(const void* registered, std::string_view told, const std::shared_ptr<NSObject>& of, Block call)
      : observer(registered), name(told), object(of), anyObject(!of), block(std::move(call)) {}

  const void* const observer;
  const std::string name;
  const std::weak_ptr<NSObject> object;
  const bool anyObject;
  const Block block;
};

NSNotificationCenter::NSNotificationCenter() = default;
NSNotificationCenter::~NSNotificationCenter() = default;

// Never destroyed: observers may be static.
NSNotificationCenter& NSNotificationCenter::defaultCenter() {
  static auto* center = new NSNotificationCenter;
  return *center;
}

void NSNotificationCenter::addObserver(const void* observer, std::string_view name,
                                       const std::shared_ptr<NSObject>& object, Block block) {
  YMR_ASSERT_MAIN_THREAD();
  registrations_.add(std::make_shared<Registration>(observer, name, object, std::move(block)));
}

void NSNotificationCenter::removeObserver(const void* observer) {
  YMR_ASSERT_MAIN_THREAD();
  registrations_.removeIf([&](const auto& registration) { return registration->observer == observer; });
}

void NSNotificationCenter::postNotificationName(std::string_view name, const std::shared_ptr<NSObject>& object) {
  YMR_ASSERT_MAIN_THREAD();
  const NSNotification notification{std::string(name), object};
  registrations_.callEach([&](const Registration& registration) {
    const bool isMeant = registration.anyObject || (object && registration.object.lock() == object);
    if (isMeant && registration.name == notification.name) registration.block(notification);
  });
}
