#include "platform/avfoundation/hls/HLSLoader.h"

#include <algorithm>
#include <utility>

#include "platform/avfoundation/bytes/ServerErrors.h"

using namespace std::chrono_literals;

namespace {

using Time = HLSLoader::Time;
using Kind = SegmentRecord::Kind;

constexpr Time aheadLimit = 40s;
// A segment is asked of so many variants.
constexpr std::size_t variantsAsked = 3;
// A variant that has so many segments less than another in a row is left alone.
constexpr int variantFailuresLimit = 2;
// So many segments in a row that nobody has are no hole but the end.
constexpr int missingLimit = 5;
constexpr int sideMissingLimit = 2;
constexpr int reloadFailuresLimit = 5;
constexpr int sideReloadFailuresLimit = 3;
// A live programme of which all lists have failed is tried again so often.
constexpr int setbacksLimit = 2;
// A live list that comes so often without news is left for another that may have some. It comes twice a segment.
constexpr int unchangedLimit = 6;
constexpr Time firstPause = 500ms;
constexpr Time mostPause = 8s;
// Where the lists of two variants disagree by less, they mean the same.
constexpr std::int64_t tolerance = 250'000'000;
// A transfer is given up for a lesser variant after this at the earliest.
constexpr Time trialTime = 2s;

std::optional<Time> earlier(std::optional<Time> one, std::optional<Time> other) {
  return one && other ? std::min(*one, *other) : one ? one : other;
}

}  // namespace

HLSLoader::HLSLoader(Source source, std::shared_ptr<ByteStore> store, HTTPStreams& streams)
    : source_(std::move(source)), store_(std::move(store)), streams_(streams), row_(*store_, 0), textRow_(*store_, 1) {
  audio_.track.number = SegmentRecord::audioTrack;
  text_.track.number = SegmentRecord::firstTextTrack;
  audio_.track.isSide = text_.track.isSide = true;
  row_.begin(wish_.mediaPlace());
}

void HLSLoader::fail(const NSError& error) {
  main_.load.reset();
  audio_.track.load.reset();
  text_.track.load.reset();
  store_->tellFailure(error);
}

// Why something could not be had, after what follows from it.
NSError HLSLoader::reason(const std::string& consequence) const {
  const NSError error = error_.value_or(senselessAnswerError(source_.url, "a marked hole"));
  return consequence.empty() ? error : missingPartError(source_.url, consequence, error);
}

std::optional<Time> HLSLoader::turn(Time now) {
  now_ = now;
  if (store_->failure()) return std::nullopt;
  if (!std::exchange(isOpen_, true)) open(now);
  if (store_->failure()) return std::nullopt;
  const auto demand = store_->demand();
  followWish(demand);
  row_.follow(demand);
  textRow_.follow(demand);
  auto due = turnMain(now, demand);
  if (isBegun_ && audio_.isThere()) due = earlier(due, turnSide(audio_, row_, now));
  if (isBegun_ && text_.isThere()) due = earlier(due, turnSide(text_, textRow_, now));
  row_.setFull(isOver_ || !wantsMore(main_, readTime(), row_));
  return due;
}

void HLSLoader::open(Time now) {
  if (!store_->tellHead({std::nullopt, false, "", source_.url.absoluteString()})) {
    return fail(senselessAnswerError(source_.url, "an address without an end"));
  }
  auto read = readHLSPlaylist(source_.text);
  if (const auto* fault = std::get_if<HLSFault>(&read)) return fail(hlsFaultError(*fault, source_.url));
  if (auto* master = std::get_if<HLSMasterPlaylist>(&read)) {
    openMaster(std::move(*master));
  } else {
    master_.variants.resize(1);
    variants_.push_back(std::make_unique<HLSStream>(streams_, source_.url, false));
    variants_[0]->adopt(source_.text, source_.url, now);
  }
  choice_.emplace(master_.variants, source_.screenHeight);
  failures_.resize(master_.variants.size());
  variants_.resize(master_.variants.size());
}

void HLSLoader::openMaster(HLSMasterPlaylist master) {
  // Sound alone is for those who can't have pictures.
  const auto hasPictures = [](const HLSVariant& variant) { return variant.height > 0; };
  if (std::ranges::any_of(master.variants, hasPictures)) std::erase_if(master.variants, std::not_fn(hasPictures));
  master_ = std::move(master);
  const HLSVariant& first = master_.variants.front();
  std::vector<const HLSRendition*> sounds;
  for (const HLSRendition& each : master_.renditions) {
    if (each.kind == HLSRendition::Kind::audio && each.group == first.audioGroup) sounds.push_back(&each);
    if (each.kind == HLSRendition::Kind::text && each.group == first.textGroup &&
        texts_.size() < SegmentWish::textsLimit) {
      texts_.push_back(each);
    }
  }
  std::stable_partition(sounds.begin(), sounds.end(), [](const HLSRendition* each) { return each->isDefault; });
  if (sounds.empty() || sounds.front()->uri.empty()) return;  // it comes with the pictures
  for (const HLSRendition* each : sounds) {
    if (!each->uri.empty()) audio_.addresses.push_back(each->uri);
  }
  hasSound_ = audio_.isThere();
}

HLSStream& HLSLoader::stream(std::size_t variant) {
  auto& stream = variants_[variant];
  if (!stream) {
    const auto url = hlsAddress(master_.variants[variant].uri, source_.url);
    stream = std::make_unique<HLSStream>(streams_, url.value_or(source_.url), hasAlternatives());
  }
  return *stream;
}

// The reader wants a row from somewhere else, or other texts.
void HLSLoader::followWish(const ByteStore::Demand& demand) {
  const auto wish = SegmentWish::unpacked(demand.wish);
  const bool isTextPlace = demand.place >= SegmentWish{}.textPlace();
  // A wish for texts may have followed before this was seen: it has the same time, and the row's number is older.
  const unsigned row = SegmentWish::numberAt(demand.place);
  const bool isWaitedFor = demand.isWaiting && !isTextPlace;
  if (isWaitedFor && row != wish_.number) jump({.number = row, .text = wish.text, .time = wish.time});
  if (wish.number == textNumber_ || !isBegun_) return;
  textNumber_ = wish.number;
  textRow_.begin(wish.textPlace());
  text_.track = {.number = SegmentRecord::firstTextTrack + wish.text.value_or(0), .isSide = true, .time = wish.time};
  text_.stream.reset();
  text_.addresses.clear();
  if (wish.text && *wish.text < texts_.size()) text_.addresses.push_back(texts_[*wish.text].uri);
}

void HLSLoader::jump(const SegmentWish& wish) {
  wish_ = wish;
  isOver_ = false;
  asked_.clear();
  picked_.reset();
  for (Track* track : {&main_, &audio_.track}) {
    track->load.reset();
    track->of = nullptr;
    track->time = wish.time;
    track->missing = 0;
    track->notBefore = Time(0);
  }
  row_.begin(wish.mediaPlace());
  if (isBegun_) tellFacts();
  if (isBegun_ && hasSound_ && !audio_.isThere())
    row_.write({.kind = Kind::trackEnd, .track = SegmentRecord::audioTrack});
}

void HLSLoader::tellFacts() {
  const HLSStream& from = *variants_[*current_];
  SegmentFacts facts;
  facts.hasAudioTrack = hasSound_;
  for (const HLSRendition& each : texts_) facts.texts.push_back({each.language, each.name});
  SegmentRecord record{.kind = Kind::facts};
  const bool isLive = !from.list().hasEnded;
  record.start = from.timeline().begin();
  record.duration = (isLive ? from.timeline().liveStart() : from.timeline().end()) - record.start;
  record.isLive = isLive;
  record.writtenAt = now_.count();
  row_.write(record, bytesOf(facts));
  toldVersion_ = from.version();
}

bool HLSLoader::wantsMore(const Track& track, std::int64_t readTime, const HLSRow& row) const {
  return Time(track.time - readTime) < aheadLimit && row.hasRoom(SegmentRecord::sizeLimit);
}

std::optional<Time> HLSLoader::turnMain(Time now, const ByteStore::Demand& demand) {
  std::optional<Time> due;
  if (current_ && isBegun_) {
    HLSStream& read = *variants_[*current_];
    due = read.turn(now, nullptr);
    const bool isNews = read.version() != toldVersion_;
    if (isNews && row_.hasRoom(SegmentRecord::sizeLimit)) tellFacts();
    const bool isStuck = hasAlternatives() && read.unchanged() >= unchangedLimit;
    if (!main_.load && (read.refusals() >= reloadFailuresLimit || isStuck) && row_.isDry(demand)) {
      choice_->bar(*current_, now);
      picked_.reset();
      if (read.failure()) error_ = read.failure();
    }
  }
  if (main_.load) {
    due = earlier(due, main_.load->turn(now));
    considerLess(now);
    if (!main_.load) return now;
    if (main_.load->state() == HLSSegmentLoad::State::running) return due;
    settleMain(now);
    return now;
  }
  if (isOver_ || (isBegun_ && !wantsMore(main_, readTime(), row_))) return due;
  if (now < main_.notBefore) return earlier(due, main_.notBefore);
  // Sound of its own goes ahead: whoever reads the pictures has it by then.
  if (isBegun_ && audio_.isThere() && audio_.track.time <= main_.time) return due;
  if (!picked_) picked_ = asked_.empty() ? choice_->choose(now, ahead()) : choice_->instead(asked_, now);
  if (!picked_ && asked_.empty()) {
    if (isBegun_ && !variants_[*current_]->list().hasEnded && ++setbacks_ <= setbacksLimit) {
      choice_->forgive();
      for (const auto& each : variants_) {
        if (each) each->startOver();
      }
      pause(now);
      return now;
    }
    // Of a list without variants there is but one stream, and its own words say it all.
    fail(reason(master_.variants[0].uri.empty() ? "" : "no stream that it names can be had"));
    return std::nullopt;
  }
  if (!picked_ || asked_.size() >= variantsAsked) {
    giveUp(now);
    return now;
  }
  HLSStream& from = stream(*picked_);
  due = earlier(due, from.turn(now, current_ ? &variants_[*current_]->timeline() : nullptr));
  if (!from.isReady()) {
    if (from.failure()) {
      choice_->bar(*picked_, now);
      error_ = from.failure();
      isRefused_ = true;
      variants_[*std::exchange(picked_, std::nullopt)].reset();  // later it is looked at anew
      return now;
    }
    return due;
  }
  current_ = picked_;
  if (!std::exchange(isBegun_, true)) {
    if (!from.list().hasEnded) main_.time = audio_.track.time = from.timeline().liveStart();
    tellFacts();
  }
  return earlier(due, next(main_, row_, from, now));
}

std::optional<std::size_t> HLSLoader::nextIndex(Track& track, const HLSStream& from) const {
  const HLSMediaPlaylist& list = from.list();
  if (track.of == &from && track.count == from.timeline().count() && track.sequence >= list.firstSequence) {
    const auto index = track.sequence - list.firstSequence;
    return index < list.segments.size() ? std::optional(static_cast<std::size_t>(index)) : std::nullopt;
  }
  return from.timeline().indexAt(track.time + (track.of ? tolerance : 0));
}

std::optional<Time> HLSLoader::next(Track& track, HLSRow& row, const HLSStream& from, Time now) {
  const HLSMediaPlaylist& list = from.list();
  const auto index = nextIndex(track, from);
  if (!index) {
    if (list.hasEnded && !track.isSide) {
      isOver_ = true;
      row.write({.kind = Kind::over});
    }
    if (!list.hasEnded || !track.isSide) return std::nullopt;
    track.time = INT64_MAX / 2;
    return now;  // nothing waits for it any more
  }
  const HLSSegment& segment = list.segments[*index];
  SegmentRecord record{.track = track.number};
  record.start = from.timeline().start(*index);
  record.duration = segment.duration;
  record.discontinuity = segment.discontinuity + (std::uint64_t{from.timeline().count()} << 40);
  const bool isBehind = track.of && record.start > track.time + 2 * tolerance;
  if (isBehind && !track.isSide) {
    row.write({.kind = Kind::hole, .start = track.time, .duration = record.start - track.time});
    if (audio_.isThere()) audio_.track.time = std::max(audio_.track.time, record.start);
  }
  track.of = &from;
  track.sequence = list.firstSequence + *index;
  track.count = from.timeline().count();
  track.loadEnd = record.start + record.duration;
  if (segment.isGap) {
    if (track.isSide) return advance(track), now;
    isRefused_ = true;
    asked_.push_back(*std::exchange(picked_, std::nullopt));
    return now;
  }
  const bool isSide = track.isSide || hasAlternatives();
  track.load = std::make_unique<HLSSegmentLoad>(streams_, kept_, row, from, *index, record, isSide);
  return now;
}

void HLSLoader::advance(Track& track) {
  track.load.reset();
  track.time = track.loadEnd;
  ++track.sequence;
}

void HLSLoader::settleMain(Time now) {
  const auto load = std::move(main_.load);
  const std::size_t variant = *std::exchange(picked_, std::nullopt);
  if (load->state() == HLSSegmentLoad::State::failed) {
    error_ = load->error();
    isRefused_ = load->isRefused();
    asked_.push_back(variant);
    return;
  }
  choice_->note(load->transfer()->received(), load->transfer()->receiving(now));
  failures_[variant] = 0;
  for (const std::size_t each : asked_) {
    if (++failures_[each] >= variantFailuresLimit) choice_->bar(each, now);
  }
  asked_.clear();
  main_.missing = setbacks_ = 0;
  pause_ = Time(0);
  advance(main_);
}

// The last segment of a live programme may be on its way; one of a film that nobody has is left out.
void HLSLoader::giveUp(Time now) {
  const HLSStream& from = *main_.of;
  if (main_.sequence < from.list().firstSequence) return asked_.clear();  // the list has gone on meanwhile
  const auto index = main_.sequence - from.list().firstSequence;
  const bool isLast = index + 1 >= from.list().segments.size();
  asked_.clear();
  if (isRefused_ && (from.list().hasEnded || !isLast)) {
    if (from.list().hasEnded && isLast) return fail(reason("its end is missing"));
    if (from.list().hasEnded && ++main_.missing >= missingLimit) return fail(reason("much of it is missing"));
    pause_ = Time(0);
    return leaveOut(from, index);
  }
  pause(now);
}

void HLSLoader::pause(Time now) {
  pause_ = std::clamp<Time>(2 * pause_, firstPause, mostPause);
  main_.notBefore = now + pause_;
}

void HLSLoader::leaveOut(const HLSStream& from, std::size_t index) {
  const std::int64_t start = from.timeline().start(index);
  const std::int64_t length = from.list().segments[index].duration;
  // With sound of its own that goes on, the picture stands so long.
  if (!audio_.isThere()) row_.write({.kind = Kind::hole, .start = start, .duration = length});
  main_.loadEnd = start + length;
  advance(main_);
}

// A segment that will come too late is not waited for when a lesser one would be here before.
void HLSLoader::considerLess(Time now) {
  const HLSTransfer* transfer = main_.load->transfer();
  if (!transfer || main_.load->state() != HLSSegmentLoad::State::running || !transfer->expected() || !picked_) return;
  const auto took = std::chrono::duration<double>(transfer->receiving(now)).count();
  if (took < std::chrono::duration<double>(trialTime).count() || transfer->received() == 0) return;
  const double rate = static_cast<double>(transfer->received()) / took;
  const double rest = static_cast<double>(*transfer->expected() - transfer->received()) / rate;
  const double ready = std::chrono::duration<double>(ahead()).count();
  auto others = asked_;  // in vain already
  others.push_back(*picked_);
  const auto lesser = choice_->instead(others, now);
  if (rest <= ready || !lesser) return;
  const double there = static_cast<double>(master_.variants[*lesser].bandwidth) / 8 *
                       static_cast<double>(main_.loadEnd - main_.time) / 1e9;
  if (there / rate >= rest || master_.variants[*lesser].bandwidth >= master_.variants[*picked_].bandwidth) return;
  choice_->note(transfer->received(), transfer->receiving(now));
  main_.load->cut();
  main_.load.reset();
  picked_.reset();
}

std::optional<Time> HLSLoader::turnSide(Side& side, HLSRow& row, Time now) {
  Track& track = side.track;
  if (!side.stream) {
    const auto url = hlsAddress(side.addresses.front(), source_.url);
    if (!url) return changeSide(side, row), now;
    side.stream = std::make_unique<HLSStream>(streams_, *url, true);
  }
  auto due = side.stream->turn(now, &variants_[*current_]->timeline());
  if (!side.stream->isReady() && !side.stream->failure()) return due;
  // One that has stopped growing would hold up the pictures.
  const HLSMediaPlaylist& list = side.stream->list();
  const std::int64_t behind = variants_[*current_]->timeline().end() - side.stream->timeline().end();
  const bool isStuck = !list.hasEnded && behind > 4 * list.targetDuration;
  if (!side.stream->isReady() || isStuck || side.stream->failures() >= sideReloadFailuresLimit) {
    return changeSide(side, row), now;
  }
  if (track.load) {
    due = earlier(due, track.load->turn(now));
    if (track.load->state() == HLSSegmentLoad::State::running) return due;
    const bool isMissing = track.load->state() == HLSSegmentLoad::State::failed;
    track.missing = isMissing ? track.missing + 1 : 0;
    if (track.missing >= sideMissingLimit && &side == &audio_) return changeSide(side, row), now;
    advance(track);
    return now;
  }
  const bool isFarAhead = &side == &audio_ && track.time > main_.time;
  if (isFarAhead || !wantsMore(track, std::max(readTime(), main_.time - Time(aheadLimit).count()), row)) return due;
  return earlier(due, next(track, row, *side.stream, now));
}

// The next one that would do; when there is none, it is told that no more will come.
void HLSLoader::changeSide(Side& side, HLSRow& row) {
  side.track.load.reset();
  side.track.of = nullptr;
  side.track.missing = 0;
  side.stream.reset();
  side.addresses.erase(side.addresses.begin());
  if (!side.isThere()) row.write({.kind = Kind::trackEnd, .track = side.track.number});
}
