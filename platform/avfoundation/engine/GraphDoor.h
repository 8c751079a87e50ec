#pragma once

#include <mutex>

// Where streaming threads pass that put elements into a pipeline: one at a time, and none once it is closed. What joins
// a pipeline that is being stopped would stay behind and run on.
//
// Any thread. A thread that is inside may enter again: what it changes has messages that come back to it.
class GraphDoor {
 public:
  using Lock = std::unique_lock<std::recursive_mutex>;

  // Owns its mutex, unless the door is closed.
  Lock enter() {
    Lock lock(mutex_);
    if (isClosed_) lock.unlock();
    return lock;
  }
  // Waits for whoever is inside.
  void close() {
    const Lock lock(mutex_);
    isClosed_ = true;
  }

 private:
  std::recursive_mutex mutex_;
  bool isClosed_ = false;
};
