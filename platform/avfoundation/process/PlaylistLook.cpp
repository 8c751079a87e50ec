#include "platform/avfoundation/process/PlaylistLook.h"

#include <algorithm>
#include <array>
#include <string>
#include <utility>

#include "platform/avfoundation/hls/HLSPlaylist.h"

namespace {

using Finding = PlaylistLook::Finding;

constexpr std::string_view listMark = "#EXTM3U";
constexpr std::array<std::string_view, 3> documentMarks{"<MPD", "<mpd", "<SmoothStreamingMedia"};

// How long until the next look: an eighth of the time that it has taken, within these.
constexpr RunLoop::Duration shortestInterval = std::chrono::milliseconds(1);
constexpr RunLoop::Duration longestInterval = std::chrono::milliseconds(100);

}  // namespace

PlaylistLook::PlaylistLook(std::shared_ptr<MediaBytes> bytes, std::function<void(Result)> found)
    : bytes_(std::move(bytes)), found_(std::move(found)) {
  bytes_->setInterrupted(true);
  lookIn({}, RunLoop::main().now());
}

PlaylistLook::~PlaylistLook() {
  if (timer_) RunLoop::main().cancel(timer_);
}

void PlaylistLook::lookIn(RunLoop::Duration interval, RunLoop::Duration since) {
  timer_ = RunLoop::main().schedule(interval, [this, since] { look(since); });
}

void PlaylistLook::look(RunLoop::Duration since) {
  timer_ = 0;
  if (auto result = readOn()) {
    const auto found = std::exchange(found_, nullptr);  // which may end the look
    return found(std::move(*result));
  }
  lookIn(std::clamp((RunLoop::main().now() - since) / 8, shortestInterval, longestInterval), since);
}

std::optional<PlaylistLook::Result> PlaylistLook::readOn() {
  MediaBytes::Head head;
  std::array<std::byte, lookLimit> part;
  auto outcome = bytes_->head(head);
  // Of a list that is too long enough to see that it is.
  while (outcome == MediaBytes::Outcome::done && text_.size() <= HLSLimits::textBytesLimit) {
    std::size_t count = 0;
    outcome = bytes_->read(text_.size(), part, count);
    if (outcome == MediaBytes::Outcome::done) text_.append(reinterpret_cast<const char*>(part.data()), count);
    const bool isAll = outcome == MediaBytes::Outcome::ended;
    const auto finding = findingOf(text_, isAll || text_.size() >= lookLimit);
    if (finding == Finding::segments) {
      if (isAll) return Result{Finding::segments, head.url, std::move(text_)};
    } else if (finding) {
      return Result{*finding, head.url, {}};
    }
  }
  if (outcome == MediaBytes::Outcome::done) return Result{Finding::segments, head.url, std::move(text_)};
  return outcome == MediaBytes::Outcome::failed ? std::optional(Result()) : std::nullopt;
}

std::optional<PlaylistLook::Finding> PlaylistLook::findingOf(std::string_view begin, bool isAll) {
  // Documents may have two bytes a letter; then every other one is zero.
  std::string text(begin.substr(0, lookLimit));
  std::erase(text, '\0');
  for (const std::string_view order : {"\xEF\xBB\xBF", "\xFE\xFF", "\xFF\xFE"}) {
    if (text.starts_with(order)) text.erase(0, order.size());
  }
  text.erase(0, text.find_first_not_of(" \t\r\n"));
  if (text.starts_with(listMark)) return Finding::segments;
  if (text.starts_with('<')) {
    const auto isThere = [&text](std::string_view mark) { return text.find(mark) != std::string::npos; };
    if (std::ranges::any_of(documentMarks, isThere)) return Finding::playlist;
  } else if (!listMark.starts_with(std::string_view(text).substr(0, listMark.size())) && !text.empty()) {
    const bool mayBeOrder = text.size() < 3 && static_cast<unsigned char>(text[0]) >= 0xEF;
    if (!mayBeOrder) return Finding::media;
  }
  return isAll ? std::optional(Finding::media) : std::nullopt;
}
