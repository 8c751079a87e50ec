#include "platform/foundation/NSScanner.h"

#include <algorithm>
#include <limits>

namespace {

bool isDigit(char byte) {
  return byte >= '0' && byte <= '9';
}

}  // namespace

std::size_t NSScanner::afterSkipping() const {
  if (!skipped_) return location_;
  if (lastSkip_.set != skipped_ || location_ < lastSkip_.from || location_ > lastSkip_.to) {
    lastSkip_ = {skipped_, location_, location_ + lengthOfCharactersInSet(string_.substr(location_), *skipped_)};
  }
  return lastSkip_.to;
}

std::optional<std::string_view> NSScanner::take(std::size_t start, std::size_t end) {
  if (start == end) return std::nullopt;
  location_ = end;
  return string_.substr(start, end - start);
}

std::optional<std::int64_t> NSScanner::scanInteger() {
  using Limits = std::numeric_limits<std::int64_t>;
  std::size_t at = afterSkipping();
  const bool hasSign = at < string_.size() && (string_[at] == '-' || string_[at] == '+');
  const bool isNegative = hasSign && string_[at] == '-';
  if (hasSign) ++at;
  if (at == string_.size() || !isDigit(string_[at])) return std::nullopt;
  // Counted downwards, since there is one negative number more.
  std::int64_t value = 0;
  for (; at < string_.size() && isDigit(string_[at]); ++at) {
    const std::int64_t digit = string_[at] - '0';
    value = value < (Limits::min() + digit) / 10 ? Limits::min() : value * 10 - digit;
  }
  location_ = at;
  return isNegative ? value : -std::max(value, -Limits::max());
}

bool NSScanner::scanString(std::string_view string) {
  const std::size_t start = afterSkipping();
  if (!string_.substr(start).starts_with(string)) return false;
  location_ = start + string.size();
  return true;
}

std::optional<std::string_view> NSScanner::scanUpToString(std::string_view string) {
  const std::size_t start = afterSkipping();
  return take(start, std::min(string_.find(string, start), string_.size()));
}

std::optional<std::string_view> NSScanner::scanUpToCharactersFromSet(const NSCharacterSet& set) {
  const std::size_t start = afterSkipping();
  return take(start, start + lengthOfCharactersInSet(string_.substr(start), set, true));
}

std::optional<std::string_view> NSScanner::scanCharactersFromSet(const NSCharacterSet& set) {
  const std::size_t start = afterSkipping();
  return take(start, start + lengthOfCharactersInSet(string_.substr(start), set));
}
