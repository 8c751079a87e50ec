#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "ads/YMRAdSchedule.h"
#include "tests/VAST/Parser/VASTTexts.h"
#include "tests/player/AdDocument.h"
#include "tests/player/PlayerRig.h"

// A player with ad breaks, on virtual time: ad tags that the scripted loader answers, ads that scripted media play for
// 8 s each, a programme of 20 s.
class BreakRig : public PlayerRig {
 public:
  using Ad = AdElement;

  BreakRig();
  ~BreakRig();

  static std::string film(const std::string& ad) { return "http://media.example/" + ad + ".mp4"; }
  static std::string tag(const std::string& name) { return "http://ads.example/" + name; }
  static ScriptedURLLoader::Answer document(const std::vector<Ad>& ads) { return {.body = adDocument(ads)}; }
  static ScriptedURLLoader::Answer wrapper(const std::string& tag) {
    return {.body = vast::document(vast::wrapper(tag))};
  }
  // Ads of these names as a pod, or as the only one; `type` of the films.
  static ScriptedURLLoader::Answer pod(const Lines& names, const std::string& type = "video/mp4");

  // Breaks with the tag of that name and what it answers.
  void preRoll(const std::string& name, ScriptedURLLoader::Answer answer);
  void midRoll(const std::string& name, std::uint64_t offset, ScriptedURLLoader::Answer answer);
  void postRoll(const std::string& name, ScriptedURLLoader::Answer answer);

  // Plays the film with the schedule until the presentation is over, or `bound` has passed; whether it is over.
  bool playToEnd(RunLoop::Duration bound = 300s);
  // Asks for the film with the schedule, without waiting.
  void begin();
  // Runs until the host has heard `line`; a failure when it never does.
  void runUntilHeard(const std::string& line, RunLoop::Duration bound = 120s);

  // The tracking of one ad in order, "start", "error-402", …, or of all with their names.
  Lines tracked(const std::string& ad) const;
  Lines tracked() const;
  // What a whole ad's is.
  static const Lines& wholeAd();
  // Whether the presentation has let go of its ad: no player, nothing over the screen, the wheel still.
  bool isAdGone();

  std::shared_ptr<YMRAdSchedule> schedule = std::make_shared<YMRAdSchedule>();
};
