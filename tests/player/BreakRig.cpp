#include "tests/player/BreakRig.h"

#include <gmock/gmock.h>

#include <algorithm>

#include "ads/core/SKVASTMediaFilePicker.h"

BreakRig::BreakRig() {
  SKVASTMediaFilePicker::setProbeHost("127.0.0.1");
  media.otherwise().duration = 8;
  media.script(PlayerRig::film).duration = 20;
}

BreakRig::~BreakRig() {
  SKVASTMediaFilePicker::setProbeHost("127.0.0.1");
}

ScriptedURLLoader::Answer BreakRig::pod(const Lines& names, const std::string& type) {
  std::vector<Ad> ads;
  for (const auto& name : names) {
    ads.push_back({name, type, names.size() > 1 ? std::to_string(ads.size() + 1) : ""});
  }
  return {.body = adDocument(ads)};
}

void BreakRig::preRoll(const std::string& name, ScriptedURLLoader::Answer answer) {
  net.loader->answer(tag(name), std::move(answer));
  schedule->addAdBreak(YMRAd::initPreRollWithVastUrl(NSURL::URLWithString(tag(name))));
}

void BreakRig::midRoll(const std::string& name, std::uint64_t offset, ScriptedURLLoader::Answer answer) {
  net.loader->answer(tag(name), std::move(answer));
  schedule->addAdBreak(YMRAd::initMidRollWithVastUrl(NSURL::URLWithString(tag(name)), offset));
}

void BreakRig::postRoll(const std::string& name, ScriptedURLLoader::Answer answer) {
  net.loader->answer(tag(name), std::move(answer));
  schedule->addAdBreak(YMRAd::initPostRollWithVastUrl(NSURL::URLWithString(tag(name))));
}

void BreakRig::begin() {
  player->setAdSchedule(schedule);
  player->playWithMediaItem(item(), 0);
}

bool BreakRig::playToEnd(RunLoop::Duration bound) {
  begin();
  return loop.advanceUntil([this] { return host.count("videoDidPlayFinished") > 0; }, bound);
}

void BreakRig::runUntilHeard(const std::string& line, RunLoop::Duration bound) {
  ASSERT_TRUE(loop.advanceUntil(
      [&] { return std::find(host.heard.begin(), host.heard.end(), line) != host.heard.end(); }, bound))
      << "never heard: " << line;
}

Lines BreakRig::tracked() const {
  constexpr std::string_view trackers = "http://track.example/";
  Lines lines;
  for (const auto& url : net.loader->sentURLs()) {
    if (url.rfind(trackers, 0) == 0) lines.push_back(url.substr(trackers.size()));
  }
  return lines;
}

Lines BreakRig::tracked(const std::string& ad) const {
  Lines lines;
  for (const auto& line : tracked()) {
    if (line.rfind(ad + "/", 0) == 0) lines.push_back(line.substr(ad.size() + 1));
  }
  return lines;
}

const Lines& BreakRig::wholeAd() {
  static const Lines events{"impression", "start",         "creativeView", "firstQuartile",
                            "midpoint",   "thirdQuartile", "complete"};
  return events;
}

bool BreakRig::isAdGone() {
  return !hub().adPlayer() && !hub().isPlayingAd() && !hub().adContainerView()->superview() &&
         !hub().adContainerView()->loadingIndicator()->isAnimating();
}
