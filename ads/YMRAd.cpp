#include "ads/YMRAd.h"

#include <utility>

YMRAd::YMRAd(YMRAdRoll roll, std::optional<NSURL> vastUrl, std::uint64_t offset)
    : roll_(roll), vastUrl_(std::move(vastUrl)), offset_(offset) {}

std::shared_ptr<YMRAd> YMRAd::initPreRollWithVastUrl(std::optional<NSURL> vastUrl) {
  return std::shared_ptr<YMRAd>(new YMRAd(YMRAdRollPre, std::move(vastUrl), 0));
}

std::shared_ptr<YMRAd> YMRAd::initMidRollWithVastUrl(std::optional<NSURL> vastUrl, std::uint64_t offset) {
  return std::shared_ptr<YMRAd>(new YMRAd(YMRAdRollMid, std::move(vastUrl), offset));
}

std::shared_ptr<YMRAd> YMRAd::initPostRollWithVastUrl(std::optional<NSURL> vastUrl) {
  return std::shared_ptr<YMRAd>(new YMRAd(YMRAdRollPost, std::move(vastUrl), 0));
}

std::shared_ptr<YMRAd> YMRAd::initWithListedBreak(std::shared_ptr<const VMAPBreak> listed, std::uint64_t offset) {
  const auto roll = listed->place == VMAPBreak::Place::beforeProgramme ? YMRAdRollPre
                    : listed->place == VMAPBreak::Place::inProgramme   ? YMRAdRollMid
                                                                       : YMRAdRollPost;
  auto made = std::shared_ptr<YMRAd>(new YMRAd(roll, listed->tag, roll == YMRAdRollMid ? offset : 0));
  made->listed_ = std::move(listed);
  return made;
}

std::string YMRAd::getNameFromRoll(YMRAdRoll roll) {
  switch (roll) {
    case YMRAdRollPre:
      return "Preroll";
    case YMRAdRollMid:
      return "Midroll";
    case YMRAdRollPost:
      break;
  }
  return "Postroll";
}

std::string YMRAd::description() const {
  return "<YMRAd: vastUrl=" + (vastUrl_ ? vastUrl_->absoluteString() : "(null)") +
         ", offset=" + std::to_string(offset_) + ", isPlayed=" + (isPlayed_ ? "1" : "0") +
         ", roll=" + getNameFromRoll(roll_) + ">";
}

std::shared_ptr<YMRAd> YMRAd::copy() const {
  auto copy = std::shared_ptr<YMRAd>(new YMRAd(roll_, vastUrl_, offset_));
  copy->isPlayed_ = isPlayed_;
  copy->listed_ = listed_;
  return copy;
}
