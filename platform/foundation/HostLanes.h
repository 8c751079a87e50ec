#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <optional>
#include <string>
#include <unordered_map>
#include <utility>

// How much may be at hand at once, in all and for one host, and how much may wait to be.
struct HostLimits {
  std::size_t atOnce;
  std::size_t perHost;
  std::size_t waiting;
};

// A queue of work for hosts, or whatever else the names stand for, within limits. Work leaves in the order in which it
// came, except that a host at its limit does not hold up the others. No locks.
template <typename Work>
class HostLanes {
 public:
  explicit HostLanes(HostLimits limits) : limits_(limits) {}

  // False, and nothing changes, when the queue is full.
  bool push(const std::string& host, Work work) {
    if (waiting_ == limits_.waiting) return false;
    ++waiting_;
    auto& entry = *lanes_.try_emplace(host).first;
    entry.second.waiting.emplace_back(++lastNumber_, std::move(work));
    if (entry.second.waiting.size() == 1) offer(entry);
    return true;
  }

  // The next piece that may be begun; nothing when there is none or the limits are reached.
  std::optional<Work> pop() {
    if (ready_.empty() || active_ == limits_.atOnce) return std::nullopt;
    auto& entry = *ready_.extract(ready_.begin()).mapped();
    Lane& lane = entry.second;
    Work work = std::move(lane.waiting.front().second);
    lane.waiting.pop_front();
    ++lane.active;
    ++active_;
    --waiting_;
    offer(entry);
    return work;
  }

  // A piece for `host` that was popped is done.
  void finished(const std::string& host) {
    const auto found = lanes_.find(host);
    Lane& lane = found->second;
    --active_;
    if (lane.active-- == limits_.perHost) offer(*found);
    if (lane.active == 0 && lane.waiting.empty()) lanes_.erase(found);
  }

  std::size_t waiting() const { return waiting_; }
  std::size_t active() const { return active_; }
  bool empty() const { return waiting_ == 0 && active_ == 0; }

 private:
  struct Lane {
    std::deque<std::pair<std::uint64_t, Work>> waiting;  // with the number in the order of arrival
    std::size_t active = 0;
  };
  using Lanes = std::unordered_map<std::string, Lane>;

  // Makes the lane's first piece eligible when its host has room.
  void offer(typename Lanes::value_type& entry) {
    Lane& lane = entry.second;
    if (!lane.waiting.empty() && lane.active < limits_.perHost) ready_.emplace(lane.waiting.front().first, &entry);
  }

  const HostLimits limits_;
  Lanes lanes_;
  std::map<std::uint64_t, typename Lanes::value_type*> ready_;  // by the number of the lane's first piece
  std::uint64_t lastNumber_ = 0;
  std::size_t waiting_ = 0;
  std::size_t active_ = 0;
};
