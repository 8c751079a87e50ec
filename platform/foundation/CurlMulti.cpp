#include "platform/foundation/CurlMulti.h"

#include <new>

namespace {

constexpr long keptConnectionsLimit = 16;

}  // namespace

CurlMulti::CurlMulti() : multi_((curl_global_init(CURL_GLOBAL_DEFAULT), curl_multi_init()), &curl_multi_cleanup) {
  if (!multi_) throw std::bad_alloc();
  curl_multi_setopt(multi_.get(), CURLMOPT_MAXCONNECTS, keptConnectionsLimit);
}

std::vector<std::pair<CURL*, CURLcode>> CurlMulti::perform() {
  std::vector<std::pair<CURL*, CURLcode>> ended;
  int running = 0;
  curl_multi_perform(multi_.get(), &running);
  int left = 0;
  while (const CURLMsg* message = curl_multi_info_read(multi_.get(), &left)) {
    if (message->msg == CURLMSG_DONE) ended.emplace_back(message->easy_handle, message->data.result);
  }
  for (const auto& [easy, code] : ended) remove(easy);
  return ended;
}

void CurlMulti::wait(std::span<curl_waitfd> descriptors, int milliseconds) {
  curl_multi_poll(multi_.get(), descriptors.data(), static_cast<unsigned>(descriptors.size()), milliseconds, nullptr);
}
