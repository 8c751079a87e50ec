#include "platform/avfoundation/process/PlaylistLook.h"

#include <algorithm>
#include <array>
#include <string>
#include <utility>

namespace {

using Finding = PlaylistLook::Finding;

constexpr std::string_view listMark = "#EXTM3U";
constexpr std::array<std::string_view, 3> documentMarks{"<MPD", "<mpd", "<SmoothStreamingMedia"};

// Waits; interrupted is no finding.
std::optional<Finding> look(MediaBytes& bytes) {
  MediaBytes::Head head;
  std::array<std::byte, PlaylistLook::lookLimit> begin;
  std::size_t count = 0;
  auto outcome = bytes.head(head);
  while (outcome == MediaBytes::Outcome::done) {
    std::size_t part = 0;
    outcome = bytes.read(count, std::span(begin).subspan(count), part);
    if (outcome == MediaBytes::Outcome::done) count += part;
    const bool isAll = outcome == MediaBytes::Outcome::ended || count == begin.size();
    if (const auto finding = PlaylistLook::findingOf({reinterpret_cast<const char*>(begin.data()), count}, isAll)) {
      return finding;
    }
  }
  return outcome == MediaBytes::Outcome::failed ? std::optional(Finding::failed) : std::nullopt;
}

}  // namespace

PlaylistLook::PlaylistLook(std::shared_ptr<MediaBytes> bytes, std::function<void(Finding)> found)
    : bytes_(std::move(bytes)) {
  dispatch_async(dispatch_get_global_queue(), [bytes = bytes_, hop = hop_, found = std::move(found)]() mutable {
    if (const auto finding = look(*bytes)) hop.post([found = std::move(found), finding] { found(*finding); });
  });
}

PlaylistLook::~PlaylistLook() {
  hop_.close();
  bytes_->setInterrupted(true);
}

std::optional<PlaylistLook::Finding> PlaylistLook::findingOf(std::string_view begin, bool isAll) {
  // Documents may have two bytes a letter; then every other one is zero.
  std::string text(begin.substr(0, lookLimit));
  std::erase(text, '\0');
  for (const std::string_view order : {"\xEF\xBB\xBF", "\xFE\xFF", "\xFF\xFE"}) {
    if (text.starts_with(order)) text.erase(0, order.size());
  }
  text.erase(0, text.find_first_not_of(" \t\r\n"));
  if (text.starts_with(listMark)) return Finding::playlist;
  if (text.starts_with('<')) {
    const auto isThere = [&text](std::string_view mark) { return text.find(mark) != std::string::npos; };
    if (std::ranges::any_of(documentMarks, isThere)) return Finding::playlist;
  } else if (!listMark.starts_with(std::string_view(text).substr(0, listMark.size())) && !text.empty()) {
    const bool mayBeOrder = text.size() < 3 && static_cast<unsigned char>(text[0]) >= 0xEF;
    if (!mayBeOrder) return Finding::media;
  }
  return isAll ? std::optional(Finding::media) : std::nullopt;
}
