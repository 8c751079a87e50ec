#include "platform/foundation/CurlTransfer.h"

#include <algorithm>
#include <utility>

CurlTransfer::CurlTransfer(URLRequest request, Done done)
    : request_(std::move(request)),
      done_(std::move(done)),
      handle_(request_.url, std::min({request_.connectingLimit, request_.silenceLimit, request_.timeLimit})) {
  if (handle()) setOptions();
}

void CurlTransfer::setOptions() {
  CURL* easy = handle();
  curl_easy_setopt(easy, CURLOPT_ACCEPT_ENCODING, "");
  curl_easy_setopt(easy, CURLOPT_TIMEOUT_MS, static_cast<long>(request_.timeLimit.count()));
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

NSError CurlTransfer::failure(CURLcode code) const {
  if (isTooLong_) {
    return {NSURLErrorDomain, NSURLErrorDataLengthExceedsMaximum,
            "The body is longer than " + std::to_string(request_.bytesLimit) + " bytes."};
  }
  if (isSilent_) {
    return {NSURLErrorDomain, NSURLErrorTimedOut,
            "No data came for " + std::to_string(request_.silenceLimit.count()) + " milliseconds."};
  }
  return handle_.failure(code);
}

void CurlTransfer::finish(CURLcode code) {
  if (code == CURLE_OK) {
    curl_easy_getinfo(handle(), CURLINFO_RESPONSE_CODE, &response_.status);
  } else {
    response_.body.clear();
    response_.error = failure(code);
  }
  if (curl_off_t elapsed = 0; handle() && curl_easy_getinfo(handle(), CURLINFO_TOTAL_TIME_T, &elapsed) == CURLE_OK) {
    response_.elapsed = std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::microseconds(elapsed));
  }
  done_(std::move(response_));
}

void CurlTransfer::cancel() {
  response_ = {};
  response_.error = NSError{NSURLErrorDomain, NSURLErrorCancelled, "The request was cancelled."};
  done_(std::move(response_));
}
