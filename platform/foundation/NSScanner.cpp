#include "platform/foundation/NSScanner.h"

#include <algorithm>
#include <charconv>
#include <limits>

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
  const std::size_t start = afterSkipping();
  const bool hasSign = start < string_.size() && (string_[start] == '-' || string_[start] == '+');
  const bool isNegative = hasSign && string_[start] == '-';
  const std::size_t digits = start + (hasSign ? 1 : 0);
  if (digits == string_.size() || string_[digits] < '0' || string_[digits] > '9') return std::nullopt;
  std::int64_t value = isNegative ? Limits::min() : Limits::max();  // which stays when there are too many digits
  const char* const first = string_.data() + (isNegative ? start : digits);
  location_ =
      static_cast<std::size_t>(std::from_chars(first, string_.data() + string_.size(), value).ptr - string_.data());
  return value;
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
