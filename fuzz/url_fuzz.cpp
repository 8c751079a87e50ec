// Any text as a URL: of those that are fetched, the parts must be what curl, which opens it, takes them for, and it
// must stay itself when parsed again.
#include <curl/curl.h>

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>

#include "platform/foundation/NSURL.h"

namespace {

void require(bool holds) {
  if (!holds) std::abort();
}

std::string part(CURLU* handle, CURLUPart which, unsigned flags = 0) {
  char* text = nullptr;
  if (curl_url_get(handle, which, &text, flags) != CURLUE_OK) return "";
  const std::unique_ptr<char, decltype(&curl_free)> owned(text, &curl_free);
  return text;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  const auto url = NSURL::URLWithString(text);
  if (!url || !url->isHTTP()) return 0;
  const std::unique_ptr<CURLU, decltype(&curl_url_cleanup)> handle(curl_url(), &curl_url_cleanup);
  require(curl_url_set(handle.get(), CURLUPART_URL, url->absoluteString().c_str(), CURLU_NON_SUPPORT_SCHEME) == 0);
  require(part(handle.get(), CURLUPART_URL) == url->absoluteString());
  require(part(handle.get(), CURLUPART_SCHEME) == url->scheme());
  const std::string host = part(handle.get(), CURLUPART_HOST);
  require(host == url->host() || host == "[" + url->host() + "]");
  const std::string path = part(handle.get(), CURLUPART_PATH, CURLU_URLDECODE);
  require(path.empty() || path == url->path());
  require(NSURL::URLWithString(url->absoluteString()) == url);
  return 0;
}
