#include "apps/shared/Numbers.h"

#include <algorithm>
#include <charconv>

std::optional<double> plainSeconds(std::string_view text) {
  if (text.find_first_not_of("0123456789.") != text.npos) return std::nullopt;
  double seconds = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), seconds, std::chars_format::fixed);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return seconds;
}

std::optional<std::int64_t> plainInteger(std::string_view text) {
  std::int64_t value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return value;
}

std::optional<std::pair<int, int>> plainSize(std::string_view text, int smallest, int largest) {
  const auto cross = std::min(text.find('x'), text.size());
  const auto width = plainInteger(text.substr(0, cross));
  const auto height = plainInteger(text.substr(std::min(cross + 1, text.size())));
  if (!width || !height || std::min(*width, *height) < smallest || std::max(*width, *height) > largest) {
    return std::nullopt;
  }
  return std::pair(static_cast<int>(*width), static_cast<int>(*height));
}
