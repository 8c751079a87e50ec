#include "platform/foundation/NSString.h"

#include <algorithm>
#include <limits>
#include <optional>
#include <utility>

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

constexpr std::size_t widestField = 64;

// One "%…" of a format that can be honoured, with `rest` behind it.
struct Conversion {
  std::optional<std::size_t> position;  // of the argument, from 1; nil for the next one
  bool isLeftAligned = false;
  bool isZeroPadded = false;
  std::string_view positiveSign;
  std::size_t width = 0;
  std::optional<std::size_t> precision;
  std::string_view rest;
};

// The digits that `text` begins with, and their number held just above the widest field.
std::pair<std::size_t, std::string_view> takeNumber(std::string_view& text) {
  const std::string_view digits = text.substr(0, std::min(text.find_first_not_of("0123456789"), text.size()));
  std::size_t number = 0;
  for (const char digit : digits) number = std::min(number * 10 + std::size_t(digit - '0'), widestField + 1);
  text.remove_prefix(digits.size());
  return {number, digits};
}

bool takePrefix(std::string_view& text, std::string_view prefix) {
  if (!text.starts_with(prefix)) return false;
  text.remove_prefix(prefix.size());
  return true;
}

// `text` begins behind the percent sign.
std::optional<Conversion> conversionAt(std::string_view text) {
  Conversion conversion;
  std::string_view ahead = text;
  if (const auto [number, digits] = takeNumber(ahead); takePrefix(ahead, "$")) {
    if (number == 0) return std::nullopt;
    conversion.position = number;
    text = ahead;
  }
  for (; !text.empty(); text.remove_prefix(1)) {
    if (text.front() == '-') {
      conversion.isLeftAligned = true;
    } else if (text.front() == '0') {
      conversion.isZeroPadded = true;
    } else if (text.front() == '+') {
      conversion.positiveSign = "+";
    } else if (text.front() != ' ') {
      break;
    } else if (conversion.positiveSign.empty()) {
      conversion.positiveSign = " ";
    }
  }
  conversion.width = takeNumber(text).first;
  if (takePrefix(text, ".")) conversion.precision = takeNumber(text).first;
  if (conversion.width > widestField || conversion.precision.value_or(0) > widestField) return std::nullopt;
  for (const std::string_view length : {"hh", "h", "ll", "l", "q", "j", "z", "t"}) {
    if (takePrefix(text, length)) break;
  }
  if (text.empty() || std::string_view("diu").find(text.front()) == std::string_view::npos) return std::nullopt;
  conversion.rest = text.substr(1);
  return conversion;
}

std::string formatted(std::int64_t value, const Conversion& conversion) {
  const std::uint64_t magnitude = value < 0 ? 0 - std::uint64_t(value) : std::uint64_t(value);
  const std::string_view sign = value < 0 ? "-" : conversion.positiveSign;
  std::string digits = conversion.precision == 0 && value == 0 ? "" : std::to_string(magnitude);
  std::size_t digitsWanted = conversion.precision.value_or(1);
  if (conversion.isZeroPadded && !conversion.isLeftAligned && !conversion.precision) {
    digitsWanted = conversion.width - std::min(conversion.width, sign.size());
  }
  if (digits.size() < digitsWanted) digits.insert(0, digitsWanted - digits.size(), '0');
  std::string field = std::string(sign) + digits;
  if (field.size() < conversion.width) {
    field.insert(conversion.isLeftAligned ? field.size() : 0, conversion.width - field.size(), ' ');
  }
  return field;
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

std::string stringWithFormat(std::string_view format, std::initializer_list<std::int64_t> arguments) {
  std::string result;
  std::size_t next = 1;
  while (!format.empty()) {
    const std::size_t copied = std::min(format.find('%'), format.size());
    result += format.substr(0, copied);
    format.remove_prefix(copied);
    if (format.empty()) break;
    format.remove_prefix(1);
    const auto conversion = conversionAt(format);
    const std::size_t position = conversion ? conversion->position.value_or(next) : 0;
    if (conversion && position <= arguments.size()) {
      result += formatted(arguments.begin()[position - 1], *conversion);
      format = conversion->rest;
      if (!conversion->position) ++next;
    } else {
      takePrefix(format, "%");
      result += '%';
    }
  }
  return result;
}
