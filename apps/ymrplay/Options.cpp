#include "apps/ymrplay/Options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <utility>

#include "VAST/SKLogger.h"
#include "apps/shared/Numbers.h"
#include "apps/shared/ProfileOption.h"

namespace {

constexpr int wrongUsage = 2;

// In the order of YMRMissedBreaks.
const std::vector<std::string> missedBreaksNames{"all", "last", "none"};

const char* const description =
    "Plays a video file or stream full screen, as a host of the player framework would.\n"
    "MEDIA is a file or a URL (file, http, https; MP4, MKV, WebM, TS, HLS; DASH from web servers).";
const char* const footer =
    "Remote: arrows, Enter (select), Space (play/pause), Escape or Backspace (menu, leaves),\n"
    "S (the next subtitle file, after the last one none, then the first).\n"
    "SECONDS count from the moment that playback is asked for. Exit status: 0 dismissed,\n"
    "1 the programme failed, or events or a snapshot could not be written, 2 wrong usage or no display.\n\n"
    "Examples:\n"
    "  ymrplay --title \"Harbour\" harbour.mp4\n"
    "  ymrplay --subtitle english.srt --subtitle deutsch.srt film.mkv\n"
    "  ymrplay --headless --events --start 5 clip.mp4\n"
    "  ymrplay --preroll https://ads.example/pre --midroll 600=https://ads.example/mid film.mp4\n"
    "  ymrplay --profile broad --vmap https://ads.example/schedule film.mp4\n"
    "  ymrplay --headless --key 1=down --snapshot 2=panel.png clip.mkv\n"
    "  ymrplay --ad-screen https://ads.example/tag";

[[noreturn]] void fail(const std::string& option, const std::string& problem) {
  throw CLI::ValidationError(option, problem);
}

// The two sides of "SECONDS=VALUE".
std::pair<double, std::string> timed(const std::string& option, const std::string& text) {
  const auto equals = text.find('=');
  const std::string left = text.substr(0, equals);
  const auto seconds = plainSeconds(left);
  if (equals == std::string::npos || !seconds) {
    fail(option, "'" + text + "' is not SECONDS=VALUE with SECONDS of at least 0");
  }
  if (equals + 1 == text.size()) fail(option, "'" + text + "' has nothing after the equals sign");
  return {*seconds, text.substr(equals + 1)};
}

NSURL address(const std::string& option, const std::string& text) {
  const auto url = NSURL::URLFromUserInput(text);
  if (!url) fail(option, "'" + text + "' is not an address");
  if (!url->isFileURL() && !url->isHTTP()) fail(option, "'" + text + "': only files, http and https can be opened");
  return *url;
}

NSURL adTag(const std::string& option, const std::string& text) {
  const auto url = NSURL::URLWithString(text);
  if (!url || text.empty()) fail(option, "'" + text + "' is not a URL");
  if (!url->isHTTP()) fail(option, "'" + text + "': ad tags are fetched over http and https only");
  return *url;
}

Options::MidRoll midRoll(const std::string& text) {
  auto [seconds, tag] = timed("--midroll", text);
  if (seconds != std::floor(seconds)) fail("--midroll", "'" + text + "': mid-rolls are due at whole seconds");
  if (seconds > std::numeric_limits<std::int32_t>::max()) {
    fail("--midroll", "'" + text + "': no programme is that long");
  }
  return {static_cast<std::uint64_t>(seconds), adTag("--midroll", tag)};
}

Options::Size size(const std::string& text) {
  const auto sides = plainSize(text, 64, 8192);
  if (!sides) fail("--size", "'" + text + "' is not WxH with sides from 64 to 8192");
  return {sides->first, sides->second};
}

std::int64_t startPosition(const std::string& text) {
  constexpr std::int64_t most = std::numeric_limits<std::int32_t>::max();
  const auto seconds = plainInteger(text);
  if (!seconds || *seconds < -most || *seconds > most) fail("--start", "'" + text + "' is not whole seconds");
  return *seconds;
}

bool isSet(const char* name) {
  const char* value = std::getenv(name);
  return value && *value;
}

}  // namespace

const std::vector<std::string>& keyNames() {
  static const std::vector<std::string> names{"up", "down", "left", "right", "select", "playpause", "menu", "subtitle"};
  return names;
}

std::optional<Options> parseOptions(int argc, char** argv, int& exitStatus) {
  CLI::App app(description, "ymrplay");
  app.footer(footer);
  app.set_version_flag("--version", std::string("ymrplay ") + YMR_VERSION);

  Options options;
  std::string media, artwork, start = "0", windowSize, engine = "process", missedBreaks = "all", logLevel = "none";
  bool hidesMarks = false, forbidsSkipping = false;
  std::optional<std::string> adScreen, vmap;
  std::vector<std::string> keys, snapshots, subtitles, preRolls, midRolls, postRolls;
  auto* const mediaOption = app.add_option("MEDIA", media, "File or URL to play");
  app.add_option(
         "--ad-screen", adScreen,
         "In place of MEDIA: ad tag of one ad, on a screen of its own; what is for a programme counts for nothing then")
      ->type_name("URL")
      ->excludes(mediaOption);
  app.add_option("--title", options.title, "Title in the information panel")->type_name("T");
  app.add_option("--description", options.description, "Description in the information panel")->type_name("T");
  app.add_option("--artwork", artwork, "Picture in the information panel")->type_name("FILE|URL");
  app.add_option("--start", start, "Start position in whole seconds, may be negative")->type_name("SECONDS");
  app.add_option("--subtitle", subtitles, "Subtitle file (SRT); the first is shown; may be repeated")
      ->type_name("FILE|URL")
      ->allow_extra_args(false);
  app.add_option("--caption", options.caption, "Select the media's own caption track of that language tag")
      ->check([](const std::string& tag) { return std::string(tag.empty() ? "needs a language tag" : ""); })
      ->type_name("TAG");
  auto* const preRollOption =
      app.add_option("--preroll", preRolls, "Ad tag of a break before the programme; may be repeated")
          ->type_name("URL")
          ->allow_extra_args(false);
  auto* const midRollOption =
      app.add_option("--midroll", midRolls, "Ad tag of a break at that second of the programme; may be repeated")
          ->type_name("SECONDS=URL")
          ->allow_extra_args(false);
  auto* const postRollOption =
      app.add_option("--postroll", postRolls, "Ad tag of a break after the programme; may be repeated")
          ->type_name("URL")
          ->allow_extra_args(false);
  addProfileOption(app, options.profile);
  app.add_option("--vmap", vmap, "Schedule document (VMAP) that lists the breaks, in place of the three above")
      ->type_name("URL")
      ->excludes(preRollOption)
      ->excludes(midRollOption)
      ->excludes(postRollOption);
  app.add_option("--missed-breaks", missedBreaks,
                 "Mid-rolls passed over by a seek or the start position that are played: all, last, none")
      ->type_name("WHICH")
      ->check(CLI::IsMember(missedBreaksNames))
      ->capture_default_str();
  app.add_flag("--no-break-marks", hidesMarks, "Do not mark the mid-rolls to come on the transport bar");
  app.add_flag("--no-skip", forbidsSkipping, "Do not let the viewer skip ads, whatever they offer");
  app.add_option("--loading-text", options.loadingText, "Text while an ad loads")
      ->type_name("T")
      ->capture_default_str();
  app.add_option("--countdown-text", options.countdownText, "Countdown of a single ad; %d is the seconds left")
      ->type_name("T")
      ->capture_default_str();
  app.add_option("--pod-countdown-text", options.podCountdownText,
                 "Countdown in a pod of ads; three numbers: seconds left, the ad's number, how many")
      ->type_name("T")
      ->capture_default_str();
  app.add_option("--reachability-host", options.reachabilityHost,
                 "Host whose route tells whether there is a network for ads")
      ->check([](const std::string& host) { return std::string(host.empty() ? "needs a name" : ""); })
      ->type_name("HOST");
  app.add_flag("--headless", options.headless,
               "Play in memory and in real time, without display and sound; default where there is no display");
  app.add_option("--size", windowSize, "Window size; without it full screen (headless: 1920x1080)")->type_name("WxH");
  app.add_option("--engine", engine,
                 "Where media are decoded: in a process of their own, or in this one; for looking for faults")
      ->type_name("process|host")
      ->check(CLI::IsMember(std::vector<std::string>{"process", "host"}))
      ->capture_default_str();
  app.add_flag("--events", options.events, "Print every callback as a line of JSON on standard output");
  app.add_option("--snapshot", snapshots, "Write the screen to a PNG at that time; may be repeated")
      ->type_name("SECONDS=FILE.png")
      ->allow_extra_args(false);
  app.add_option("--key", keys,
                 "Press a key at that time: up, down, left, right, select, playpause, menu, subtitle; may be repeated")
      ->type_name("SECONDS=NAME")
      ->allow_extra_args(false);
  app.add_option("--log", logLevel, "Log to standard error: none, error, warning, info, debug")
      ->type_name("LEVEL")
      ->check(CLI::IsMember(std::vector<std::string>(SKLogger::levelNames().begin(), SKLogger::levelNames().end())))
      ->capture_default_str();

  try {
    app.parse(argc, argv);
    if (adScreen) options.adScreen = adTag("--ad-screen", *adScreen);
    if (!options.adScreen && mediaOption->count() == 0) throw CLI::RequiredError("MEDIA");
    if (!options.adScreen) options.media = address("MEDIA", media);
    if (!artwork.empty()) options.artwork = address("--artwork", artwork);
    options.start = startPosition(start);
    if (!windowSize.empty()) options.size = size(windowSize);
    for (const auto& text : subtitles) options.subtitles.push_back(address("--subtitle", text));
    if (vmap) options.vmap = adTag("--vmap", *vmap);
    for (const auto& text : preRolls) options.preRolls.push_back(adTag("--preroll", text));
    for (const auto& text : midRolls) options.midRolls.push_back(midRoll(text));
    for (const auto& text : postRolls) options.postRolls.push_back(adTag("--postroll", text));
    for (const auto& text : snapshots) {
      auto [seconds, file] = timed("--snapshot", text);
      options.snapshots.push_back({seconds, std::move(file)});
    }
    for (const auto& text : keys) {
      auto [seconds, name] = timed("--key", text);
      if (std::find(keyNames().begin(), keyNames().end(), name) == keyNames().end()) {
        fail("--key", "there is no key '" + name + "'");
      }
      options.keys.push_back({seconds, std::move(name)});
    }
  } catch (const CLI::ParseError& error) {
    exitStatus = app.exit(error) == 0 ? 0 : wrongUsage;
    return std::nullopt;
  }
  std::stable_sort(options.midRolls.begin(), options.midRolls.end(),
                   [](const auto& left, const auto& right) { return left.seconds < right.seconds; });
  options.isEngineInHost = engine == "host";
  options.missedBreaks =
      static_cast<int>(std::ranges::find(missedBreaksNames, missedBreaks) - missedBreaksNames.begin());
  options.marksBreaks = !hidesMarks;
  options.allowsSkipping = !forbidsSkipping;
  options.logLevel = SKLogger::levelNamed(logLevel).value();
  if (!isSet("DISPLAY") && !isSet("WAYLAND_DISPLAY") && !isSet("QT_QPA_PLATFORM")) options.headless = true;
  return options;
}
