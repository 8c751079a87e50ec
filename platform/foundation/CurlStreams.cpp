#include "platform/foundation/CurlStreams.h"

#include <algorithm>
#include <set>
#include <utility>

#include "platform/foundation/CurlHandle.h"
#include "platform/foundation/CurlMulti.h"
#include "platform/foundation/NSString.h"

namespace {

// As much as the library hands on at a time anyway, in as few calls of the system as it can.
constexpr long receiveBytes = 256 * 1024;

std::string lower(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(), lowercaseASCII);
  return text;
}

}  // namespace

HTTPStreamClient::~HTTPStreamClient() = default;
HTTPStream::~HTTPStream() = default;
HTTPStreams::~HTTPStreams() = default;

class CurlStreams::Driver {
 public:
  CurlMulti multi;
  std::set<Stream*> streams;
};

class CurlStreams::Stream final : public HTTPStream {
 public:
  Stream(Driver& driver, const HTTPStreamRequest& request, HTTPStreamClient& client)
      : driver_(driver), client_(client), handle_(request.url, request.connectingLimit) {
    driver_.streams.insert(this);
    CURL* easy = handle_.get();
    if (!easy) return;
    for (const auto& header : request.headers) {
      if (curl_slist* longer = curl_slist_append(headers_, header.c_str())) headers_ = longer;
    }
    curl_easy_setopt(easy, CURLOPT_HTTPHEADER, headers_);
    curl_easy_setopt(easy, CURLOPT_ACCEPT_ENCODING, "identity");
    curl_easy_setopt(easy, CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_1_1));
    curl_easy_setopt(easy, CURLOPT_SUPPRESS_CONNECT_HEADERS, 1L);
    curl_easy_setopt(easy, CURLOPT_BUFFERSIZE, receiveBytes);
    curl_easy_setopt(easy, CURLOPT_WRITEFUNCTION, &Stream::onBody);
    curl_easy_setopt(easy, CURLOPT_WRITEDATA, this);
    curl_easy_setopt(easy, CURLOPT_PRIVATE, this);
    isRunning_ = driver_.multi.add(easy);
  }

  ~Stream() override {
    if (isRunning_) driver_.multi.remove(handle_.get());
    driver_.streams.erase(this);
    curl_slist_free_all(headers_);
  }

  void resume() override { mayResume_ = true; }

  // What could not be begun has failed; what was resumed goes on. The stream may be gone when that did something.
  bool turn() {
    if (!isRunning_ && !hasEnded_) {
      finish(CURLE_OUT_OF_MEMORY);
      return true;
    }
    const bool resumes = std::exchange(mayResume_, false) && std::exchange(isPaused_, false);
    if (resumes) curl_easy_pause(handle_.get(), CURLPAUSE_CONT);
    return resumes;
  }

  // Told once; the stream may be gone afterwards.
  void finish(CURLcode code) {
    isRunning_ = false;
    hasEnded_ = true;
    if (code == CURLE_OK && !hasAnswered_) isStopped_ = !answer();
    if (code == CURLE_OK || isStopped_) {
      client_.streamDidEnd(std::nullopt);
    } else {
      client_.streamDidEnd(handle_.failure(code));
    }
  }

 private:
  static std::size_t onBody(char* data, std::size_t, std::size_t count, void* self) {
    auto& stream = *static_cast<Stream*>(self);
    if (!stream.hasAnswered_ && !stream.answer()) {
      stream.isStopped_ = true;
      return 0;
    }
    if (count == 0) return 0;
    if (stream.client_.streamDidReceive({reinterpret_cast<const std::byte*>(data), count}) ==
        HTTPStreamClient::Taken::all) {
      return count;
    }
    stream.isPaused_ = true;
    return CURL_WRITEFUNC_PAUSE;
  }

  bool answer() {
    hasAnswered_ = true;
    CURL* easy = handle_.get();
    HTTPAnswer answer;
    curl_easy_getinfo(easy, CURLINFO_RESPONSE_CODE, &answer.status);
    const char* url = nullptr;
    if (curl_easy_getinfo(easy, CURLINFO_EFFECTIVE_URL, &url) == CURLE_OK && url) answer.url = url;
    curl_off_t number = 0;
    if (curl_easy_getinfo(easy, CURLINFO_CONTENT_LENGTH_DOWNLOAD_T, &number) == CURLE_OK && number >= 0) {
      answer.length = static_cast<std::uint64_t>(number);
    }
    if (curl_easy_getinfo(easy, CURLINFO_RETRY_AFTER, &number) == CURLE_OK && number > 0) {
      answer.retryAfter = std::chrono::seconds(number);
    }
    constexpr int last = -1;
    curl_header* header = nullptr;
    while ((header = curl_easy_nextheader(easy, CURLH_HEADER, last, header))) {
      answer.headers.try_emplace(lower(header->name), header->value);
    }
    return client_.streamDidAnswer(answer);
  }

  Driver& driver_;
  HTTPStreamClient& client_;
  CurlHandle handle_;
  curl_slist* headers_ = nullptr;
  bool isRunning_ = false;
  bool hasAnswered_ = false;
  bool hasEnded_ = false;
  bool isStopped_ = false;  // by the client
  bool isPaused_ = false;
  bool mayResume_ = false;
};

CurlStreams::CurlStreams() : driver_(std::make_unique<Driver>()) {}
CurlStreams::~CurlStreams() = default;

std::unique_ptr<HTTPStream> CurlStreams::start(HTTPStreamRequest request, HTTPStreamClient& client) {
  return std::make_unique<Stream>(*driver_, request, client);
}

std::vector<int> CurlStreams::turn(std::span<const int> descriptors, std::chrono::milliseconds patience) {
  std::vector<curl_waitfd> waits;
  for (const int descriptor : descriptors) waits.push_back({descriptor, CURL_WAIT_POLLIN, 0});
  const auto streams = driver_->streams;  // a client may begin and let go of some
  for (Stream* stream : streams) {
    if (driver_->streams.contains(stream) && stream->turn()) patience = std::chrono::milliseconds(0);
  }
  driver_->multi.wait(waits, static_cast<int>(patience.count()));
  std::vector<std::pair<Stream*, CURLcode>> ended;
  for (const auto& [easy, code] : driver_->multi.perform()) {
    char* stream = nullptr;
    curl_easy_getinfo(easy, CURLINFO_PRIVATE, &stream);
    ended.emplace_back(reinterpret_cast<Stream*>(stream), code);
  }
  for (const auto& [stream, code] : ended) {
    if (driver_->streams.contains(stream)) stream->finish(code);
  }
  std::vector<int> readable;
  for (const auto& each : waits) {
    if (each.revents & CURL_WAIT_POLLIN) readable.push_back(each.fd);
  }
  return readable;
}

void CurlStreams::wakeUp() {
  driver_->multi.wakeUp();
}
