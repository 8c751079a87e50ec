#include "platform/foundation/CurlURLLoader.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

namespace {

// More at once than any break fetches; a later one waits for a place.
constexpr HostLimits fetchLimits{.atOnce = 64, .perHost = 16, .waiting = 10'000};
constexpr HostLimits sendLimits{.atOnce = 32, .perHost = 6, .waiting = 10'000};
constexpr std::chrono::milliseconds lastSendingsLimit{2'000};

URLResponse failed(int code, std::string message) {
  URLResponse response;
  response.error = NSError{NSURLErrorDomain, code, std::move(message)};
  return response;
}

class Descriptor {
 public:
  explicit Descriptor(int number) : number_(number) {}
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  ~Descriptor() {
    if (number_ >= 0) ::close(number_);
  }
  operator int() const { return number_; }

 private:
  const int number_;
};

// Only a regular file: a pipe would never end. It is asked of what was opened, which does not change any more, and
// opening does not wait for the other end of a pipe.
URLResponse readFile(const URLRequest& request) {
  const std::string& path = request.url.path();
  const Descriptor file(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
  if (file < 0 && (errno == ENOENT || errno == ENOTDIR || errno == ENXIO)) {
    return failed(NSURLErrorFileDoesNotExist, "There is no such file.");
  }
  if (file < 0) return failed(NSURLErrorNoPermissionsToReadFile, std::strerror(errno));
  struct stat status {};
  if (::fstat(file, &status) != 0 || !S_ISREG(status.st_mode)) {
    return failed(NSURLErrorFileDoesNotExist,
                  S_ISDIR(status.st_mode) ? "This is a folder." : "This is no regular file.");
  }
  URLResponse response;
  response.body.reserve(std::min(static_cast<std::size_t>(status.st_size), request.bytesLimit));
  const auto deadline = RunLoop::main().now() + request.timeLimit;
  char block[64 * 1024];
  while (const ssize_t count = ::read(file, block, sizeof block)) {
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return failed(NSURLErrorResourceUnavailable, std::strerror(errno));
    if (static_cast<std::size_t>(count) > request.bytesLimit - response.body.size()) {
      return failed(NSURLErrorDataLengthExceedsMaximum,
                    "The file is longer than " + std::to_string(request.bytesLimit) + " bytes.");
    }
    if (RunLoop::main().now() > deadline) return failed(NSURLErrorTimedOut, "Reading the file takes too long.");
    const auto* bytes = reinterpret_cast<const std::byte*>(block);
    response.body.insert(response.body.end(), bytes, bytes + count);
  }
  response.status = 200;
  return response;
}

// The transfers' thread may outlive the run loop; then nobody waits any more.
void complete(const dispatch_queue_t& queue, URLLoader::Completion completion, URLResponse response) {
  RunLoop::whileInstalled([&](RunLoop&) {
    dispatch_async(queue, [completion = std::move(completion), response = std::move(response)]() mutable {
      completion(std::move(response));
    });
  });
}

}  // namespace

CurlURLLoader::CurlURLLoader() : fetches_(fetchLimits), sendings_(sendLimits) {}
CurlURLLoader::~CurlURLLoader() {
  sendings_.drain(lastSendingsLimit);
}

void CurlURLLoader::load(URLRequest request, const dispatch_queue_t& queue, Completion completion) {
  if (request.url.isHTTP()) {
    // Moved on to the queue, so that what it owns goes there and not on the transfers' thread.
    const auto owned = std::make_shared<Completion>(std::move(completion));
    const bool queued = fetches_.start(std::move(request), [queue, owned](URLResponse response) {
      complete(queue, std::move(*owned), std::move(response));
    });
    if (!queued) complete(queue, std::move(*owned), failed(NSURLErrorResourceUnavailable, "Too many requests wait."));
  } else if (request.url.isFileURL() && request.allowsFiles) {
    RunLoop::main().performWork([request = std::move(request), queue, completion = std::move(completion)]() mutable {
      complete(queue, std::move(completion), readFile(request));
    });
  } else {
    complete(queue, std::move(completion),
             failed(NSURLErrorUnsupportedURL, request.url.scheme() + ": this kind of URL is not opened here."));
  }
}

bool CurlURLLoader::send(URLRequest request) {
  return request.url.isHTTP() && sendings_.start(std::move(request), [this](const URLResponse& response) {
    if (!response.error) noteAnswer();  // nobody else reads it
  });
}
