#include "platform/foundation/NSNotificationCenter.h"

#include <algorithm>
#include <iterator>

#include "platform/foundation/MainThread.h"
#include "platform/foundation/NSObject.h"

struct NSNotificationCenter::Registration {
  const void* observer;
  std::string name;
  std::weak_ptr<NSObject> object;
  bool anyObject;
  Block block;
  bool removed = false;
};

NSNotificationCenter::NSNotificationCenter() = default;
NSNotificationCenter::~NSNotificationCenter() = default;

NSNotificationCenter& NSNotificationCenter::defaultCenter() {
  static NSNotificationCenter center;
  return center;
}

void NSNotificationCenter::addObserver(const void* observer, std::string_view name,
                                       const std::shared_ptr<NSObject>& object, Block block) {
  YMR_ASSERT_MAIN_THREAD();
  registrations_.push_back(std::make_shared<Registration>(
      Registration{observer, std::string(name), object, object == nullptr, std::move(block)}));
}

void NSNotificationCenter::removeObserver(const void* observer) {
  YMR_ASSERT_MAIN_THREAD();
  const auto first = std::stable_partition(registrations_.begin(), registrations_.end(), [&](const auto& registration) {
    return registration->observer != observer;
  });
  // Out of the list first: what a block owns may remove others as it goes.
  const std::vector<std::shared_ptr<Registration>> gone(std::make_move_iterator(first),
                                                        std::make_move_iterator(registrations_.end()));
  registrations_.erase(first, registrations_.end());
  for (const auto& registration : gone) registration->removed = true;
}

void NSNotificationCenter::postNotificationName(std::string_view name, const std::shared_ptr<NSObject>& object) {
  YMR_ASSERT_MAIN_THREAD();
  const NSNotification notification{std::string(name), object};
  for (const auto snapshot = registrations_; const auto& registration : snapshot) {
    if (registration->removed || registration->name != notification.name) continue;
    if (!registration->anyObject && (!object || registration->object.lock() != object)) continue;
    registration->block(notification);
  }
}
