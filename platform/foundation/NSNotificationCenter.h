#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "platform/Export.h"
#include "platform/foundation/ObserverList.h"

class NSObject;

struct NSNotification {
  std::string name;
  std::shared_ptr<NSObject> object;  // who posted it; may be nil
};

// Broadcasts named notifications inside the process. Main thread.
//
// Kept from the platform: delivery is synchronous, in the order of registration, from a snapshot; a removal takes
// effect at once, also inside a delivery; removeObserver takes out everything an observer registered. An observer is a
// pointer that only serves as a name; its block must hold it weakly. Left out: user info, queues.
class YMR_API NSNotificationCenter {
 public:
  using Block = std::function<void(const NSNotification&)>;

  static NSNotificationCenter& defaultCenter();

  // `object` nil means any object.
  void addObserver(const void* observer, std::string_view name, const std::shared_ptr<NSObject>& object, Block block);
  void removeObserver(const void* observer);
  void postNotificationName(std::string_view name, const std::shared_ptr<NSObject>& object);
  // Registrations in force: a test's way to see that nothing was left behind.
  std::size_t observerCount() const { return registrations_.entries().size(); }

 private:
  struct Registration;
  NSNotificationCenter();
  ~NSNotificationCenter();
  ObserverList<Registration> registrations_;
};
