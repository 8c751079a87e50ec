#include "platform/dispatch/Dispatch.h"

#include <deque>
#include <mutex>
#include <stdexcept>
#include <utility>

class DispatchQueue : public std::enable_shared_from_this<DispatchQueue> {
 public:
  enum class Kind { main, global, serial };

  DispatchQueue(Kind kind, std::string label) : kind_(kind), label_(std::move(label)) {}

  void async(dispatch_block_t block) {
    switch (kind_) {
      case Kind::main:
        RunLoop::main().post(std::move(block));
        break;
      case Kind::global:
        RunLoop::main().performWork(std::move(block));
        break;
      case Kind::serial:
        enqueue(std::move(block));
        break;
    }
  }

 private:
  void enqueue(dispatch_block_t block) {
    {
      std::lock_guard lock(mutex_);
      blocks_.push_back(std::move(block));
      if (draining_) return;
      draining_ = true;
    }
    takeTurn();
  }

  // One block a turn, so that a busy queue leaves room for the others. When the loop goes before the turn has come, the
  // blocks that wait go with it: what holds the queue may be one of them.
  void takeTurn() {
    struct Turn {
      ~Turn() {
        if (queue) queue->drop();
      }
      std::shared_ptr<DispatchQueue> queue;
    };
    auto turn = std::make_shared<Turn>();
    turn->queue = shared_from_this();
    RunLoop::main().performWork([turn = std::move(turn)] { std::exchange(turn->queue, nullptr)->drain(); });
  }

  void drop() {
    std::deque<dispatch_block_t> dropped;  // destroyed after the lock is released: what they own may call back
    std::lock_guard lock(mutex_);
    dropped.swap(blocks_);
    draining_ = false;
  }

  void drain() {
    dispatch_block_t block;
    {
      std::lock_guard lock(mutex_);
      block = std::move(blocks_.front());
      blocks_.pop_front();
    }
    block();
    block = nullptr;
    {
      std::lock_guard lock(mutex_);
      if (blocks_.empty()) {
        draining_ = false;
        return;
      }
    }
    takeTurn();
  }

  const Kind kind_;
  const std::string label_;  // for whoever looks at it in a debugger
  std::mutex mutex_;
  std::deque<dispatch_block_t> blocks_;
  bool draining_ = false;
};

class DispatchGroup {
 public:
  void enter() {
    std::lock_guard lock(mutex_);
    ++count_;
  }

  void leave() {
    {
      std::lock_guard lock(mutex_);
      if (count_ == 0) throw std::logic_error("dispatch_group_leave without dispatch_group_enter");
      --count_;
    }
    RunLoop::main().notifyWaiters();
  }

  void wait() {
    RunLoop::main().waitUntil([this] {
      std::lock_guard lock(mutex_);
      return count_ == 0;
    });
  }

 private:
  std::mutex mutex_;
  std::size_t count_ = 0;
};

// Neither queue is ever destroyed: what is static may still ask for it.
dispatch_queue_t dispatch_get_main_queue() {
  static const auto* queue = new auto(std::make_shared<DispatchQueue>(DispatchQueue::Kind::main, "main"));
  return *queue;
}

dispatch_queue_t dispatch_get_global_queue() {
  static const auto* queue = new auto(std::make_shared<DispatchQueue>(DispatchQueue::Kind::global, "global"));
  return *queue;
}

dispatch_queue_t dispatch_queue_create(std::string label) {
  return std::make_shared<DispatchQueue>(DispatchQueue::Kind::serial, std::move(label));
}

void dispatch_async(const dispatch_queue_t& queue, dispatch_block_t block) {
  queue->async(std::move(block));
}

dispatch_group_t dispatch_group_create() {
  return std::make_shared<DispatchGroup>();
}

void dispatch_group_enter(const dispatch_group_t& group) {
  group->enter();
}

void dispatch_group_leave(const dispatch_group_t& group) {
  group->leave();
}

void dispatch_group_wait(const dispatch_group_t& group) {
  group->wait();
}
