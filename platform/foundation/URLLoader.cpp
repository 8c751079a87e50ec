#include "platform/foundation/URLLoader.h"

#include <mutex>

#include "platform/foundation/CurlURLLoader.h"

namespace {

std::mutex mutex;
std::shared_ptr<URLLoader> given;

}  // namespace

std::string URLResponse::reason() const {
  if (error) return error->message;
  return status == 200 ? "" : "The server answered " + std::to_string(status) + ".";
}

URLLoader::~URLLoader() = default;

bool URLLoader::wasAnsweredLately() const {
  constexpr std::chrono::minutes proofLimit{1};
  const auto at = answeredAt_.load();
  bool isLate = true;
  RunLoop::whileInstalled([&](RunLoop& loop) { isLate = at == never || loop.now() - at > proofLimit; });
  return !isLate;
}

void URLLoader::noteAnswer() {
  RunLoop::whileInstalled([this](RunLoop& loop) { answeredAt_ = loop.now(); });
}

std::shared_ptr<URLLoader> URLLoader::shared() {
  std::lock_guard lock(mutex);
  if (given) return given;
  static const std::shared_ptr<URLLoader> curl = std::make_shared<CurlURLLoader>();
  return curl;
}

void URLLoader::setShared(std::shared_ptr<URLLoader> loader) {
  std::lock_guard lock(mutex);
  given.swap(loader);
}
