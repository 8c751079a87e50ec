#include "platform/foundation/NSURL.h"

#include <curl/curl.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <memory>

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
  std::transform(text.begin(), text.end(), text.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return text;
}

bool hasControlOrSpace(std::string_view text) {
  return std::any_of(text.begin(), text.end(), [](unsigned char c) { return c <= 0x20 || c == 0x7f; });
}

bool isPlainHostCharacter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '-' || c == '.';
}

// Nothing that is decoded, ends the path, or is not ASCII.
bool isPlainPathCharacter(char c) {
  return c > 0x20 && c < 0x7f && c != '%' && c != '?' && c != '#' && c != '\\';
}

struct PlainParts {
  std::string_view scheme, host, path;
};

// The parts of a URL that curl would give back as it is given: http or https, a lower-case name, a path without escapes
// and dots after a slash, no fragment. Most URLs are of this form, and an ad can have a hundred thousand.
std::optional<PlainParts> plainParts(std::string_view text) {
  constexpr std::size_t longest = 8 * 1024;
  const std::size_t schemeLength = text.starts_with("http://") ? 4 : text.starts_with("https://") ? 5 : 0;
  if (schemeLength == 0 || text.size() > longest) return std::nullopt;
  const auto rest = text.substr(schemeLength + 3);
  const auto endOfHost = std::find_if_not(rest.begin(), rest.end(), isPlainHostCharacter);
  if (endOfHost == rest.end() || *endOfHost != '/' || rest.front() < 'a' || rest.front() > 'z') {
    return std::nullopt;
  }
  const auto endOfPath = std::find_if_not(endOfHost, rest.end(), isPlainPathCharacter);
  const std::string_view path(endOfHost, endOfPath);
  const std::string_view query(endOfPath, rest.end());
  const bool isQuery = query.size() > 1 && query.front() == '?' && query.find('#') == query.npos &&
                       std::all_of(query.begin(), query.end(), [](char c) { return c > 0x20 && c < 0x7f; });
  if (path.find("/.") != path.npos || (!query.empty() && !isQuery)) return std::nullopt;
  return PlainParts{text.substr(0, schemeLength), std::string_view(rest.begin(), endOfHost), path};
}

}  // namespace

std::optional<NSURL> NSURL::URLWithString(std::string_view text) {
  if (const auto plain = plainParts(text)) {
    NSURL url;
    url.text_ = text;
    url.scheme_ = plain->scheme;
    url.host_ = plain->host;
    url.path_ = plain->path;
    return url;
  }
  if (text.empty() || hasControlOrSpace(text)) return std::nullopt;
  const Handle handle = makeHandle();
  if (!handle || curl_url_set(handle.get(), CURLUPART_URL, std::string(text).c_str(), CURLU_NON_SUPPORT_SCHEME)) {
    return std::nullopt;
  }
  NSURL url;
  url.host_ = lowered(part(handle.get(), CURLUPART_HOST).value_or(""));
  // What no host has, decoded from an escape: curl would not read back what it writes.
  if (hasControlOrSpace(url.host_) || url.host_.find('%') != std::string::npos) return std::nullopt;
  if (!url.host_.empty() && curl_url_set(handle.get(), CURLUPART_HOST, url.host_.c_str(), 0)) return std::nullopt;
  auto whole = part(handle.get(), CURLUPART_URL);
  auto scheme = part(handle.get(), CURLUPART_SCHEME);
  if (!whole || !scheme) return std::nullopt;
  url.text_ = std::move(*whole);
  url.scheme_ = lowered(std::move(*scheme));
  if (url.host_.size() > 2 && url.host_.front() == '[') url.host_ = url.host_.substr(1, url.host_.size() - 2);
  // A path whose escapes do not decode (an encoded NUL) stays as it was written.
  url.path_ =
      part(handle.get(), CURLUPART_PATH, CURLU_URLDECODE).value_or(part(handle.get(), CURLUPART_PATH).value_or(""));
  return url;
}

NSURL NSURL::fileURLWithPath(std::string_view path) {
  std::error_code error;
  const std::filesystem::path given(path);
  auto absolute = std::filesystem::absolute(given, error);
  NSURL url;
  url.scheme_ = "file";
  url.path_ = (error || path.empty() ? std::filesystem::current_path(error) : absolute).lexically_normal().string();
  url.text_ = "file://";
  constexpr char digits[] = "0123456789ABCDEF";
  for (const unsigned char c : url.path_) {
    if (std::isalnum(c) ||
        std::string_view("-._~/!$&'()*+,;=:@").find(static_cast<char>(c)) != std::string_view::npos) {
      url.text_ += static_cast<char>(c);
    } else {
      url.text_ += {'%', digits[c >> 4], digits[c & 15]};
    }
  }
  return url;
}

std::optional<NSURL> NSURL::URLFromUserInput(std::string_view text) {
  if (text.find("://") != std::string_view::npos) return URLWithString(text);
  if (text.empty()) return std::nullopt;
  return fileURLWithPath(text);
}

std::string NSURL::pathExtension() const {
  const auto slash = path_.rfind('/');
  const auto dot = path_.rfind('.');
  if (dot == std::string::npos || (slash != std::string::npos && dot < slash + 2)) return "";
  return lowered(path_.substr(dot + 1));
}
