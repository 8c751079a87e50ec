#pragma once

#include <algorithm>
#include <atomic>
#include <functional>
#include <iterator>
#include <memory>
#include <utility>
#include <vector>

// What an entry of an ObserverList derives from.
class ObserverListEntry {
 public:
  // Whether it has been taken out of its list. Any thread.
  bool isRemoved() const { return isRemoved_; }

 private:
  template <typename Entry>
  friend class ObserverList;
  std::atomic<bool> isRemoved_ = false;
};

// Observers in the order in which they were added. A round of calls goes to a snapshot: an entry that is added
// meanwhile waits for the next round, one that is removed is not called any more. One thread; everything may be called
// from inside a call, or from what an entry owns as it is destroyed.
template <typename Entry>
class ObserverList {
 public:
  using Entries = std::vector<std::shared_ptr<Entry>>;

  const Entries& entries() const { return entries_; }
  void add(std::shared_ptr<Entry> entry) { entries_.push_back(std::move(entry)); }

  template <typename Call>
  void callEach(const Call& call) const {
    for (const auto snapshot = entries_; const auto& entry : snapshot) {
      if (!entry->isRemoved()) call(*entry);
    }
  }

  // Returns whether it was there.
  bool remove(const std::shared_ptr<Entry>& removed) {
    return removeIf([&](const auto& entry) { return entry == removed; });
  }
  // Returns whether there was any.
  template <typename Which>
  bool removeIf(const Which& which) {
    const auto first = std::stable_partition(entries_.begin(), entries_.end(), std::not_fn(which));
    const Entries gone(std::make_move_iterator(first), std::make_move_iterator(entries_.end()));
    entries_.erase(first, entries_.end());
    for (const auto& entry : gone) entry->isRemoved_ = true;
    return !gone.empty();
  }

 private:
  Entries entries_;
};
