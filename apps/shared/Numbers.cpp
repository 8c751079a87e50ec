#include "apps/shared/Numbers.h"

#include <charconv>

std::optional<double> plainSeconds(std::string_view text) {
  if (text.find_first_not_of("0123456789.") != text.npos) return std::nullopt;
  double seconds = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), seconds, std::chars_format::fixed);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return seconds;
}
