#include "VAST/Parser/VASTMacros.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <iterator>
#include <random>

#include "platform/foundation/NSString.h"

namespace {

using Text = std::optional<std::string>;

constexpr const char* unknown = "-1";
constexpr const char* withheld = "-2";

std::string padded(const char* format, long long value) {
  char text[24];
  std::snprintf(text, sizeof text, format, value);
  return text;
}

// Hours, minutes, seconds and thousandths.
Text clock(const std::optional<double>& seconds) {
  constexpr double limit = 1e9;
  if (!seconds || !(*seconds >= 0 && *seconds < limit)) return std::nullopt;
  const auto thousandths = static_cast<long long>(std::floor(*seconds * 1000 + 1e-6));
  return padded("%02lld:", thousandths / 3'600'000) + padded("%02lld:", thousandths / 60'000 % 60) +
         padded("%02lld.", thousandths / 1000 % 60) + padded("%03lld", thousandths % 1000);
}

Text number(const std::optional<int>& value) {
  return value ? Text(std::to_string(*value)) : std::nullopt;
}

Text size(const VASTMacroValues& values) {
  if (!values.playerSize) return std::nullopt;
  return std::to_string(values.playerSize->first) + "," + std::to_string(values.playerSize->second);
}

// What the viewer's calendar and clock say, as ISO 8601 has it.
Text timestamp(const VASTMacroValues&) {
  const auto now = std::chrono::system_clock::now();
  const std::time_t seconds = std::chrono::system_clock::to_time_t(std::chrono::floor<std::chrono::seconds>(now));
  const auto rest = now - std::chrono::floor<std::chrono::seconds>(now);
  std::tm parts{};
  gmtime_r(&seconds, &parts);
  return padded("%04lld-", parts.tm_year + 1900) + padded("%02lld-", parts.tm_mon + 1) +
         padded("%02lldT", parts.tm_mday) + padded("%02lld:", parts.tm_hour) + padded("%02lld:", parts.tm_min) +
         padded("%02lld.", parts.tm_sec) +
         padded("%03lldZ", std::chrono::duration_cast<std::chrono::milliseconds>(rest).count());
}

Text eightDigits(const VASTMacroValues&) {
  thread_local std::minstd_rand random{std::random_device{}()};
  return padded("%08lld", std::uniform_int_distribution<int>(0, 99'999'999)(random));
}

struct Macro {
  std::string_view name;
  Text (*value)(const VASTMacroValues&);
  const char* without = unknown;
};

Text nothing(const VASTMacroValues&) {
  return std::nullopt;
}

// By name. Those at the end are the standard's too; nothing here has a value for them.
constexpr Macro macros[] = {
    {"ADCOUNT", [](const VASTMacroValues& values) { return number(values.adCount); }},
    {"ADPLAYHEAD", [](const VASTMacroValues& values) { return clock(values.adPlayhead); }},
    {"ASSETURI", [](const VASTMacroValues& values) { return values.assetURI; }},
    {"BREAKPOSITION", [](const VASTMacroValues& values) { return number(values.breakPosition); }},
    {"CACHEBUSTING", eightDigits},
    {"CONTENTPLAYHEAD", [](const VASTMacroValues& values) { return clock(values.mediaPlayhead); }},
    {"ERRORCODE", [](const VASTMacroValues& values) { return values.errorCode; }},
    {"MEDIAPLAYHEAD", [](const VASTMacroValues& values) { return clock(values.mediaPlayhead); }},
    {"PLAYERSIZE", size},
    {"PODSEQUENCE", [](const VASTMacroValues& values) { return values.podSequence; }},
    {"REASON", [](const VASTMacroValues& values) { return number(values.reason); }},
    {"TIMESTAMP", timestamp},
    // Known to the machine, and not told.
    {"CLIENTUA", nothing, withheld},
    {"DEVICEIP", nothing, withheld},
    {"DEVICEUA", nothing, withheld},
    {"LATLONG", nothing, withheld},
    // Not known.
    {"ADCATEGORIES", nothing},
    {"ADSERVINGID", nothing},
    {"ADTYPE", nothing},
    {"APIFRAMEWORKS", nothing},
    {"APPBUNDLE", nothing},
    {"BLOCKEDADCATEGORIES", nothing},
    {"BREAKMAXADLENGTH", nothing},
    {"BREAKMAXADS", nothing},
    {"BREAKMAXDURATION", nothing},
    {"BREAKMINADLENGTH", nothing},
    {"BREAKMINDURATION", nothing},
    {"CLICKPOS", nothing},
    {"CLICKTYPE", nothing},
    {"CONTENTCAT", nothing},
    {"CONTENTID", nothing},
    {"CONTENTURI", nothing},
    {"DOMAIN", nothing},
    {"EXTENSIONS", nothing},
    {"GDPRCONSENT", nothing},
    {"IFA", nothing},
    {"IFATYPE", nothing},
    {"INVENTORYSTATE", nothing},
    {"LIMITADTRACKING", nothing},
    {"MEDIAMIME", nothing},
    {"OMIDPARTNER", nothing},
    {"PAGEURL", nothing},
    {"PLACEMENTTYPE", nothing},
    {"PLAYERCAPABILITIES", nothing},
    {"PLAYERSTATE", nothing},
    {"REGULATIONS", nothing},
    {"SERVERSIDE", nothing},
    {"SERVERUA", nothing},
    {"TRANSACTIONID", nothing},
    {"UNIVERSALADID", nothing},
    {"VASTVERSIONS", nothing},
    {"VERIFICATIONVENDORS", nothing},
};

// The opening or the closing bracket at `place`, as a character or percent-encoded: its length, 0 when there is none.
std::size_t bracketAt(std::string_view text, std::size_t place, char bracket) {
  const char digit = bracket == '[' ? 'b' : 'd';
  const auto rest = text.substr(place, 3);
  if (rest.starts_with(bracket)) return 1;
  return rest.size() == 3 && rest[0] == '%' && rest[1] == '5' && lowercaseASCII(rest[2]) == digit ? 3 : 0;
}

// A macro that begins at `place`, and where it ends; nil when none of the standard's does.
const Macro* macroAt(std::string_view text, std::size_t place, std::size_t& end) {
  const auto opening = bracketAt(text, place, '[');
  if (opening == 0) return nullptr;
  const auto start = place + opening;
  auto stop = start;
  while (stop < text.size() && text[stop] >= 'A' && text[stop] <= 'Z') ++stop;
  const auto closing = bracketAt(text, stop, ']');
  if (closing == 0) return nullptr;
  end = stop + closing;
  const auto name = text.substr(start, stop - start);
  const auto* const found = std::ranges::find(macros, name, &Macro::name);
  return found == std::end(macros) ? nullptr : found;
}

}  // namespace

bool mayHoldVASTMacros(std::string_view url) {
  return url.find('[') != url.npos || url.find("%5") != url.npos;
}

std::string expandVASTMacros(std::string_view url, const VASTMacroValues& values) {
  std::string expanded;
  expanded.reserve(url.size());
  for (std::size_t place = 0; place < url.size();) {
    std::size_t end = place + 1;
    if (const auto* macro = macroAt(url, place, end)) {
      const auto value = macro->value(values);
      expanded += value ? stringByAddingPercentEncoding(*value) : macro->without;
      place = end;
    } else {
      expanded += url[place++];
    }
  }
  return expanded;
}
