#include "platform/foundation/CurlHandle.h"

namespace {

constexpr long redirectsLimit = 10;
constexpr std::size_t headBytesLimit = 256 * 1024;
constexpr const char* protocols = "http,https";

int errorCode(CURLcode code) {
  switch (code) {
    case CURLE_OPERATION_TIMEDOUT:
      return NSURLErrorTimedOut;
    case CURLE_URL_MALFORMAT:
      return NSURLErrorBadURL;
    case CURLE_UNSUPPORTED_PROTOCOL:
      return NSURLErrorUnsupportedURL;
    case CURLE_COULDNT_RESOLVE_HOST:
    case CURLE_COULDNT_RESOLVE_PROXY:
      return NSURLErrorCannotFindHost;
    case CURLE_COULDNT_CONNECT:
      return NSURLErrorCannotConnectToHost;
    case CURLE_TOO_MANY_REDIRECTS:
      return NSURLErrorHTTPTooManyRedirects;
    case CURLE_PEER_FAILED_VERIFICATION:
    case CURLE_SSL_ISSUER_ERROR:
    case CURLE_SSL_CACERT_BADFILE:
      return NSURLErrorServerCertificateUntrusted;
    case CURLE_SSL_CONNECT_ERROR:
    case CURLE_SSL_CIPHER:
      return NSURLErrorSecureConnectionFailed;
    case CURLE_PARTIAL_FILE:
    case CURLE_GOT_NOTHING:
    case CURLE_RECV_ERROR:
    case CURLE_SEND_ERROR:
      return NSURLErrorNetworkConnectionLost;
    default:
      return NSURLErrorBadServerResponse;
  }
}

}  // namespace

CurlHandle::CurlHandle(const NSURL& url, std::chrono::milliseconds connectingLimit)
    : easy_(curl_easy_init(), &curl_easy_cleanup) {
  CURL* easy = easy_.get();
  if (!easy) return;
  curl_easy_setopt(easy, CURLOPT_URL, url.absoluteString().c_str());
  curl_easy_setopt(easy, CURLOPT_PROTOCOLS_STR, protocols);
  curl_easy_setopt(easy, CURLOPT_REDIR_PROTOCOLS_STR, protocols);
  curl_easy_setopt(easy, CURLOPT_FOLLOWLOCATION, 1L);
  curl_easy_setopt(easy, CURLOPT_MAXREDIRS, redirectsLimit);
  curl_easy_setopt(easy, CURLOPT_COOKIEFILE, "");  // a redirect may set a cookie and look for it; it lives no longer
  curl_easy_setopt(easy, CURLOPT_USERAGENT, "YMRPlayer/" YMR_VERSION);
  curl_easy_setopt(easy, CURLOPT_NOSIGNAL, 1L);
  curl_easy_setopt(easy, CURLOPT_QUICK_EXIT, 1L);  // a time-out does not wait for the name look-up's thread
  curl_easy_setopt(easy, CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(connectingLimit.count()));
  curl_easy_setopt(easy, CURLOPT_HEADERFUNCTION, &CurlHandle::onHeader);
  curl_easy_setopt(easy, CURLOPT_HEADERDATA, this);
  curl_easy_setopt(easy, CURLOPT_ERRORBUFFER, message_);
}

std::size_t CurlHandle::onHeader(char*, std::size_t, std::size_t count, void* self) {
  auto& handle = *static_cast<CurlHandle*>(self);
  handle.headBytes_ += count;
  return handle.headBytes_ <= headBytesLimit ? count : 0;
}

std::string CurlHandle::redirectedTo() const {
  long count = 0;
  const char* url = nullptr;
  curl_easy_getinfo(get(), CURLINFO_REDIRECT_COUNT, &count);
  if (count > 0) curl_easy_getinfo(get(), CURLINFO_EFFECTIVE_URL, &url);
  return url ? url : "";
}

NSError CurlHandle::failure(CURLcode code) const {
  if (headBytes_ > headBytesLimit) {
    return {NSURLErrorDomain, NSURLErrorBadServerResponse,
            "The answer's head is longer than " + std::to_string(headBytesLimit) + " bytes."};
  }
  const int known = errorCode(code);
  std::string reason = message_[0] ? message_ : curl_easy_strerror(code);
  const std::string to = get() ? nameForMessage(redirectedTo()) : "";
  if (known == NSURLErrorServerCertificateUntrusted) reason = "The server's certificate is not trusted: " + reason;
  if (known == NSURLErrorHTTPTooManyRedirects) {
    reason = "It was redirected more than " + std::to_string(redirectsLimit) + " times, at last to " + to + ".";
  } else if (known == NSURLErrorUnsupportedURL && !to.empty()) {
    reason = "The redirect to " + to + " is refused: only http and https are followed.";
  } else if (!to.empty()) {
    reason += " (redirected to " + to + ")";
  }
  return {NSURLErrorDomain, known, reason};
}
