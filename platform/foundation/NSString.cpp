#include "platform/foundation/NSString.h"

#include <algorithm>
#include <limits>

#include "platform/foundation/NSCharacterSet.h"

namespace {

std::string_view withoutLeadingSpace(std::string_view text) {
  const std::string_view trimmed =
      stringByTrimmingCharactersInSet(text, NSCharacterSet::whitespaceAndNewlineCharacterSet());
  return trimmed.empty() ? trimmed : text.substr(static_cast<std::size_t>(trimmed.data() - text.data()));
}

bool takeSign(std::string_view& text) {
  if (text.empty() || (text.front() != '-' && text.front() != '+')) return false;
  const bool isNegative = text.front() == '-';
  text.remove_prefix(1);
  return isNegative;
}

}  // namespace

std::int32_t intValue(std::string_view text) {
  using Limits = std::numeric_limits<std::int32_t>;
  text = withoutLeadingSpace(text);
  const bool isNegative = takeSign(text);
  std::int64_t value = 0;
  for (const char c : text) {
    if (c < '0' || c > '9') break;
    value = std::min<std::int64_t>(value * 10 + (c - '0'), std::int64_t{Limits::max()} + 1);
  }
  return static_cast<std::int32_t>(std::clamp<std::int64_t>(isNegative ? -value : value, Limits::min(), Limits::max()));
}

bool boolValue(std::string_view text) {
  text = withoutLeadingSpace(text);
  takeSign(text);
  const auto decisive = text.find_first_not_of('0');
  return decisive != std::string_view::npos &&
         std::string_view("YyTt123456789").find(text[decisive]) != std::string_view::npos;
}
