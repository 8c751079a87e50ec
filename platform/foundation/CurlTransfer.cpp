#include "platform/foundation/CurlTransfer.h"

#include <algorithm>
#include <utility>

namespace {

constexpr long redirectsLimit = 10;
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

CurlTransfer::CurlTransfer(URLRequest request, Done done)
    : request_(std::move(request)), done_(std::move(done)), easy_(curl_easy_init(), &curl_easy_cleanup) {
  if (easy_) setOptions();
}

void CurlTransfer::setOptions() {
  CURL* easy = easy_.get();
  curl_easy_setopt(easy, CURLOPT_URL, request_.url.absoluteString().c_str());
  curl_easy_setopt(easy, CURLOPT_PROTOCOLS_STR, protocols);
  curl_easy_setopt(easy, CURLOPT_REDIR_PROTOCOLS_STR, protocols);
  curl_easy_setopt(easy, CURLOPT_FOLLOWLOCATION, 1L);
  curl_easy_setopt(easy, CURLOPT_MAXREDIRS, redirectsLimit);
  curl_easy_setopt(easy, CURLOPT_COOKIEFILE, "");  // a redirect may set a cookie and look for it; it lives no longer
  curl_easy_setopt(easy, CURLOPT_USERAGENT, "YMRPlayer/" YMR_VERSION);
  curl_easy_setopt(easy, CURLOPT_ACCEPT_ENCODING, "");
  curl_easy_setopt(easy, CURLOPT_NOSIGNAL, 1L);
  curl_easy_setopt(easy, CURLOPT_QUICK_EXIT, 1L);  // a time-out does not wait for the name look-up's thread
  curl_easy_setopt(
      easy, CURLOPT_CONNECTTIMEOUT_MS,
      static_cast<long>(std::min({request_.connectingLimit, request_.silenceLimit, request_.timeLimit}).count()));
  curl_easy_setopt(easy, CURLOPT_TIMEOUT_MS, static_cast<long>(request_.timeLimit.count()));
  curl_easy_setopt(easy, CURLOPT_ERRORBUFFER, message_);
  curl_easy_setopt(easy, CURLOPT_WRITEFUNCTION, &CurlTransfer::onBody);
  curl_easy_setopt(easy, CURLOPT_WRITEDATA, this);
  curl_easy_setopt(easy, CURLOPT_NOPROGRESS, request_.silenceLimit < request_.timeLimit ? 0L : 1L);
  curl_easy_setopt(easy, CURLOPT_XFERINFOFUNCTION, &CurlTransfer::onProgress);
  curl_easy_setopt(easy, CURLOPT_XFERINFODATA, this);
  curl_easy_setopt(easy, CURLOPT_PRIVATE, this);
}

// Bytes arrive here decoded, so a small body that unpacks to a large one is stopped as well.
std::size_t CurlTransfer::onBody(char* data, std::size_t, std::size_t count, void* self) {
  auto& transfer = *static_cast<CurlTransfer*>(self);
  auto& body = transfer.response_.body;
  if (count > transfer.request_.bytesLimit - body.size()) {
    transfer.isTooLong_ = true;
    return 0;
  }
  const auto* bytes = reinterpret_cast<const std::byte*>(data);
  body.insert(body.end(), bytes, bytes + count);
  return count;
}

// The library's own low-speed limit looks at an average, which lags behind by seconds.
int CurlTransfer::onProgress(void* self, curl_off_t, curl_off_t received, curl_off_t, curl_off_t sent) {
  auto& transfer = *static_cast<CurlTransfer*>(self);
  long head = 0;
  curl_off_t elapsed = 0;
  curl_easy_getinfo(transfer.handle(), CURLINFO_HEADER_SIZE, &head);
  curl_easy_getinfo(transfer.handle(), CURLINFO_TOTAL_TIME_T, &elapsed);
  if (const curl_off_t bytes = received + sent + head; bytes != transfer.bytes_) {
    transfer.bytes_ = bytes;
    transfer.changedAt_ = elapsed;
  }
  transfer.isSilent_ = std::chrono::microseconds(elapsed - transfer.changedAt_) >= transfer.request_.silenceLimit;
  return transfer.isSilent_ ? 1 : 0;
}

std::string CurlTransfer::redirectedTo() const {
  long count = 0;
  const char* url = nullptr;
  curl_easy_getinfo(handle(), CURLINFO_REDIRECT_COUNT, &count);
  if (count > 0) curl_easy_getinfo(handle(), CURLINFO_EFFECTIVE_URL, &url);
  return url ? url : "";
}

NSError CurlTransfer::failure(CURLcode code) const {
  if (isTooLong_) {
    return {NSURLErrorDomain, NSURLErrorDataLengthExceedsMaximum,
            "The body is longer than " + std::to_string(request_.bytesLimit) + " bytes."};
  }
  if (isSilent_) {
    return {NSURLErrorDomain, NSURLErrorTimedOut,
            "No data came for " + std::to_string(request_.silenceLimit.count()) + " milliseconds."};
  }
  const int known = errorCode(code);
  std::string reason = message_[0] ? message_ : curl_easy_strerror(code);
  const std::string to = redirectedTo();
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

void CurlTransfer::finish(CURLcode code) {
  if (code == CURLE_OK) {
    curl_easy_getinfo(handle(), CURLINFO_RESPONSE_CODE, &response_.status);
  } else {
    response_.body.clear();
    response_.error = failure(code);
  }
  if (curl_off_t elapsed = 0; easy_ && curl_easy_getinfo(handle(), CURLINFO_TOTAL_TIME_T, &elapsed) == CURLE_OK) {
    response_.elapsed = std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::microseconds(elapsed));
  }
  done_(std::move(response_));
}

void CurlTransfer::cancel() {
  response_ = {};
  response_.error = NSError{NSURLErrorDomain, NSURLErrorCancelled, "The request was cancelled."};
  done_(std::move(response_));
}
