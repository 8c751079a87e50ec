#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/avfoundation/hls/HLSDecryption.h"
#include "platform/avfoundation/hls/HLSRow.h"
#include "platform/avfoundation/hls/HLSStream.h"

// Keys and maps that were fetched, a few of them.
class HLSKept {
 public:
  static constexpr std::size_t keptLimit = 16;
  const std::string* find(const std::string& name) const;
  void keep(const std::string& name, std::string content);

 private:
  std::map<std::string, std::string> all_;
  std::vector<std::string> order_;
};

// One segment on its way into a row: its key and its map first, then its bytes, decrypted, as they come. What does not
// begin like media is none.
//
// The thread that drives the streams. Destroyed before its row.
class HLSSegmentLoad {
 public:
  using Time = HLSTransfer::Time;
  using State = HLSTransfer::State;

  // `record` says where it belongs. The list it is from is looked at now only.
  HLSSegmentLoad(HTTPStreams& streams, HLSKept& kept, HLSRow& row, const HLSStream& from, std::size_t index,
                 SegmentRecord record, bool isSide);

  std::optional<Time> turn(Time now);
  State state() const { return state_; }
  const NSError& error() const { return error_; }
  // See HLSTransfer.
  bool isRefused() const { return isRefused_; }
  // Its bytes' own transfer; null before it has begun.
  const HLSTransfer* transfer() const { return transfer_.get(); }
  // No more of it; what came of it ends here.
  void cut();

 private:
  // What has to be here before: fetched into what is kept, or there.
  struct Needed {
    std::string name;
    HLSTransfer::Request request;
    std::size_t bytesLimit;
  };
  void need(std::optional<NSURL> url, std::optional<HLSByteRange> range, std::string& name, std::size_t bytesLimit);
  // False while something is missing.
  bool hasAll(Time now, std::optional<Time>& due);
  void begin();
  std::unique_ptr<HLSDecryption> decryption(const std::string& keyName, const HLSDecryption::Block& iv) const;
  bool hasRoom(std::size_t bytes) const;
  bool take(std::span<const std::byte> bytes);
  bool write(std::span<const std::byte> plain);
  void finish();
  void fail(NSError error, bool isRefused);

  HTTPStreams& streams_;
  HLSKept& kept_;
  HLSRow& row_;
  SegmentRecord record_;
  const bool isSide_;
  std::vector<Needed> needed_;
  std::unique_ptr<HLSDocument> document_;
  std::string keyName_, mapName_, mapKeyName_;  // empty for none
  HLSDecryption::Block iv_{}, mapIV_{};
  std::optional<HLSTransfer::Request> request_;

  std::unique_ptr<HLSDecryption> decryption_;
  std::unique_ptr<HLSTransfer> transfer_;
  std::vector<std::byte> held_;  // until it is known to be media
  bool hasBegun_ = false;        // in the row
  State state_ = State::running;
  NSError error_;
  bool isRefused_ = false;
};
