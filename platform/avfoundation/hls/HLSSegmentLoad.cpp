#include "platform/avfoundation/hls/HLSSegmentLoad.h"

#include <algorithm>

#include "platform/avfoundation/bytes/ServerErrors.h"
#include "platform/avfoundation/segments/SegmentBegin.h"

namespace {

using Kind = SegmentRecord::Kind;

constexpr std::size_t keyBytes = 16;
constexpr std::size_t mapBytesLimit = 1024 * 1024;
// Enough to tell media from something else.
constexpr std::size_t lookBytes = 200;

HLSDecryption::Block blockOf(std::uint64_t sequence) {
  HLSDecryption::Block block{};
  for (std::size_t i = 0; i < 8; ++i) block[15 - i] = static_cast<std::uint8_t>(sequence >> (8 * i));
  return block;
}

}  // namespace

const std::string* HLSKept::find(const std::string& name) const {
  const auto found = all_.find(name);
  return found == all_.end() ? nullptr : &found->second;
}

void HLSKept::keep(const std::string& name, std::string content) {
  if (order_.size() >= keptLimit) {
    all_.erase(order_.front());
    order_.erase(order_.begin());
  }
  order_.push_back(name);
  all_[name] = std::move(content);
}

HLSSegmentLoad::HLSSegmentLoad(HTTPStreams& streams, HLSKept& kept, HLSRow& row, const HLSStream& from,
                               std::size_t index, SegmentRecord record, bool isSide)
    : streams_(streams), kept_(kept), row_(row), record_(record), isSide_(isSide) {
  const HLSMediaPlaylist& list = from.list();
  const HLSSegment& segment = list.segments[index];
  const auto sequence = blockOf(list.firstSequence + index);
  record_.kind = Kind::segment;
  if (const auto url = from.address(segment.uri)) {
    request_ = HLSTransfer::Request{.url = *url, .range = segment.range, .isSide = isSide};
  } else {
    fail(hlsFaultError({HLSFault::Kind::malformed, "a segment has an address that can't be opened"},
                       from.address("").value_or(NSURL::fileURLWithPath("/"))),
         true);
  }
  const auto needKey = [&](std::size_t key, std::string& name, HLSDecryption::Block& iv) {
    iv = list.keys[key].iv.value_or(sequence);
    need(from.address(list.keys[key].uri), std::nullopt, name, keyBytes);
  };
  if (segment.key) needKey(*segment.key, keyName_, iv_);
  if (segment.map) {
    const HLSMap& map = list.maps[*segment.map];
    if (map.key) needKey(*map.key, mapKeyName_, mapIV_);
    need(from.address(map.uri), map.range, mapName_, mapBytesLimit);
  }
}

void HLSSegmentLoad::need(std::optional<NSURL> url, std::optional<HLSByteRange> range, std::string& name,
                          std::size_t bytesLimit) {
  if (!url) {
    const NSURL& whose = request_ ? request_->url : NSURL::fileURLWithPath("/");
    return fail(hlsFaultError({HLSFault::Kind::malformed, "a key or a map can't be opened"}, whose), true);
  }
  name = (bytesLimit == keyBytes ? "key " : "map ") + url->absoluteString();
  if (range) name += " " + std::to_string(range->first) + "+" + std::to_string(range->length);
  if (kept_.find(name)) return;
  needed_.push_back({name, {.url = *url, .range = range, .isSide = isSide_}, bytesLimit});
  needed_.back().request.timeLimit = std::chrono::seconds(20);
}

void HLSSegmentLoad::fail(NSError error, bool isRefused) {
  document_.reset();
  if (hasBegun_) cut();
  state_ = State::failed;
  error_ = std::move(error);
  isRefused_ = isRefused;
}

void HLSSegmentLoad::cut() {
  if (state_ != State::running) return;
  transfer_.reset();
  record_.kind = Kind::end;
  record_.isCut = 1;
  if (hasBegun_) row_.write(record_);
  state_ = State::failed;
}

std::optional<HLSSegmentLoad::Time> HLSSegmentLoad::turn(Time now) {
  std::optional<Time> due;
  if (state_ != State::running || !hasAll(now, due)) return due;
  if (!transfer_) begin();
  if (row_.hasRoom(SegmentRecord::sizeLimit)) transfer_->goOn();
  due = transfer_->turn(now);
  if (transfer_->state() == State::done) finish();
  if (state_ == State::running && transfer_->state() == State::failed) {
    fail(transfer_->error(), transfer_->isRefused());
  }
  return state_ == State::running ? due : now;
}

bool HLSSegmentLoad::hasAll(Time now, std::optional<Time>& due) {
  while (!needed_.empty()) {
    Needed& next = needed_.front();
    if (!kept_.find(next.name)) {
      if (!document_) document_ = std::make_unique<HLSDocument>(streams_, next.request, next.bytesLimit);
      due = document_->turn(now);
      if (document_->state() == State::running) return false;
      const bool isKey = next.bytesLimit == keyBytes;
      const bool isWhole = document_->state() == State::done && (!isKey || document_->text().size() == keyBytes);
      if (!isWhole) {
        const bool isLost = document_->state() == State::failed && !document_->transfer().isRefused();
        NSError error = document_->state() == State::failed
                            ? document_->transfer().error()
                            : senselessAnswerError(next.request.url, "a key of another length");
        if (isKey) {
          error.domain = AVFoundationErrorDomain;
          error.code = AVErrorContentIsNotAuthorized;
        }
        error.message =
            std::string(isKey ? "The key" : "The beginning") + " of the media can't be had. " + error.message;
        fail(std::move(error), !isLost);
        due = now;
        return false;
      }
      kept_.keep(next.name, document_->text());
      document_.reset();
    }
    needed_.erase(needed_.begin());
  }
  return true;
}

std::unique_ptr<HLSDecryption> HLSSegmentLoad::decryption(const std::string& keyName,
                                                          const HLSDecryption::Block& iv) const {
  const std::string* kept = kept_.find(keyName);
  if (!kept) return nullptr;
  HLSDecryption::Block key;
  std::copy_n(kept->begin(), key.size(), key.begin());
  return std::make_unique<HLSDecryption>(key, iv);
}

void HLSSegmentLoad::begin() {
  decryption_ = decryption(keyName_, iv_);
  transfer_ = std::make_unique<HLSTransfer>(
      streams_, *request_,
      HLSTransfer::Sink{[this](std::size_t bytes) { return hasRoom(bytes); },
                        [this](std::span<const std::byte> bytes) { return take(bytes); }});
}

bool HLSSegmentLoad::hasRoom(std::size_t bytes) const {
  return row_.hasRoom(bytes + held_.size() + (hasBegun_ ? 0 : mapBytesLimit));
}

bool HLSSegmentLoad::take(std::span<const std::byte> bytes) {
  return decryption_ ? write(decryption_->take(bytes)) : write(bytes);
}

bool HLSSegmentLoad::write(std::span<const std::byte> plain) {
  SegmentRecord data = record_;
  data.kind = Kind::data;
  if (hasBegun_) return plain.empty() || row_.write(data, plain);
  held_.insert(held_.end(), plain.begin(), plain.end());
  if (held_.size() < lookBytes && state_ == State::running && transfer_->state() == State::running) return true;
  if (!SegmentBegin::looksLikeMedia(held_)) return false;
  hasBegun_ = true;
  bool isWritten = row_.write(record_);
  if (const std::string* map = kept_.find(mapName_)) {
    const auto raw = std::as_bytes(std::span(*map));
    const auto mapDecryption = decryption(mapKeyName_, mapIV_);
    if (mapDecryption) {
      auto open = mapDecryption->take(raw);
      const auto rest = mapDecryption->finish();
      open.insert(open.end(), rest.begin(), rest.end());
      isWritten = isWritten && row_.write(data, open);
    } else {
      isWritten = isWritten && row_.write(data, raw);
    }
  }
  const auto held = std::move(held_);
  return isWritten && row_.write(data, held);
}

void HLSSegmentLoad::finish() {
  const auto rest = decryption_ ? decryption_->finish() : std::vector<std::byte>();
  if (!write(rest) || !hasBegun_) {
    return fail(senselessAnswerError(request_->url, keyName_.empty() ? "no media" : "no media, or another key's"),
                true);
  }
  record_.kind = Kind::end;
  row_.write(record_);
  state_ = State::done;
}
