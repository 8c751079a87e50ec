#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/avfoundation/hls/HLSSegmentLoad.h"
#include "platform/avfoundation/hls/HLSVariantChoice.h"

// Fetches a programme that a playlist describes, around where its reader is, into the two rows of a store: pictures and
// sound in one, the texts that are wanted in the other. It sorts out what is missing, so that the reader gets one row:
//
// - What stands beside the pictures (sound of its own, texts) and can't be had is left out.
// - A segment that can't be had is taken from another variant; when none has it, it is left out, and so is one that is
//   marked as missing. The end of a film is not left out: without it the film has failed.
// - A variant that fails again and again is left alone for a while. When there is none left, the programme has failed.
// - A line that is down is waited for: whoever plays has bounds of its own.
//
// The thread that drives the streams. It does nothing but in turn(), and hand on bytes in between.
class HLSLoader {
 public:
  using Time = HLSTransfer::Time;

  struct Source {
    NSURL url;         // of the playlist, after redirects
    std::string text;  // its text
    int screenHeight = 0;
  };
  HLSLoader(Source source, std::shared_ptr<ByteStore> store, HTTPStreams& streams);

  // Does what is due. Returns when the next turn is needed at the latest, if nothing else happens.
  std::optional<Time> turn(Time now);

 private:
  // One row of segments on its way.
  struct Track {
    std::uint32_t number = SegmentRecord::mainTrack;
    bool isSide = false;
    const HLSStream* of = nullptr;  // where the next segment is expected to be
    std::uint64_t sequence = 0;     // and its number there
    unsigned count = 0;             // by this count
    std::int64_t time = 0;          // up to where it is loaded
    std::unique_ptr<HLSSegmentLoad> load = nullptr;
    std::int64_t loadEnd = 0;
    Time notBefore{0};
    int missing = 0;  // in a row
  };
  // What stands beside the pictures: one of several that would do.
  struct Side {
    std::vector<std::string> addresses = {};  // those that are left to be tried, the first one now
    std::unique_ptr<HLSStream> stream = nullptr;
    Track track;
    bool isThere() const { return !addresses.empty(); }
  };

  void open(Time now);
  void openMaster(HLSMasterPlaylist master);
  void fail(const NSError& error);
  NSError reason(const std::string& consequence) const;
  void followWish(const ByteStore::Demand& demand);
  void jump(const SegmentWish& wish);
  void tellFacts();

  std::optional<Time> turnMain(Time now, const ByteStore::Demand& demand);
  std::optional<Time> turnSide(Side& side, HLSRow& row, Time now);
  // Puts the next segment of `from` under way; returns when to look again when there is none.
  std::optional<Time> next(Track& track, HLSRow& row, const HLSStream& from, Time now);
  std::optional<std::size_t> nextIndex(Track& track, const HLSStream& from) const;
  void advance(Track& track);
  void settleMain(Time now);
  // No variant has the next segment.
  void giveUp(Time now);
  void pause(Time now);
  void leaveOut(const HLSStream& from, std::size_t index);
  void considerLess(Time now);
  void changeSide(Side& side, HLSRow& row);
  HLSStream& stream(std::size_t variant);
  bool hasAlternatives() const { return master_.variants.size() > 1; }
  bool wantsMore(const Track& track, std::int64_t readTime, const HLSRow& row) const;
  std::int64_t readTime() const { return row_.readTime().value_or(main_.time); }
  Time ahead() const { return Time(main_.time - readTime()); }

  const Source source_;
  const std::shared_ptr<ByteStore> store_;
  HTTPStreams& streams_;
  HLSRow row_, textRow_;
  HLSKept kept_;
  bool isOpen_ = false, isBegun_ = false, isOver_ = false;
  std::optional<NSError> failure_;

  HLSMasterPlaylist master_;  // of a list without variants: one
  std::optional<HLSVariantChoice> choice_;
  std::vector<std::unique_ptr<HLSStream>> variants_;
  std::vector<int> failures_;           // of each variant, in a row, where another one did not fail
  std::optional<std::size_t> picked_;   // for the next segment
  std::vector<std::size_t> asked_;      // in vain, for the same
  std::optional<std::size_t> current_;  // the one that was read last
  int toldVersion_ = 0;
  Track main_;
  Side audio_;
  bool hasSound_ = false;  // of its own, as long as it can be had
  std::vector<HLSRendition> texts_;
  Side text_;
  SegmentWish wish_;  // that the rows answer
  unsigned textNumber_ = 0;
  std::optional<NSError> error_;  // why a segment was not had, the last one
  bool isRefused_ = false;
  Time pause_{0};
  int setbacks_ = 0;  // of a live programme, in a row: nothing of it was to be had
  Time now_{0};       // of this turn
};
