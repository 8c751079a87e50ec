#include "platform/avfoundation/hls/HLSFiles.h"

#include <charconv>
#include <filesystem>
#include <fstream>
#include <vector>

namespace {

constexpr std::size_t pieceBytes = 256 * 1024;

// The first place and the one behind the last of "Range: bytes=7-99".
std::pair<std::uint64_t, std::uint64_t> rangeOf(const std::vector<std::string>& headers) {
  constexpr std::string_view name = "Range: bytes=";
  std::uint64_t first = 0, last = UINT64_MAX - 1;
  for (const std::string& header : headers) {
    if (!header.starts_with(name)) continue;
    const char* const end = header.data() + header.size();
    const auto after = std::from_chars(header.data() + name.size(), end, first).ptr;
    if (after != end) std::from_chars(after + 1, end, last);
  }
  return {first, last + 1};
}

}  // namespace

class HLSFiles::Stream final : public HTTPStream {
 public:
  Stream(HLSFiles& files, HTTPStreamRequest request, HTTPStreamClient& client)
      : files_(files), request_(std::move(request)), client_(client) {
    std::error_code error;
    const std::string path = request_.url.path();
    // A pipe would be waited for.
    if (std::filesystem::is_regular_file(path, error)) file_.open(path, std::ios::binary);
    std::tie(place_, end_) = rangeOf(request_.headers);
    files_.streams_.insert(this);
  }
  ~Stream() override { files_.streams_.erase(this); }
  void resume() override { isPaused_ = false; }

  // False when it waits for its client. It may be gone afterwards.
  bool turn() {
    if (hasEnded_ || isPaused_) return false;
    if (!hasAnswered_ && !answer()) return end();
    if (piece_.empty() && !read()) return end();
    isPaused_ = client_.streamDidReceive(piece_) == HTTPStreamClient::Taken::none;
    if (!isPaused_) piece_.clear();
    return true;
  }

 private:
  bool answer() {
    hasAnswered_ = true;
    HTTPAnswer answer;
    answer.status = file_.is_open() ? 206 : 404;
    answer.url = request_.url.absoluteString();
    answer.headers["content-range"] = "bytes " + std::to_string(place_) + "-";
    file_.seekg(static_cast<std::streamoff>(place_));
    return client_.streamDidAnswer(answer);
  }
  bool read() {
    piece_.resize(std::min<std::uint64_t>(pieceBytes, end_ - std::min(place_, end_)));
    file_.read(reinterpret_cast<char*>(piece_.data()), static_cast<std::streamsize>(piece_.size()));
    piece_.resize(static_cast<std::size_t>(std::max<std::streamsize>(file_.gcount(), 0)));
    place_ += piece_.size();
    return !piece_.empty();
  }
  bool end() {
    hasEnded_ = true;
    client_.streamDidEnd(std::nullopt);
    return true;
  }

  HLSFiles& files_;
  const HTTPStreamRequest request_;
  HTTPStreamClient& client_;
  std::ifstream file_;
  std::uint64_t place_ = 0, end_ = 0;
  std::vector<std::byte> piece_;
  bool hasAnswered_ = false, hasEnded_ = false, isPaused_ = false;
};

std::unique_ptr<HTTPStream> HLSFiles::start(HTTPStreamRequest request, HTTPStreamClient& client) {
  return std::make_unique<Stream>(*this, std::move(request), client);
}

bool HLSFiles::turn() {
  bool hasMoved = false;
  const auto all = streams_;
  for (Stream* stream : all) {
    if (streams_.contains(stream)) hasMoved = stream->turn() || hasMoved;
  }
  return hasMoved;
}
