#include "VAST/YMRSkipOffset.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace {

// No ad is that long; below it every number is exact.
constexpr double secondsLimit = 1e9;

std::string_view trimmed(std::string_view text) {
  constexpr std::string_view blanks = " \t\r\n";
  const auto first = text.find_first_not_of(blanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

// Digits, and after a point more of them where `takesFractions`: no sign, no exponent.
std::optional<double> plainNumber(std::string_view text, bool takesFractions) {
  const bool isPlain = !text.empty() && std::ranges::all_of(text, [takesFractions](char character) {
    return (character >= '0' && character <= '9') || (takesFractions && character == '.');
  });
  double number = 0;
  if (!isPlain) return std::nullopt;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, std::chars_format::fixed);
  if (error != std::errc() || end != text.data() + text.size() || number > secondsLimit) return std::nullopt;
  return number;
}

// What stands before the next colon, which is taken out with it.
std::string_view takeField(std::string_view& text) {
  const auto colon = std::min(text.find(':'), text.size());
  const auto field = text.substr(0, colon);
  text.remove_prefix(std::min(colon + 1, text.size()));
  return field;
}

}  // namespace

std::optional<YMRSkipOffset> YMRSkipOffset::fromText(std::string_view text) {
  text = trimmed(text);
  if (text.ends_with('%')) {
    const auto percent = plainNumber(text.substr(0, text.size() - 1), true);
    return percent && *percent <= 100 ? std::optional(ofPercent(*percent)) : std::nullopt;
  }
  const auto hours = plainNumber(takeField(text), false);
  const auto minutes = plainNumber(takeField(text), false);
  const auto seconds = plainNumber(text, true);
  if (!hours || !minutes || !seconds || *minutes >= 60 || *seconds >= 60) return std::nullopt;
  return ofSeconds((*hours * 60 + *minutes) * 60 + *seconds);
}

std::optional<std::int64_t> YMRSkipOffset::secondsLeft(double second, double duration) const {
  const bool isKnown = duration > 0 && std::isfinite(duration);
  if (isPercent_ && !isKnown) return std::nullopt;
  const double from = isPercent_ ? duration * value_ / 100 : value_;
  if (isKnown && from >= duration) return std::nullopt;
  const double left = from - second;
  return left > 0 ? static_cast<std::int64_t>(std::ceil(std::min(left, secondsLimit))) : 0;
}
