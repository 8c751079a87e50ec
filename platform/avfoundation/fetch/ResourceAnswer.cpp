#include "platform/avfoundation/fetch/ResourceAnswer.h"

#include <algorithm>
#include <charconv>

#include "platform/avfoundation/bytes/ByteStore.h"
#include "platform/avfoundation/bytes/ServerErrors.h"
#include "platform/foundation/NSString.h"

namespace {

std::string lower(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(), lowercaseASCII);
  return text;
}

// Reads a number off the beginning of `text`; nil without one, or when no place is so large.
std::optional<std::uint64_t> takeNumber(std::string_view& text) {
  std::uint64_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || number > ByteStore::placesLimit) return std::nullopt;
  text.remove_prefix(static_cast<std::size_t>(end - text.data()));
  return number;
}

bool take(std::string_view& text, std::string_view what) {
  if (!text.starts_with(what)) return false;
  text.remove_prefix(what.size());
  return true;
}

// "bytes 0-99/200", "bytes 0-99/*", "bytes */200".
struct ContentRange {
  std::optional<std::uint64_t> first, behind, length;
};

std::optional<ContentRange> contentRange(const HTTPAnswer& answer) {
  const std::string value = lower(answer.header("content-range"));
  std::string_view text = value;
  ContentRange range;
  if (!take(text, "bytes")) return std::nullopt;
  if (!take(text, " ") && !take(text, "=")) return std::nullopt;
  if (!take(text, "*")) {
    range.first = takeNumber(text);
    if (!range.first || !take(text, "-")) return std::nullopt;
    const auto last = takeNumber(text);
    if (!last || *last < *range.first) return std::nullopt;
    range.behind = *last + 1;
  }
  if (!take(text, "/")) return std::nullopt;
  if (!take(text, "*") && !(range.length = takeNumber(text))) return std::nullopt;
  if (range.behind && range.length && *range.behind > *range.length) return std::nullopt;
  return range;
}

// The server packed the body though it was asked not to; it arrives unpacked, so no length and no place fits.
bool isPacked(const HTTPAnswer& answer) {
  const std::string coding = lower(answer.header("content-encoding"));
  return !coding.empty() && coding != "identity" && coding != "none";
}

// The part of an entity tag that tells contents apart.
std::string_view opaque(std::string_view tag) {
  take(tag, "W/");
  return tag;
}

bool isOther(const HTTPAnswer& answer, const std::optional<std::uint64_t>& length, const ResourceFacts& known) {
  if (length && known.length && *length != *known.length) return true;
  const std::string& tag = answer.header("etag");
  if (!tag.empty() && !known.eTag.empty()) return opaque(tag) != opaque(known.eTag);
  const std::string& date = answer.header("last-modified");
  return !date.empty() && !known.lastModified.empty() && date != known.lastModified;
}

std::optional<std::uint64_t> lengthOf(const HTTPAnswer& answer) {
  if (isPacked(answer)) return std::nullopt;
  if (answer.status != 206) return answer.length;
  const auto range = contentRange(answer);
  return range ? range->length : std::nullopt;
}

ResourceAnswer::Meaning partMeaning(const HTTPAnswer& answer, std::uint64_t place, const NSURL& url) {
  const auto range = contentRange(answer);
  if (!range || !range->first) return ResourceAnswer::Refusal{senselessAnswerError(url, "a part without its place")};
  if (*range->first > place || *range->behind <= place) {
    return ResourceAnswer::Refusal{senselessAnswerError(url, "another part")};
  }
  if (!isPacked(answer)) return ResourceAnswer::Body{*range->first, range->behind, false};
  if (*range->first == 0 && range->behind == range->length) return ResourceAnswer::Body{0, std::nullopt, true};
  return ResourceAnswer::Refusal{senselessAnswerError(url, "a packed part")};
}

}  // namespace

ResourceAnswer::Meaning ResourceAnswer::meaning(const HTTPAnswer& answer, std::uint64_t place,
                                                const ResourceFacts* known, const NSURL& url) {
  const bool isBusy = answer.status == 408 || answer.status == 429 || answer.status >= 500;
  if (isBusy) {
    const auto after = answer.status == 429 ? answer.retryAfter.value_or(std::chrono::seconds(0)) : answer.retryAfter;
    return Later{statusError(answer.status, url), after};
  }
  if (answer.status == 416) {
    const auto range = contentRange(answer);
    if (range && range->length && *range->length <= place && (!known || !known->length)) return End{*range->length};
    if (!known) return Unranged{};
    if (range && isOther(answer, range->length, *known)) return Changed{};
  }
  if (answer.status != 200 && answer.status != 206) return Refusal{statusError(answer.status, url)};
  if (known && isOther(answer, lengthOf(answer), *known)) return Changed{};
  if (answer.status == 206) return partMeaning(answer, place, url);
  return Body{0, lengthOf(answer), true};
}

ResourceFacts ResourceAnswer::facts(const HTTPAnswer& answer, const Body& body) {
  const bool offers = lower(answer.header("accept-ranges")).find("bytes") != std::string::npos;
  return {.length = lengthOf(answer),
          .servesRanges = !body.isWhole || (offers && !isPacked(answer)),
          .eTag = answer.header("etag"),
          .lastModified = answer.header("last-modified")};
}

MediaBytes::Head ResourceAnswer::head(const HTTPAnswer& answer, const ResourceFacts& facts) {
  std::string type = lower(answer.header("content-type"));
  type.resize(std::min(type.find_first_of("; \t,"), type.size()));
  return {.length = facts.length, .isSeekable = facts.servesRanges, .contentType = type, .url = answer.url};
}
