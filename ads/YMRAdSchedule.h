#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "VAST/Parser/VMAPParser.h"
#include "VAST/YMRTagProfile.h"
#include "ads/YMRAd.h"
#include "platform/Export.h"
#include "platform/uikit/values/UIColor.h"
#include "platform/uikit/values/UIFont.h"

// Which of the breaks that lie between are played when a programme jumps ahead, or starts behind some of them. One that
// is due at the very second where it lands is not missed. The others stay in the schedule, for the viewer who goes
// back.
enum YMRMissedBreaks : std::int32_t {
  YMRMissedBreaksAll = 0,   // each of them, one after another
  YMRMissedBreaksLast = 1,  // the last one alone, or in its place the one that is due where the programme lands
  YMRMissedBreaksNone = 2,
};

// The advertising of one programme: its ad breaks, and what the viewer reads while they load and play. Main thread.
//
// Copies share their lists. A player copies the schedule that it is given and takes each break out of its list when it
// starts it, so the host's own schedule, and every other copy, loses the break as well: a break plays once.
class YMR_API YMRAdSchedule {
 public:
  using Breaks = std::vector<std::shared_ptr<YMRAd>>;

  YMRAdSchedule();

  // Files a break by its roll: pre- and post-rolls behind those already there, mid-rolls by addMidRoll. One with an
  // unknown roll, or nil, is ignored.
  void addAdBreak(const std::shared_ptr<YMRAd>& adBreak);
  // Files a break by its offset, behind those with the same one, which play one after another at that moment. Add
  // mid-rolls in ascending order: an offset below the smallest one already there is not reordered but throws
  // NSRangeException, and the schedule stays as it was.
  void addMidRoll(const std::shared_ptr<YMRAd>& adBreak);
  // Files the breaks of a schedule document (VMAP) that are played, by time and, where times are equal, in the
  // document's order. Those at a share of the programme's length wait until placeShares().
  void addBreaks(const VMAPDocument& document);
  // Makes a schedule of a document that is fetched, or that the host has, and calls `completion` once, on a later turn
  // of the main queue: with the schedule, or with nil and what is wrong, for people. Read off the main thread; what is
  // left out is logged. The schedule is of that profile.
  using Completion = std::function<void(std::shared_ptr<YMRAdSchedule>, const std::string& problem)>;
  static void scheduleWithVMAPUrl(const NSURL& url, const Completion& completion,
                                  YMRTagProfile profile = YMRTagProfileExact);
  static void scheduleWithVMAPData(std::vector<std::byte> document, const Completion& completion,
                                   YMRTagProfile profile = YMRTagProfileExact);

  // Whether breaks wait for the programme's length.
  bool hasShares() const { return !shares_->empty(); }
  // Files them as mid-rolls of a programme of `duration` seconds, at whole seconds, a fraction counts as the next one.
  // Nothing while that is not a length. Indexes into the lists of mid-rolls change.
  void placeShares(double duration);

  // The same texts and look over the very same lists.
  std::shared_ptr<YMRAdSchedule> copy() const;

  // The breaks still to be played. Never nil.
  const std::shared_ptr<Breaks>& preRolls() const { return preRolls_; }
  const std::shared_ptr<Breaks>& postRolls() const { return postRolls_; }
  // Every offset once, ascending, in whole seconds of the programme; and for each of them, at the same index, its
  // breaks. A group whose breaks have been played stays, empty.
  const std::shared_ptr<std::vector<std::uint64_t>>& midRollOffsets() const { return midRollOffsets_; }
  const std::shared_ptr<std::vector<Breaks>>& midRolls() const { return midRolls_; }

  // How the documents of its breaks are read, and what their trackers are told when. Exact at first.
  YMRTagProfile tagProfile() const { return tagProfile_; }
  void setTagProfile(YMRTagProfile profile) { tagProfile_ = profile; }
  // At first all of them.
  YMRMissedBreaks missedBreaks() const { return missedBreaks_; }
  void setMissedBreaks(YMRMissedBreaks missed) { missedBreaks_ = missed; }
  // Where the programme goes on with its mid-rolls, unless all of the missed ones are played, when it has jumped from
  // one second to another: the index of a group that has breaks; nil when none is to come.
  std::optional<std::size_t> midRollAfterJump(double from, double to) const;
  // Whether ads that offer it, where the profile reads that, may be skipped; true at first.
  bool allowsSkipping() const { return allowsSkipping_; }
  void setAllowsSkipping(bool allows) { allowsSkipping_ = allows; }
  // Whether the transport bar marks the mid-rolls to come; true at first.
  bool showsBreakMarks() const { return showsBreakMarks_; }
  void setShowsBreakMarks(bool shows) { showsBreakMarks_ = shows; }

  // Shown while a break's ads are fetched and an ad gets ready. Empty at first, as are the other texts.
  const std::string& adLoadingText() const { return adLoadingText_; }
  void setAdLoadingText(std::string text) { adLoadingText_ = std::move(text); }
  // Shown each second of an ad in place of the loading text, which stays when they are empty. Formats with whole
  // numbers for arguments: the seconds left ("Ad · %d s"); and for one of several ads the seconds left, its number from
  // 1, and their count ("Ad %2$d of %3$d · %1$d s"). "%02d" fills up with zeros; whatever else there is stands as it
  // is.
  const std::string& adCountdownText() const { return adCountdownText_; }
  void setAdCountdownText(std::string format) { adCountdownText_ = std::move(format); }
  const std::string& adpodCountdownText() const { return adpodCountdownText_; }
  void setAdpodCountdownText(std::string format) { adpodCountdownText_ = std::move(format); }

  // What the button says that skips an ad, at first "Skip ad"; and until then, a format with the seconds left, at first
  // "Skip ad in %d".
  const std::string& adSkipText() const { return adSkipText_; }
  void setAdSkipText(std::string text) { adSkipText_ = std::move(text); }
  const std::string& adSkipCountdownText() const { return adSkipCountdownText_; }
  void setAdSkipCountdownText(std::string format) { adSkipCountdownText_ = std::move(format); }

  // The look of the loading and countdown texts: at first the system's font at 32 points, white, outlined in black 10
  // wide (in hundredths of the font's size).
  void setAttrs();
  const UIFont& adCountdownFont() const { return adCountdownFont_; }
  void setAdCountdownFont(UIFont font) { adCountdownFont_ = std::move(font); }
  const UIColor& adCountdownTextColor() const { return adCountdownTextColor_; }
  void setAdCountdownTextColor(const UIColor& color) { adCountdownTextColor_ = color; }
  const UIColor& adCountdownStrokeColor() const { return adCountdownStrokeColor_; }
  void setAdCountdownStrokeColor(const UIColor& color) { adCountdownStrokeColor_ = color; }
  double adCountdownStrokeWidth() const { return adCountdownStrokeWidth_; }
  void setAdCountdownStrokeWidth(double width) { adCountdownStrokeWidth_ = width; }

 private:
  void mergeMidRolls(Breaks breaks);

  std::shared_ptr<Breaks> preRolls_ = std::make_shared<Breaks>();
  std::shared_ptr<std::vector<Breaks>> midRolls_ = std::make_shared<std::vector<Breaks>>();
  std::shared_ptr<Breaks> postRolls_ = std::make_shared<Breaks>();
  std::shared_ptr<std::vector<std::uint64_t>> midRollOffsets_ = std::make_shared<std::vector<std::uint64_t>>();
  std::shared_ptr<std::vector<std::shared_ptr<const VMAPBreak>>> shares_ =
      std::make_shared<std::vector<std::shared_ptr<const VMAPBreak>>>();
  YMRTagProfile tagProfile_ = YMRTagProfileExact;
  YMRMissedBreaks missedBreaks_ = YMRMissedBreaksAll;
  bool allowsSkipping_ = true;
  bool showsBreakMarks_ = true;
  std::string adLoadingText_;
  std::string adCountdownText_;
  std::string adpodCountdownText_;
  std::string adSkipText_ = "Skip ad";
  std::string adSkipCountdownText_ = "Skip ad in %d";
  UIFont adCountdownFont_;
  UIColor adCountdownTextColor_;
  UIColor adCountdownStrokeColor_;
  double adCountdownStrokeWidth_ = 0;
};
