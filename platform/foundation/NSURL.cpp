#include "platform/foundation/NSURL.h"

#include <curl/curl.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <filesystem>
#include <memory>

#include "platform/foundation/NSString.h"
#include "platform/foundation/UTF8.h"

namespace {

using Handle = std::unique_ptr<CURLU, decltype(&curl_url_cleanup)>;

Handle makeHandle() {
  return Handle(curl_url(), &curl_url_cleanup);
}

std::optional<std::string> part(CURLU* handle, CURLUPart which, unsigned flags = 0) {
  char* text = nullptr;
  if (curl_url_get(handle, which, &text, flags) != CURLUE_OK) return std::nullopt;
  std::string result(text);
  curl_free(text);
  return result;
}

std::string lowered(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(), lowercaseASCII);
  return text;
}

bool hasControlOrSpace(std::string_view text) {
  return std::any_of(text.begin(), text.end(), [](unsigned char c) { return c <= 0x20 || c == 0x7f; });
}

enum PlainCharacter : std::uint8_t { inHost = 1, inPath = 2, inQuery = 4 };

// In a path, nothing that is decoded, ends it, or is not ASCII; in a query nothing that ends it.
constexpr std::array<std::uint8_t, 256> plainCharacters = [] {
  std::array<std::uint8_t, 256> table{};
  for (std::size_t c = 0x21; c < 0x7f; ++c) table[c] = c == '#' ? 0 : inQuery;
  for (std::size_t c = 0x21; c < 0x7f; ++c) table[c] |= c == '%' || c == '?' || c == '#' || c == '\\' ? 0 : inPath;
  for (const unsigned char c : std::string_view("abcdefghijklmnopqrstuvwxyz0123456789-.")) table[c] |= inHost;
  return table;
}();

// The length of what `text` begins with of that kind.
std::size_t plainLength(std::string_view text, PlainCharacter kind) {
  std::size_t length = 0;
  while (length < text.size() && (plainCharacters[static_cast<std::uint8_t>(text[length])] & kind) != 0) ++length;
  return length;
}

// Whether curl would give back each part as it is given: http or https, a lower-case name, a path without escapes and
// dots after a slash, no fragment. Most URLs are of this form, and an ad can have a hundred thousand.
bool isPlain(std::string_view text) {
  constexpr std::size_t plainBytesLimit = 8 * 1024;  // longer ones are few
  const std::size_t schemeLength = text.starts_with("http://") ? 4 : text.starts_with("https://") ? 5 : 0;
  if (schemeLength == 0 || text.size() > plainBytesLimit) return false;
  text.remove_prefix(schemeLength + 3);
  if (text.empty() || text.front() < 'a' || text.front() > 'z') return false;
  text.remove_prefix(plainLength(text, inHost));
  if (text.empty() || text.front() != '/') return false;
  const std::size_t lengthOfPath = plainLength(text, inPath);
  if (text.substr(0, lengthOfPath).find("/.") != text.npos) return false;
  text.remove_prefix(lengthOfPath);
  if (text.empty()) return true;
  return text.front() == '?' && text.size() > 1 && plainLength(text, inQuery) == text.size();
}

}  // namespace

std::optional<NSURL> NSURL::URLWithString(std::string_view text) {
  if (isPlain(text)) return NSURL(std::string(text), nullptr);
  auto url = parse(text);
  // An escaped host may hold an address in a short form, which curl writes out only when it reads it plain.
  if (url && url->text_ != text) url = parse(url->text_);
  return url;
}

std::optional<NSURL> NSURL::URLWithString(std::string_view text, const NSURL& base) {
  const bool hasControl = std::any_of(text.begin(), text.end(), [](unsigned char c) { return c < 0x20 || c == 0x7f; });
  const Handle handle = makeHandle();
  constexpr unsigned flags = CURLU_NON_SUPPORT_SCHEME | CURLU_URLENCODE;
  if (!handle || hasControl || curl_url_set(handle.get(), CURLUPART_URL, base.text_.c_str(), flags) ||
      curl_url_set(handle.get(), CURLUPART_URL, std::string(text).c_str(), flags)) {
    return std::nullopt;
  }
  const auto whole = part(handle.get(), CURLUPART_URL);
  return whole ? URLWithString(*whole) : std::nullopt;
}

std::optional<NSURL> NSURL::parse(std::string_view text) {
  const auto endOfScheme = text.find(':');
  if (endOfScheme == text.npos || !text.substr(endOfScheme).starts_with("://") || hasControlOrSpace(text)) {
    return std::nullopt;
  }
  const Handle handle = makeHandle();
  if (!handle || curl_url_set(handle.get(), CURLUPART_URL, std::string(text).c_str(), CURLU_NON_SUPPORT_SCHEME)) {
    return std::nullopt;
  }
  Parts parts;
  parts.host = lowered(part(handle.get(), CURLUPART_HOST).value_or(""));
  // What no host has, decoded from an escape: curl would not read back what it writes.
  if (hasControlOrSpace(parts.host) || parts.host.find('%') != std::string::npos) return std::nullopt;
  if (!parts.host.empty() && curl_url_set(handle.get(), CURLUPART_HOST, parts.host.c_str(), 0)) return std::nullopt;
  auto whole = part(handle.get(), CURLUPART_URL);
  auto scheme = part(handle.get(), CURLUPART_SCHEME);
  if (!whole || !scheme) return std::nullopt;
  parts.scheme = lowered(std::move(*scheme));
  if (parts.host.size() > 2 && parts.host.front() == '[') parts.host = parts.host.substr(1, parts.host.size() - 2);
  // A path whose escapes do not decode (an encoded NUL) stays as it was written.
  parts.path =
      part(handle.get(), CURLUPART_PATH, CURLU_URLDECODE).value_or(part(handle.get(), CURLUPART_PATH).value_or(""));
  return NSURL(*std::move(whole), std::make_shared<const Parts>(std::move(parts)));
}

NSURL NSURL::fileURLWithPath(std::string_view path) {
  std::error_code error;
  const std::filesystem::path given(path);
  auto absolute = std::filesystem::absolute(given, error);
  Parts parts;
  parts.scheme = "file";
  parts.path = (error || path.empty() ? std::filesystem::current_path(error) : absolute).lexically_normal().string();
  std::string text =
      "file://" + stringByReplacingOccurrencesOfString(stringByAddingPercentEncoding(parts.path), "%2F", "/");
  return {std::move(text), std::make_shared<const Parts>(std::move(parts))};
}

std::optional<NSURL> NSURL::URLFromUserInput(std::string_view text) {
  if (text.find("://") != std::string_view::npos) return URLWithString(text);
  if (text.empty()) return std::nullopt;
  return fileURLWithPath(text);
}

std::size_t NSURL::endOfScheme() const {
  return text_.find(':');
}

std::string NSURL::scheme() const {
  return parts_ ? parts_->scheme : text_.substr(0, endOfScheme());
}

std::string NSURL::host() const {
  if (parts_ || text_.empty()) return parts_ ? parts_->host : "";
  const auto start = endOfScheme() + 3;
  return text_.substr(start, text_.find('/', start) - start);
}

std::string NSURL::path() const {
  if (parts_ || text_.empty()) return parts_ ? parts_->path : "";
  const auto start = text_.find('/', endOfScheme() + 3);
  return text_.substr(start, text_.find('?', start) - start);
}

bool NSURL::isFileURL() const {
  return parts_ && parts_->scheme == "file";
}

bool NSURL::isHTTP() const {
  return !parts_ || parts_->scheme == "http" || parts_->scheme == "https";
}

namespace {

// Of untrusted text; linear.
std::string shownName(std::string_view text) {
  constexpr std::size_t nameLimit = 300, endLimit = 100;
  constexpr std::string_view gap = "…", wrong = "\uFFFD";
  std::string name, end;
  if (text.size() > nameLimit) {
    end = gap;
    end += shownName(text.substr(text.size() - endLimit));
    text = text.substr(0, nameLimit - endLimit);
  }
  while (!text.empty()) {
    const UTF8Character character = firstUTF8Character(text);
    const bool isControl = character.value < 0x20 || (character.value >= 0x7F && character.value < 0xA0);
    name += character.isValid && !isControl ? text.substr(0, character.length) : wrong;
    text.remove_prefix(character.length);
  }
  return name + end;
}

}  // namespace

std::string nameForMessage(std::string_view url) {
  const auto endOfScheme = url.find("://");
  if (endOfScheme == url.npos) return shownName(url);
  const auto start = endOfScheme + 3;
  const auto path = std::min(url.find_first_of("/?#", start), url.size());
  const auto end = std::min(url.find_first_of("?#", path), url.size());
  const auto user = url.substr(start, path - start).rfind('@');
  const auto host = user == url.npos ? start : start + user + 1;
  const bool hasQuery = end < url.size() && url[end] == '?';
  return std::string(url.substr(0, start)) + shownName(url.substr(host, end - host)) + (hasQuery ? "?…" : "");
}

std::string nameForMessage(const NSURL& url) {
  if (!url.isFileURL()) return nameForMessage(url.absoluteString());
  const std::string path = url.path();
  const auto slash = path.find_last_of('/', path.size() > 1 ? path.size() - 2 : path.npos);
  return shownName(slash == path.npos || path.size() <= 1 ? path : std::string_view(path).substr(slash + 1));
}
