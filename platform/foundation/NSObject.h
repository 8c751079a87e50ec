#pragma once

#include <any>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "platform/Export.h"
#include "platform/foundation/ObserverList.h"

class NSObject;

enum NSKeyValueObservingOptions : std::uint32_t {
  NSKeyValueObservingOptionNew = 1,      // the change carries the new value
  NSKeyValueObservingOptionInitial = 4,  // one notification at once, before addObserver returns
};

// What a key-value notification says. `newValue` holds the key's value, in the type of its getter, when the observer
// asked for it, else nothing.
struct NSKeyValueChange {
  std::any newValue;
  bool isInitial = false;
};

// Somebody who observes keys of others. Held weakly by what it observes, so it may be destroyed at any time.
class YMR_API NSKeyValueObserver {
 public:
  virtual ~NSKeyValueObserver();
  virtual void observeValueForKeyPath(const std::string& keyPath, const std::shared_ptr<NSObject>& object,
                                      const NSKeyValueChange& change, void* context) = 0;
};

// The base of objects whose properties can be observed. Always held by shared_ptr. Main thread.
//
// Kept from the platform: options New and Initial; notification before the setter returns; observers are called in the
// order of registration, from a snapshot, and a removal takes effect at once, also inside a notification; the same
// observer may be registered several times and is removed once a call, the last registration first; removing one that
// is not there throws. Left out: old and prior values, key paths of more than one key, automatic notification.
class YMR_API NSObject : public std::enable_shared_from_this<NSObject> {
 public:
  NSObject();
  NSObject(const NSObject&) = delete;
  NSObject& operator=(const NSObject&) = delete;
  virtual ~NSObject();

  void addObserver(const std::shared_ptr<NSKeyValueObserver>& observer, std::string_view keyPath,
                   std::uint32_t options = 0, void* context = nullptr);
  // Throws NSRangeException when the observer is not registered for the key. Takes a plain pointer, so that an observer
  // can deregister in its destructor.
  void removeObserver(const NSKeyValueObserver* observer, std::string_view keyPath);
  // True while anybody observes the key: a test's way to see that nothing was left behind.
  bool isObserved(std::string_view keyPath) const;

 protected:
  // The present value of an observable key, for Initial and New; an empty any for a key that the class does not have.
  virtual std::any valueForKey(std::string_view key) const;
  // Tells the observers of `key` that its value has changed. The object stays alive until all have been told.
  void didChangeValueForKey(std::string_view key);

 private:
  struct Registration;
  ObserverList<Registration> registrations_;
};
