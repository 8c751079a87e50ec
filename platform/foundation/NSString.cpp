#include "platform/foundation/NSString.h"

#include <curl/curl.h>

#include <algorithm>
#include <charconv>
#include <limits>
#include <memory>
#include <optional>

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

constexpr std::size_t fieldWidthLimit = 64;  // characters

// One "%…d" of a format that can be honoured, with `rest` behind it.
struct Conversion {
  std::size_t position = 0;  // of the argument, from 1; 0 for the next one
  bool isZeroPadded = false;
  std::size_t width = 0;
  std::string_view rest;
};

// The number that `text` begins with, held just above the widest field; 0 without digits.
std::size_t takeNumber(std::string_view& text) {
  std::size_t number = 0;
  for (; !text.empty() && text.front() >= '0' && text.front() <= '9'; text.remove_prefix(1)) {
    number = std::min(number * 10 + std::size_t(text.front() - '0'), fieldWidthLimit + 1);
  }
  return number;
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
  if (const auto position = takeNumber(ahead); takePrefix(ahead, "$")) {
    if (position == 0) return std::nullopt;
    conversion.position = position;
    text = ahead;
  }
  conversion.isZeroPadded = takePrefix(text, "0");
  conversion.width = takeNumber(text);
  if (conversion.width > fieldWidthLimit || !takePrefix(text, "d")) return std::nullopt;
  conversion.rest = text;
  return conversion;
}

std::string formatted(std::int64_t value, const Conversion& conversion) {
  std::string field = std::to_string(value);
  if (field.size() >= conversion.width) return field;
  const bool goesBehindSign = conversion.isZeroPadded && value < 0;
  return field.insert(goesBehindSign ? 1 : 0, conversion.width - field.size(), conversion.isZeroPadded ? '0' : ' ');
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
    const std::size_t position = conversion && conversion->position > 0 ? conversion->position : next;
    if (conversion && position <= arguments.size()) {
      result += formatted(arguments.begin()[position - 1], *conversion);
      format = conversion->rest;
      if (conversion->position == 0) ++next;
    } else {
      takePrefix(format, "%");
      result += '%';
    }
  }
  return result;
}

std::string stringByReplacingOccurrencesOfString(std::string_view text, std::string_view target,
                                                 std::string_view replacement) {
  std::string result;
  for (auto at = text.find(target); at != text.npos; at = text.find(target)) {
    result.append(text.substr(0, at)).append(replacement);
    text.remove_prefix(at + target.size());
  }
  return result.append(text);
}

std::string stringByAddingPercentEncoding(std::string_view text) {
  if (text.empty()) return "";  // curl would take the length for unknown
  const std::unique_ptr<char, decltype(&curl_free)> encoded(
      curl_easy_escape(nullptr, text.data(), static_cast<int>(text.size())), &curl_free);
  return encoded ? encoded.get() : "";
}

std::string stringWithDouble(double value, int decimals) {
  char text[400];  // the largest numbers have 309 digits before the point
  return {text, std::to_chars(text, text + sizeof text, value, std::chars_format::fixed, decimals).ptr};
}

char lowercaseASCII(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}
