#include "VAST/Parser/VASTOffset.h"

#include <algorithm>
#include <charconv>
#include <cmath>

#include "platform/foundation/NSCharacterSet.h"

namespace {

constexpr std::size_t digitsLimit = 9;

// As many digits as `text` begins with, taken off it; nil when there is none, or more than a number of seconds needs.
std::optional<double> takeWhole(std::string_view& text) {
  unsigned value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  const auto count = static_cast<std::size_t>(end - text.data());
  if (error != std::errc() || count == 0 || count > digitsLimit) return std::nullopt;
  text.remove_prefix(count);
  return value;
}

// The same with decimals behind a point.
std::optional<double> takeNumber(std::string_view& text) {
  auto value = takeWhole(text);
  if (!value || !text.starts_with('.')) return value;
  text.remove_prefix(1);
  double unit = 0.1;
  const auto before = text.size();
  for (; !text.empty() && text.front() >= '0' && text.front() <= '9'; unit /= 10) {
    *value += (text.front() - '0') * unit;
    text.remove_prefix(1);
  }
  return text.size() == before ? std::nullopt : value;
}

bool take(std::string_view& text, char expected) {
  if (!text.starts_with(expected)) return false;
  text.remove_prefix(1);
  return true;
}

}  // namespace

std::optional<VASTOffset> VASTOffset::from(std::string_view text) {
  text = stringByTrimmingCharactersInSet(text, NSCharacterSet::whitespaceAndNewlineCharacterSet());
  if (text.ends_with('%')) {
    const auto percent = takeNumber(text);
    if (!percent || *percent > 100 || text != "%") return std::nullopt;
    return VASTOffset{*percent, true};
  }
  const auto hours = takeWhole(text);
  if (!hours || !take(text, ':')) return std::nullopt;
  const auto minutes = takeWhole(text);
  if (!minutes || *minutes >= 60 || !take(text, ':')) return std::nullopt;
  const auto seconds = takeNumber(text);
  if (!seconds || *seconds >= 60 || !text.empty()) return std::nullopt;
  return VASTOffset{*hours * 3600 + *minutes * 60 + *seconds, false};
}

std::optional<double> VASTOffset::secondsOf(double duration) const {
  if (!isPercent) return value;
  return std::isfinite(duration) && duration > 0 ? std::optional(duration * value / 100) : std::nullopt;
}

std::optional<std::int64_t> VASTOffset::secondsLeft(double second, double duration) const {
  constexpr double limit = 1e9;  // no film is that long; below it every number is exact
  const auto from = secondsOf(duration);
  const bool isKnown = duration > 0 && std::isfinite(duration);
  if (!from || (isKnown && std::ceil(*from) >= duration)) return std::nullopt;
  const double left = *from - second;
  return left > 0 ? static_cast<std::int64_t>(std::ceil(std::min(left, limit))) : 0;
}
