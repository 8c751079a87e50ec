#pragma once

#include <gmock/gmock.h>

#include <algorithm>
#include <string>
#include <vector>

#include "ads/YMRAdSchedule.h"
#include "ads/core/SKVASTMediaFilePicker.h"
#include "tests/VAST/Parser/VASTTexts.h"
#include "tests/player/AdDocument.h"
#include "tests/player/PlayerRig.h"

// A player with ad breaks, on virtual time: ad tags that the scripted loader answers, ads that scripted media play for
// 8 s each, a programme of 20 s.
class BreakRig : public PlayerRig {
 public:
  using Ad = AdElement;
  using Answer = ScriptedURLLoader::Answer;

  BreakRig() {
    SKVASTMediaFilePicker::setProbeHost("127.0.0.1");
    media.otherwise().duration = 8;
    media.script(PlayerRig::film).duration = 20;
  }

  static std::string film(const std::string& ad) { return "http://media.example/" + ad + ".mp4"; }
  static std::string tag(const std::string& name) { return "http://ads.example/" + name; }
  static Answer document(const std::vector<Ad>& ads) { return {.body = adDocument(ads)}; }
  static Answer wrapper(const std::string& tag) { return {.body = vast::document(vast::wrapper(tag))}; }
  // Ads of these names as a pod, or as the only one; `type` of the films.
  static Answer pod(const Lines& names, const std::string& type = "video/mp4") {
    std::vector<Ad> ads;
    for (const auto& name : names) {
      ads.push_back({name, type, names.size() > 1 ? std::to_string(ads.size() + 1) : ""});
    }
    return document(ads);
  }

  // Breaks with the tag of that name and what it answers.
  void preRoll(const std::string& name, Answer answer) {
    schedule->addAdBreak(YMRAd::initPreRollWithVastUrl(answered(name, std::move(answer))));
  }
  void midRoll(const std::string& name, std::uint64_t offset, Answer answer) {
    schedule->addAdBreak(YMRAd::initMidRollWithVastUrl(answered(name, std::move(answer)), offset));
  }
  void postRoll(const std::string& name, Answer answer) {
    schedule->addAdBreak(YMRAd::initPostRollWithVastUrl(answered(name, std::move(answer))));
  }

  // Asks for the film with the schedule, without waiting.
  void begin() {
    player->setAdSchedule(schedule);
    player->playWithMediaItem(item(), 0);
  }
  // Plays the film with the schedule until the presentation is over, or `bound` has passed; whether it is over.
  bool playToEnd(RunLoop::Duration bound = 300s) {
    begin();
    return loop.advanceUntil([this] { return host.count("videoDidPlayFinished") > 0; }, bound);
  }
  // Runs until the host has heard `line`; a failure when it never does.
  void runUntilHeard(const std::string& line) {
    ASSERT_TRUE(loop.advanceUntil([&] { return std::ranges::count(host.heard, line) > 0; }, 120s)) << line;
  }

  // The tracking of one ad in order, "start", "error-402", …, or of all with their names.
  Lines tracked(const std::string& ad = "") const { return trackingAmong(net.loader->sentURLs(), ad); }
  // What a whole ad's is.
  static const Lines& wholeAd() {
    static const Lines events{"impression", "start",         "creativeView", "firstQuartile",
                              "midpoint",   "thirdQuartile", "complete"};
    return events;
  }
  // Whether the presentation has let go of its ad: no player, nothing over the screen, the wheel still.
  bool isAdGone() {
    return !hub().adPlayer() && !hub().isPlayingAd() && !hub().adContainerView()->superview() &&
           !hub().adContainerView()->loadingIndicator()->isAnimating();
  }

  std::shared_ptr<YMRAdSchedule> schedule = std::make_shared<YMRAdSchedule>();

 private:
  std::optional<NSURL> answered(const std::string& name, Answer answer) {
    net.loader->answer(tag(name), std::move(answer));
    return NSURL::URLWithString(tag(name));
  }
};
