#include "platform/avfoundation/fetch/FetchLane.h"

#include <algorithm>

#include "platform/avfoundation/bytes/ServerErrors.h"
#include "platform/foundation/ConnectionRate.h"

using namespace std::chrono_literals;

namespace {

constexpr std::chrono::milliseconds connectingLimit{10'000};
constexpr FetchLane::Time silenceLimit = 10s;
constexpr FetchLane::Time firstPause = 500ms;
constexpr std::chrono::seconds pauseLimit{8};
// Whoever sees a film stand still is not kept by the pauses of an outage that may be over: at once, when all went well
// for a while, then after the first of these pauses, twice as long each time up to the second.
constexpr FetchLane::Time firstUrgentPause = 50ms;
constexpr FetchLane::Time urgentPauseLimit = 2s;
constexpr FetchLane::Time calmInterval = 5s;
constexpr int attemptsLimit = 3;
constexpr int refusalsLimit = 3;
// A server that sends parts no longer than this is not asked for the next one without a pause.
constexpr std::uint64_t smallPart = 64 * 1024;
// What is passed over rather than asked for again: a few seconds of a fast line.
constexpr std::uint64_t skipLimit = 8 * 1024 * 1024;

// Whether asking again is of no use, as far as one can tell.
bool isRefusal(const NSError& error) {
  return error.code == NSURLErrorServerCertificateUntrusted || error.code == NSURLErrorHTTPTooManyRedirects ||
         error.code == NSURLErrorUnsupportedURL || error.code == NSURLErrorBadURL;
}

}  // namespace

FetchLane::FetchLane(Resource& resource, ByteStore& store, std::size_t number, HTTPStreams& streams)
    : resource_(resource), store_(store), number_(number), streams_(streams), pause_(firstPause) {}

void FetchLane::move(std::uint64_t place) {
  drop();
  store_.move(number_, place);
  isPlaced_ = true;
  askAt_ = urgentAt_ = {};
  pause_ = firstPause;
  refusals_ = wholeAnswers_ = 0;
  refusal_.reset();
}

void FetchLane::drop() {
  stop();
  if (store_.heldCount(number_) > 0) store_.move(number_, 0);
  isPlaced_ = false;
}

void FetchLane::halt() {
  stop();
  isPlaced_ = false;
}

void FetchLane::rest() {
  if (isPaused_) stop();
}

void FetchLane::stop() {
  stream_.reset();
  meaning_.reset();
  error_.reset();
  hasEnded_ = isPaused_ = hasHeard_ = false;
}

std::optional<NSError> FetchLane::failure() const {
  return refusals_ >= refusalsLimit ? refusal_ : std::nullopt;
}

bool FetchLane::isDone() const {
  return resource_.facts && resource_.facts->length && end() >= *resource_.facts->length;
}

bool FetchLane::hasRoom(std::uint64_t bytes) const {
  const std::uint64_t chunks = (bytes + ByteStore::chunkBytes - 1) / ByteStore::chunkBytes;
  return end() < goal_.until && goal_.until - end() >= bytes && store_.freeCount() >= chunks &&
         store_.heldCount(number_) + chunks <= goal_.chunks;
}

// The body has brought what it was told to, whatever else may come.
bool FetchLane::hasAll() const {
  const auto* body = meaning_ ? std::get_if<ResourceAnswer::Body>(&*meaning_) : nullptr;
  return body && (isDone() || (body->behind && cursor_ >= *body->behind));
}

bool FetchLane::mayGoOn() const {
  constexpr std::size_t chunksOfOneDelivery = 2;
  return goal_.isUrgent ? store_.freeCount() >= chunksOfOneDelivery : hasRoom(goal_.step);
}

std::optional<FetchLane::Time> FetchLane::turn(Time now, const Goal& goal) {
  measure(now);
  goal_ = goal;
  if (!isPlaced_) return std::nullopt;
  if (std::exchange(hasHeard_, false)) heardAt_ = now;
  if (hasEnded_ || hasAll()) settle(now);
  if (stream_ && isPaused_) {
    if (!mayGoOn()) return std::nullopt;
    isPaused_ = false;
    heardAt_ = now;
    stream_->resume();
  }
  if (stream_ && now - heardAt_ >= silenceLimit) {
    stop();
    askSoon(now);
  }
  if (stream_) return heardAt_ + silenceLimit;
  if (isDone() || resource_.failure || !mayGoOn()) return std::nullopt;
  const Time due = goal_.isUrgent && resource_.facts ? urgentAt_ : askAt_;
  if (now < due) return due;
  ask(now);
  return now + silenceLimit;
}

// What came without a pause shows what the connection carries.
void FetchLane::measure(Time now) {
  constexpr Time window = 250ms;
  if (!stream_ || isPaused_ || hasEnded_) {
    burstSince_.reset();
  } else if (!burstSince_ || now - *burstSince_ >= window) {
    if (burstSince_) ConnectionRate::shared().note(burstBytes_, now - *burstSince_);
    burstSince_ = now;
  } else {
    return;
  }
  burstBytes_ = 0;
}

void FetchLane::ask(Time now) {
  stop();
  const std::uint64_t place = end();
  HTTPStreamRequest request{.url = resource_.url, .headers = {}, .connectingLimit = connectingLimit};
  const auto& facts = resource_.facts;
  if (resource_.takesRange && (!facts || facts->servesRanges)) {
    request.headers.push_back("Range: bytes=" + std::to_string(place) + "-");
    // A second opinion is asked without it: what comes back is looked at anyway.
    if (facts && place > 0 && wholeAnswers_ == 0) {
      const bool isStrong = !facts->eTag.empty() && !facts->eTag.starts_with("W/");
      const std::string& same = isStrong ? facts->eTag : facts->lastModified;
      if (!same.empty()) request.headers.push_back("If-Range: " + same);
    }
  }
  heardAt_ = now;
  stream_ = streams_.start(std::move(request), *this);
}

bool FetchLane::streamDidAnswer(const HTTPAnswer& answer) {
  hasHeard_ = true;
  meaning_ = ResourceAnswer::meaning(answer, end(), resource_.facts ? &*resource_.facts : nullptr, resource_.url);
  const auto* body = std::get_if<ResourceAnswer::Body>(&*meaning_);
  if (!body) return false;
  cursor_ = body->first;
  if (!resource_.facts) {
    resource_.facts = ResourceAnswer::facts(answer, *body);
    if (!store_.tellHead(ResourceAnswer::head(answer, *resource_.facts))) {
      resource_.failure = senselessAnswerError(resource_.url, "a redirect to an address without an end");
      return false;
    }
  } else if (body->isWhole && resource_.facts->servesRanges && end() - cursor_ > skipLimit &&
             ++wholeAnswers_ < refusalsLimit) {
    meaning_ = ResourceAnswer::Later{senselessAnswerError(resource_.url, "all of it"), std::nullopt};
    return false;
  } else if (end() - cursor_ > skipLimit && !body->isWhole) {
    meaning_ = ResourceAnswer::Refusal{senselessAnswerError(resource_.url, "another part")};
    return false;
  }
  return true;
}

bool FetchLane::isLiveAgain(std::span<const std::byte> bytes) const {
  const ResourceFacts& facts = *resource_.facts;
  const bool hasName = facts.length || !facts.eTag.empty() || !facts.lastModified.empty();
  return !hasName && cursor_ < end() && resource_.opening.isOther(cursor_, bytes);
}

HTTPStreamClient::Taken FetchLane::streamDidReceive(std::span<const std::byte> bytes) {
  hasHeard_ = true;
  burstBytes_ += bytes.size();
  if (isLiveAgain(bytes)) {
    if (!store_.append(number_, resource_.opening.before(cursor_))) {
      isPaused_ = true;
      return Taken::none;
    }
    cursor_ = end();
  }
  const std::uint64_t skipped = std::min<std::uint64_t>(bytes.size(), end() - cursor_);
  auto wanted = bytes.subspan(skipped);
  for (const auto& last : {std::get<ResourceAnswer::Body>(*meaning_).behind, resource_.facts->length}) {
    if (last) wanted = wanted.first(std::min<std::uint64_t>(wanted.size(), *last - std::min(*last, end())));
  }
  if (!wanted.empty()) {
    const bool isWelcome = goal_.isUrgent || hasRoom(1);
    if (!isWelcome || !store_.append(number_, wanted)) {
      isPaused_ = true;
      return Taken::none;
    }
    goal_.isUrgent = false;
  }
  pause_ = firstPause;
  refusals_ = wholeAnswers_ = 0;
  refusal_.reset();
  if (!resource_.facts->length) resource_.opening.note(cursor_, bytes);
  cursor_ += bytes.size();
  return Taken::all;
}

void FetchLane::streamDidEnd(std::optional<NSError> error) {
  hasEnded_ = true;
  error_ = std::move(error);
}

void FetchLane::settle(Time now) {
  const auto meaning = std::move(meaning_);
  const auto error = std::move(error_);
  stop();
  if (resource_.failure) return;
  if (meaning) return std::visit([&](const auto& each) { settle(each, error, now); }, *meaning);
  const NSError reason = unansweredError(error.value_or(lostConnectionError(resource_.url)), resource_.url);
  if (!resource_.facts && reason.code == NSURLErrorNetworkConnectionLost) {
    settle(ResourceAnswer::Later{reason, std::nullopt}, error, now);
  } else if (!resource_.facts) {
    resource_.failure = reason;
  } else if (error && isRefusal(*error)) {
    refuse(reason, now);
  } else {
    askSoon(now);
  }
}

// It has ended as it should, or not.
void FetchLane::settle(const ResourceAnswer::Body& body, const std::optional<NSError>& error, Time now) {
  const bool isComplete = !error && (!body.behind || cursor_ >= *body.behind);
  if (isComplete && !body.behind && !resource_.facts->length) {
    resource_.facts->length = std::max(cursor_, end());
    store_.tellEnd(*resource_.facts->length);
  }
  if (isDone()) return;
  const bool isUnreadable = error && error->code == NSURLErrorBadServerResponse;
  if (isUnreadable && cursor_ == body.first) {
    refuse(unansweredError(*error, resource_.url), now);
  } else if (!isComplete || body.isWhole || cursor_ - body.first < smallPart) {
    askSoon(now);  // else it was a part, as long as it was told to be
  }
}

void FetchLane::settle(const ResourceAnswer::End& nothing, const std::optional<NSError>&, Time) {
  if (resource_.facts) {
    resource_.facts->length = nothing.length;
    store_.tellEnd(nothing.length);
  } else {
    resource_.facts.emplace().length = nothing.length;
    store_.tellHead({nothing.length, false, "", resource_.url.absoluteString()});
  }
}

void FetchLane::settle(const ResourceAnswer::Later& later, const std::optional<NSError>&, Time now) {
  if (!resource_.facts && ++attempts_ >= attemptsLimit) {
    resource_.failure = later.error;
  } else {
    later.after ? askLater(now, later.after) : askSoon(now);
  }
}

void FetchLane::settle(const ResourceAnswer::Refusal& refusal, const std::optional<NSError>&, Time now) {
  if (resource_.facts) {
    refuse(refusal.error, now);
  } else {
    resource_.failure = refusal.error;
  }
}

void FetchLane::settle(const ResourceAnswer::Changed&, const std::optional<NSError>&, Time) {
  resource_.failure = changedMediaError(resource_.url);
}

void FetchLane::settle(const ResourceAnswer::Unranged&, const std::optional<NSError>&, Time) {
  if (!std::exchange(resource_.takesRange, false)) resource_.failure = statusError(416, resource_.url);
}

void FetchLane::refuse(const NSError& error, Time now) {
  ++refusals_;
  refusal_ = error;
  askLater(now);
}

void FetchLane::askLater(Time now, std::optional<std::chrono::seconds> after) {
  const Time asked = after ? Time(std::min(*after, pauseLimit)) : pause_;
  askAt_ = urgentAt_ = now + std::clamp<Time>(asked, pause_, pauseLimit);
  pause_ = std::min<Time>(2 * pause_, pauseLimit);
  troubledUntil_ = askAt_;
}

void FetchLane::askSoon(Time now) {
  const bool wasCalm = !troubledUntil_ || now - *troubledUntil_ >= calmInterval;
  urgentPause_ = wasCalm ? Time(0) : std::clamp(2 * urgentPause_, firstUrgentPause, urgentPauseLimit);
  askLater(now);
  urgentAt_ = std::min(askAt_, now + urgentPause_);
}
