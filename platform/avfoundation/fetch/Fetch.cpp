#include "platform/avfoundation/fetch/Fetch.h"

#include <algorithm>

using namespace std::chrono_literals;

namespace {

// A place so little beyond a lane's end is waited for; a request of its own would take longer.
constexpr std::uint64_t nearLimit = 1024 * 1024;
// A reader that asks for other places all the time makes no more requests than this allows.
constexpr Fetch::Time movesInterval = 20ms;
// For so long a lane counts as used in turns with the other, or as one that may be wanted again.
constexpr Fetch::Time alternationLimit = 5s;
// A reader that takes over from another one reads head and index, and then comes to where that one was.
constexpr Fetch::Time takeoverLimit = 10s;
constexpr std::uint64_t leastAhead = 1024 * 1024;
// As long as the reader has not said how much it wants: so much, or this often what it has read.
constexpr std::uint64_t untoldAhead = 4 * 1024 * 1024;
constexpr std::uint64_t untoldGrowth = 4;
constexpr std::uint64_t mostStep = 1024 * 1024;
constexpr std::uint64_t leastBehind = 512 * 1024;
constexpr std::size_t part = 8;  // of what may be ahead or held: kept behind, spared for the other lane, read at a time
constexpr std::size_t chunksToGetOn = 4;

}  // namespace

Fetch::Fetch(const NSURL& url, std::shared_ptr<ByteStore> store, HTTPStreams& streams)
    : resource_{.url = url, .facts = {}, .opening = {}, .takesRange = true, .failure = {}},
      store_(std::move(store)),
      lanes_{Lane{{resource_, *store_, 0, streams}}, Lane{{resource_, *store_, 1, streams}}},
      demand_(store_->demand()),
      readers_(demand_.readers) {
  lanes_[0].fetch.move(0);
}

std::optional<Fetch::Time> Fetch::turn(Time now) {
  if (store_->failure()) return std::nullopt;
  demand_ = store_->demand();
  std::optional<Time> next = follow(now);
  for (std::size_t lane = 0; lane < lanes_.size(); ++lane) {
    Lane& each = lanes_[lane];
    const auto wish = goal(lane);
    if (lane == current_) {
      each.leftAt = now;
    } else if (now - each.leftAt >= alternationLimit) {
      each.fetch.rest();
    } else if (each.fetch.isPaused()) {
      next = std::min(next.value_or(Time::max()), each.leftAt + alternationLimit);
    }
    if (const auto due = each.fetch.turn(now, wish)) next = std::min(next.value_or(Time::max()), *due);
    showWhetherFull(lane, wish);
  }
  const auto& failure = resource_.failure ? resource_.failure : lanes_[current_].fetch.failure();
  if (failure && (!resource_.facts || wanted())) {
    store_->tellFailure(*failure);
    for (Lane& lane : lanes_) lane.fetch.halt();
    return std::nullopt;
  }
  return next;
}

std::optional<std::uint64_t> Fetch::wanted() const {
  if (!demand_.isWaiting || !resource_.facts) return std::nullopt;
  if (resource_.facts->length && demand_.place >= *resource_.facts->length) return std::nullopt;
  for (std::size_t lane = 0; lane < lanes_.size(); ++lane) {
    if (store_->holds(lane, demand_.place)) return std::nullopt;
  }
  return demand_.place;
}

// Sees where the reader is, and moves a lane to where it waits when none comes by there.
std::optional<Fetch::Time> Fetch::follow(Time now) {
  keepForNextReader(now);
  std::size_t current = laneToMove(now) == 0 ? 1 : 0;
  for (std::size_t lane = 0; lane < lanes_.size(); ++lane) {
    if (demand_.isWaiting && store_->holds(lane, demand_.place)) current = lane;  // it has not seen yet what is here
  }
  if (const auto place = wanted()) {
    if (const auto lane = laneFor(*place)) {
      current = *lane;
    } else {
      current = laneToMove(now);
      Lane& moved = lanes_[current];
      if (now < moved.movedAt + movesInterval && moved.movedAt > Time(0)) return moved.movedAt + movesInterval;
      moved.fetch.move(*place);
      moved.movedAt = now;
      moved.movedTo = *place;
      moved.usesBefore = demand_.lane[current].uses;
    }
  }
  if (current != current_ && wasRead(current) && wasRead(current_)) alternatedAt_ = now;
  current_ = current;
  isAlternating_ = alternatedAt_ >= Time(0) && now - alternatedAt_ < alternationLimit;
  return std::nullopt;
}

std::optional<std::size_t> Fetch::laneFor(std::uint64_t place) const {
  std::optional<std::size_t> best;
  for (std::size_t lane = 0; lane < lanes_.size(); ++lane) {
    const std::uint64_t begin = store_->begin(lane), end = store_->end(lane);
    if (!lanes_[lane].fetch.isPlaced() || place < begin) continue;
    // Without ranges another connection would have to come by all that lies before.
    const bool isNear = !resource_.facts->servesRanges || place <= end || place - end <= nearLimit;
    if (isNear && (!best || end > store_->end(*best))) best = lane;
  }
  return best;
}

std::uint64_t Fetch::placeIn(std::size_t lane) const {
  return wasRead(lane) ? demand_.lane[lane].place
                       : std::clamp(lanes_[lane].movedTo, store_->begin(lane), store_->end(lane));
}

void Fetch::keepForNextReader(Time now) {
  if (std::exchange(readers_, demand_.readers) == demand_.readers || !wasRead(current_)) return;
  kept_ = current_;
  keptUntil_ = now + takeoverLimit;
  keptUses_ = demand_.lane[kept_].uses;
}

std::size_t Fetch::laneToMove(Time now) const {
  if (!lanes_[1].fetch.isPlaced()) return 1;
  if (!lanes_[0].fetch.isPlaced()) return 0;
  if (now < keptUntil_ && demand_.lane[kept_].uses == keptUses_) return 1 - kept_;
  return demand_.lane[0].uses < demand_.lane[1].uses ? 0 : 1;
}

FetchLane::Goal Fetch::goal(std::size_t lane) {
  const std::size_t all = store_->chunkCount();
  const std::uint64_t most = (all - all / part) * ByteStore::chunkBytes;
  const auto wish = lane == current_ ? wanted() : std::nullopt;
  const std::uint64_t place = std::max(placeIn(lane), std::min(wish.value_or(0), store_->end(lane)));
  const std::uint64_t read = place - std::min(place, lanes_[lane].movedTo);
  const std::uint64_t limit = demand_.aheadLimit.value_or(std::max(untoldAhead, std::min(read, most) * untoldGrowth));
  const std::uint64_t ahead = std::clamp(limit, std::min(leastAhead, most), most);
  const std::uint64_t behind = std::min(std::max(ahead / part, leastBehind), most / 4);
  store_->trim(lane, place - std::min(place, behind));
  if (lane != current_ && !isAlternating_) return {};
  FetchLane::Goal goal;
  goal.until = std::max(place, wish.value_or(0)) + ahead;
  goal.chunks = isAlternating_ ? all / 2 : all - all / part;
  goal.step = std::min(mostStep, ahead / part);
  goal.isUrgent = wish.has_value() || !resource_.facts;
  if (lane == current_) makeRoom(lane, goal.isUrgent);
  return goal;
}

// The other lane gives up what it holds before this one has to stop, unless both are read from; but a reader that waits
// always gets on.
void Fetch::makeRoom(std::size_t lane, bool isUrgent) {
  const std::size_t other = 1 - lane;
  const std::size_t spare = store_->chunkCount() / part;
  const bool isTooMuch = !isAlternating_ && store_->freeCount() < spare / 2 && store_->heldCount(other) > spare;
  if (isTooMuch || (isUrgent && store_->freeCount() < chunksToGetOn)) lanes_[other].fetch.drop();
}

void Fetch::showWhetherFull(std::size_t number, const FetchLane::Goal& goal) {
  Lane& lane = lanes_[number];
  const std::uint64_t ahead = store_->end(number) - placeIn(number);
  const bool isToBeFilled = goal.until > 0, isPaused = lane.fetch.isPaused();
  if (!isToBeFilled || (!isPaused && ahead <= lane.fullAhead / 2)) {
    lane.fullAhead = 0;
  } else if (isPaused) {
    lane.fullAhead = std::max(ahead, std::uint64_t{1});
  }
  store_->setFull(number, lane.fullAhead > 0 || resource_.failure || lane.fetch.failure());
}
