#pragma once

#include <algorithm>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/foundation/URLLoader.h"

// A loader that answers from a script, on the run loop's time, and writes down what was asked. One thread, as a
// VirtualRunLoop has it.
//
// It keeps the bounds of a request as a real one does: an answer that takes longer than the silence or the whole is a
// time-out at that moment, a body over the limit an error.
class ScriptedURLLoader : public URLLoader {
 public:
  struct Answer {
    long status = 200;
    std::string body{};
    std::chrono::milliseconds delay{0};
    std::optional<int> error{};  // an NSURLError code in place of a response
    bool never = false;          // accepted, and then silence
  };

  // What `url` gives from now on. Called again, it adds the answer of a further request; the last one stays.
  void answer(const std::string& url, Answer answer) { script_[normalised(url)].push_back(std::move(answer)); }
  void answer(const std::string& url, std::string body) { answer(url, Answer{200, std::move(body), {}, {}, false}); }

  const std::vector<URLRequest>& asked() const { return asked_; }
  std::vector<std::string> askedURLs() const {
    std::vector<std::string> urls;
    for (const auto& one : asked_) urls.push_back(one.url.absoluteString());
    return urls;
  }
  // What was sent without waiting for an answer, in order.
  const std::vector<std::string>& sentURLs() const { return sent_; }
  void forgetSent() { sent_.clear(); }
  // Requests that have not completed.
  int inFlight() const { return *inFlight_; }

  bool send(URLRequest request) override {
    if (!request.url.isHTTP()) return false;
    sent_.push_back(request.url.absoluteString());
    return true;
  }

  void load(URLRequest request, const dispatch_queue_t& queue, Completion completion) override {
    asked_.push_back(request);
    auto [after, response] = outcome(request, next(request.url.absoluteString()));
    ++*inFlight_;
    auto owned = std::make_shared<Completion>(std::move(completion));
    RunLoop::main().schedule(after, [queue, owned, count = inFlight_, result = std::move(response)]() mutable {
      dispatch_async(queue, [owned, count, result = std::move(result)]() mutable {
        --*count;
        std::exchange(*owned, nullptr)(std::move(result));
      });
    });
  }

 private:
  static std::string normalised(const std::string& url) {
    const auto parsed = NSURL::URLWithString(url);
    return parsed ? parsed->absoluteString() : url;
  }

  Answer next(const std::string& url) {
    const auto found = script_.find(url);
    if (found == script_.end()) return {.error = NSURLErrorCannotConnectToHost};
    auto& answers = found->second;
    Answer answer = answers.front();
    if (answers.size() > 1) answers.erase(answers.begin());
    return answer;
  }

  // After how long, and what.
  static std::pair<std::chrono::milliseconds, URLResponse> outcome(const URLRequest& request, const Answer& answer) {
    const auto failed = [](std::chrono::milliseconds after, int code) {
      return std::pair(after, URLResponse{0, {}, NSError{NSURLErrorDomain, code, "scripted failure"}, after});
    };
    const auto bound = std::min(request.silenceLimit, request.timeLimit);
    if (answer.never || answer.delay >= bound) return failed(bound, NSURLErrorTimedOut);
    if (request.url.isFileURL() && !request.allowsFiles) return failed({}, NSURLErrorUnsupportedURL);
    if (answer.error) return failed(answer.delay, *answer.error);
    if (answer.body.size() > request.bytesLimit) return failed(answer.delay, NSURLErrorDataLengthExceedsMaximum);
    const auto* bytes = reinterpret_cast<const std::byte*>(answer.body.data());
    return {answer.delay, {answer.status, {bytes, bytes + answer.body.size()}, {}, answer.delay}};
  }

  std::map<std::string, std::vector<Answer>> script_;
  std::vector<URLRequest> asked_;
  std::vector<std::string> sent_;
  std::shared_ptr<int> inFlight_ = std::make_shared<int>(0);
};

// Makes a scripted loader everybody's loader while it lives.
class ScriptedLoaderInPlace {
 public:
  ScriptedLoaderInPlace() { URLLoader::setShared(loader); }
  ScriptedLoaderInPlace(const ScriptedLoaderInPlace&) = delete;
  ScriptedLoaderInPlace& operator=(const ScriptedLoaderInPlace&) = delete;
  ~ScriptedLoaderInPlace() { URLLoader::setShared(nullptr); }

  const std::shared_ptr<ScriptedURLLoader> loader = std::make_shared<ScriptedURLLoader>();
};
