#include "platform/avfoundation/hls/HLSStream.h"

#include <algorithm>
#include <filesystem>
#include <utility>

#include "platform/avfoundation/bytes/ServerErrors.h"

using namespace std::chrono_literals;

namespace {

using Time = HLSStream::Time;

constexpr Time documentLimit = 20s;
constexpr Time sideDocumentLimit = 6s;
// Between two requests, whatever the list says; and while there is nothing to be had.
constexpr Time leastPause = 500ms;
constexpr Time mostPause = 8s;
// A list that ends before the one that is known is believed after so many.
constexpr int staleLimit = 2;

bool isBelow(const std::filesystem::path& path, const std::filesystem::path& folder) {
  std::error_code error;
  const auto real = std::filesystem::weakly_canonical(path, error);
  const auto above = std::filesystem::weakly_canonical(folder, error);
  return !error && std::mismatch(above.begin(), above.end(), real.begin(), real.end()).first == above.end();
}

}  // namespace

std::optional<NSURL> hlsAddress(const std::string& reference, const NSURL& base) {
  auto url = NSURL::URLWithString(reference, base);
  if (!url) return std::nullopt;
  if (!base.isFileURL()) return url->isHTTP() ? url : std::nullopt;
  const auto folder = std::filesystem::path(base.path()).parent_path();
  return url->isFileURL() && isBelow(url->path(), folder) ? url : std::nullopt;
}

NSError hlsFaultError(const HLSFault& fault, const NSURL& url) {
  const bool isProtected = fault.kind == HLSFault::Kind::isProtected;
  return {AVFoundationErrorDomain, isProtected ? AVErrorDecoderNotFound : AVErrorFileFailedToParse,
          "The playlist of " + nameOfMedia(url) + " can't be played: " + fault.reason + "."};
}

std::optional<NSURL> HLSStream::address(const std::string& reference) const {
  return hlsAddress(reference, base_);
}

void HLSStream::adopt(const std::string& text, const NSURL& url, Time now) {
  askedAt_ = now;
  take(text, url, now, nullptr);
}

std::optional<Time> HLSStream::turn(Time now, const HLSTimeline* reference) {
  const bool isOver = isReady_ ? list_.hasEnded : failure_.has_value();
  if (isOver) return std::nullopt;
  if (!document_) {
    if (now < askAt_) return askAt_;
    askedAt_ = now;
    HLSTransfer::Request request{.url = url_, .isSide = isSide_};
    request.timeLimit = isSide_ ? sideDocumentLimit : documentLimit;
    document_ = std::make_unique<HLSDocument>(streams_, std::move(request), HLSLimits::textBytesLimit);
  }
  const auto due = document_->turn(now);
  if (document_->state() == HLSTransfer::State::running) return due;
  const auto document = std::move(document_);
  if (document->state() == HLSTransfer::State::failed) {
    fail(document->transfer().error(), now, document->transfer().isRefused());
  } else {
    take(document->text(), document->transfer().url(), now, reference);
  }
  return now;
}

void HLSStream::take(const std::string& text, const NSURL& url, Time now, const HLSTimeline* reference) {
  auto read = readHLSPlaylist(text);
  if (const auto* fault = std::get_if<HLSFault>(&read)) return fail(hlsFaultError(*fault, url), now, true);
  auto* list = std::get_if<HLSMediaPlaylist>(&read);
  if (!list) return fail(hlsFaultError({HLSFault::Kind::malformed, "it names playlists again"}, url), now, true);
  const bool isOther = !isReady_ || list->firstSequence != list_.firstSequence ||
                       list->segments.size() != list_.segments.size() || list->hasEnded;
  const bool isNews = !isStale(*list) && isOther;
  if (isNews) {
    list_ = std::move(*list);
    timeline_.adopt(list_, reference);
    ++version_;
  }
  unchanged_ = isNews ? 0 : std::min(unchanged_ + 1, 1000);
  base_ = url;
  isReady_ = true;
  failures_ = refusals_ = 0;
  failure_.reset();
  askAt_ = askedAt_ + std::max(Time(isNews ? list_.targetDuration : list_.targetDuration / 2), leastPause);
}

// Some servers give an older list now and then. One that counts anew goes on giving such lists.
bool HLSStream::isStale(const HLSMediaPlaylist& list) {
  const bool isOlder = isReady_ && !list.hasEnded && list.endSequence() < list_.endSequence();
  stale_ = isOlder ? stale_ + 1 : 0;
  return isOlder && stale_ <= staleLimit;
}

void HLSStream::startOver() {
  failures_ = refusals_ = unchanged_ = 0;
  askAt_ = Time(0);
}

void HLSStream::fail(NSError error, Time now, bool isRefused) {
  refusals_ += isRefused && refusals_ < 10;
  failure_ = std::move(error);
  failures_ = std::min(failures_ + 1, 10);
  askAt_ = now + std::clamp<Time>(leastPause * (1 << (failures_ - 1)), leastPause, mostPause);
}
