#include "platform/avfoundation/hls/HLSTags.h"

#include <algorithm>
#include <charconv>
#include <cmath>

#include "platform/avfoundation/hls/HLSPlaylist.h"

namespace HLSTags {

namespace {

constexpr std::string_view space = " \t\r";

std::string_view trimmed(std::string_view text) {
  text.remove_prefix(std::min(text.find_first_not_of(space), text.size()));
  text.remove_suffix(text.size() - (text.find_last_not_of(space) + 1));
  return text;
}

// Everything before `mark`, which goes as well.
std::string_view takeUntil(std::string_view& text, char mark) {
  const auto end = std::min(text.find(mark), text.size());
  const auto taken = text.substr(0, end);
  text.remove_prefix(std::min(end + 1, text.size()));
  return taken;
}

}  // namespace

std::string_view takeLine(std::string_view& text) {
  return trimmed(takeUntil(text, '\n'));
}

std::optional<std::string_view> valueOf(std::string_view line, std::string_view name) {
  if (!line.starts_with(name)) return std::nullopt;
  line.remove_prefix(name.size());
  if (line.empty()) return line;
  if (line[0] != ':') return std::nullopt;
  return trimmed(line.substr(1));
}

std::optional<std::uint64_t> number(std::string_view text) {
  std::uint64_t value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end == text.data()) return std::nullopt;
  return value;
}

std::optional<std::int64_t> seconds(std::string_view text) {
  constexpr double century = 3'155'760'000.0;
  double value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  const bool isTime = error == std::errc() && end != text.data() && value >= 0 && value <= century;
  return isTime ? std::optional(std::llround(value * 1e9)) : std::nullopt;
}

Attributes::Attributes(std::string_view list) {
  while (!list.empty() && all_.size() < HLSLimits::attributesLimit) {
    const auto name = trimmed(takeUntil(list, '='));
    const bool isQuoted = list.starts_with('"');
    if (isQuoted) list.remove_prefix(1);
    const auto value = takeUntil(list, isQuoted ? '"' : ',');
    if (isQuoted) takeUntil(list, ',');
    all_.emplace_back(name, isQuoted ? value : trimmed(value));
  }
}

std::string_view Attributes::value(std::string_view name) const {
  const auto found = std::ranges::find(all_, name, &std::pair<std::string_view, std::string_view>::first);
  return found == all_.end() ? std::string_view() : found->second;
}

}  // namespace HLSTags
