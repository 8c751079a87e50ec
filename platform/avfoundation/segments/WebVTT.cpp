#include "platform/avfoundation/segments/WebVTT.h"

#include <algorithm>
#include <charconv>

namespace {

constexpr std::int64_t second = 1'000'000'000;
constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
constexpr std::string_view arrow = "-->";

// The next line without its end: \n, \r\n or \r.
std::string_view takeLine(std::string_view& text) {
  const auto end = std::min(text.find_first_of("\r\n"), text.size());
  const auto line = text.substr(0, end);
  const bool isPair = text.substr(end).starts_with("\r\n");
  text.remove_prefix(std::min(end + (isPair ? 2 : 1), text.size()));
  return line;
}

void skipSpace(std::string_view& text) {
  text.remove_prefix(std::min(text.find_first_not_of(" \t"), text.size()));
}

// hh:mm:ss.ttt with any number of hours, or mm:ss.ttt.
std::optional<std::int64_t> takeTime(std::string_view& text) {
  std::int64_t whole = 0;
  for (int part = 0; part < 3; ++part) {
    std::uint32_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    constexpr std::uint32_t hoursLimit = 1'000'000;
    if (error != std::errc() || value > hoursLimit) return std::nullopt;
    whole = whole * 60 + value;
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    if (!text.starts_with(':')) break;
    text.remove_prefix(1);
  }
  std::int64_t fraction = 0;
  if (text.starts_with('.') || text.starts_with(',')) {
    text.remove_prefix(1);
    for (std::int64_t unit = second / 10; !text.empty() && text[0] >= '0' && text[0] <= '9'; unit /= 10) {
      fraction += unit * (text[0] - '0');
      text.remove_prefix(1);
    }
  }
  return whole * second + fraction;
}

std::optional<WebVTT::TimeMap> timeMap(std::string_view line) {
  WebVTT::TimeMap map;
  bool hasTicks = false;
  line.remove_prefix(std::min(line.find('=') + 1, line.size()));
  while (!line.empty()) {
    auto part = line.substr(0, line.find(','));
    line.remove_prefix(std::min(part.size() + 1, line.size()));
    skipSpace(part);
    if (part.starts_with("LOCAL:")) {
      part.remove_prefix(6);
      map.local = takeTime(part).value_or(0);
    } else if (part.starts_with("MPEGTS:")) {
      part.remove_prefix(7);
      hasTicks = std::from_chars(part.data(), part.data() + part.size(), map.ticks).ec == std::errc();
    }
  }
  return hasTicks ? std::optional(map) : std::nullopt;
}

std::optional<WebVTT::Cue> cueOf(std::string_view timing, std::string_view& text) {
  skipSpace(timing);
  const auto start = takeTime(timing);
  skipSpace(timing);
  if (!start || !timing.starts_with(arrow)) return std::nullopt;
  timing.remove_prefix(arrow.size());
  skipSpace(timing);
  const auto end = takeTime(timing);
  WebVTT::Cue cue{.start = *start, .end = end.value_or(*start), .text = {}};
  while (!text.empty()) {
    const auto line = takeLine(text);
    if (line.empty()) break;
    if (cue.text.size() + line.size() > WebVTT::cueBytesLimit) continue;
    if (!cue.text.empty()) cue.text += '\n';
    cue.text += line;
  }
  return cue.end > cue.start && !cue.text.empty() ? std::optional(std::move(cue)) : std::nullopt;
}

}  // namespace

std::optional<WebVTT> readWebVTT(std::string_view text) {
  if (text.starts_with(byteOrderMark)) text.remove_prefix(byteOrderMark.size());
  if (!takeLine(text).starts_with("WEBVTT")) return std::nullopt;
  WebVTT result;
  while (!text.empty() && result.cues.size() < WebVTT::cuesLimit) {
    const auto line = takeLine(text);
    if (line.starts_with("X-TIMESTAMP-MAP")) {
      if (!result.map) result.map = timeMap(line);
    } else if (line.find(arrow) != std::string_view::npos) {
      if (auto cue = cueOf(line, text)) result.cues.push_back(std::move(*cue));
    }
  }
  return result;
}
