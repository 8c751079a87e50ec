#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "VAST/Parser/VMAPDocument.h"
#include "platform/Export.h"
#include "platform/foundation/NSURL.h"

enum YMRAdRoll : std::int32_t {
  YMRAdRollPre = 0,
  YMRAdRollMid = 1,
  YMRAdRollPost = 2,
};

// One ad break of a programme: when it is due, and where the VAST document with its ads is fetched. Main thread.
class YMRAd {
 public:
  // A URL of nil makes a break whose fetch fails.
  YMR_API static std::shared_ptr<YMRAd> initPreRollWithVastUrl(std::optional<NSURL> vastUrl);
  // `offset` in whole seconds of the programme.
  YMR_API static std::shared_ptr<YMRAd> initMidRollWithVastUrl(std::optional<NSURL> vastUrl, std::uint64_t offset);
  YMR_API static std::shared_ptr<YMRAd> initPostRollWithVastUrl(std::optional<NSURL> vastUrl);

  // A break of a schedule document, due where that says; `offset` is for one in the programme. Its ads are fetched from
  // its tag, or are in its own document.
  YMR_API static std::shared_ptr<YMRAd> initWithListedBreak(std::shared_ptr<const VMAPBreak> listed,
                                                            std::uint64_t offset);

  // "Preroll", "Midroll" or "Postroll"; the last one for any unknown value.
  YMR_API static std::string getNameFromRoll(YMRAdRoll roll);

  YMRAdRoll roll() const { return roll_; }
  const std::optional<NSURL>& vastUrl() const { return vastUrl_; }
  // 0 for pre- and post-rolls.
  std::uint64_t offset() const { return offset_; }

  // What the schedule document says of the break; nil for one that the host listed itself.
  const std::shared_ptr<const VMAPBreak>& listedBreak() const { return listed_; }

  // Whether the break has been started.
  bool isPlayed() const { return isPlayed_; }
  void setIsPlayed(bool isPlayed) { isPlayed_ = isPlayed; }

  // Of the VAST ad that is shown; nil until one is ready to play.
  const std::optional<std::string>& adTitle() const { return adTitle_; }
  void setAdTitle(std::optional<std::string> title) { adTitle_ = std::move(title); }
  const std::optional<std::string>& adDescription() const { return adDescription_; }
  void setAdDescription(std::optional<std::string> description) { adDescription_ = std::move(description); }

  // All fields on one line, for logs.
  YMR_API std::string description() const;
  // The same break without title and description, which belong to the ad that was shown.
  YMR_API std::shared_ptr<YMRAd> copy() const;

 private:
  YMRAd(YMRAdRoll roll, std::optional<NSURL> vastUrl, std::uint64_t offset);

  bool isPlayed_ = false;
  YMRAdRoll roll_;
  std::optional<NSURL> vastUrl_;
  std::uint64_t offset_;
  std::shared_ptr<const VMAPBreak> listed_;
  std::optional<std::string> adTitle_;
  std::optional<std::string> adDescription_;
};
