#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "VAST/YMRTagProfile.h"
#include "platform/foundation/NSURL.h"

// What the command line asks for, checked: values are in range and addresses parse.
struct Options {
  struct Key {
    double seconds;
    std::string name;  // one of keyNames()
  };
  struct Snapshot {
    double seconds;
    std::string file;
  };
  struct Size {
    int width;
    int height;
  };
  struct MidRoll {
    std::uint64_t seconds;
    NSURL tag;
  };

  std::optional<NSURL> media;     // nil exactly with an ad for the stand-alone screen
  std::optional<NSURL> adScreen;  // its tag
  std::string title;
  std::string description;
  std::optional<NSURL> artwork;
  std::int64_t start = 0;        // whole seconds, may be negative
  std::vector<NSURL> subtitles;  // the first is shown
  std::string caption;           // language tag of the media's track to select; empty for none
  std::vector<NSURL> preRolls;
  std::vector<MidRoll> midRolls;  // by time; those of one time as they were given
  std::vector<NSURL> postRolls;
  std::optional<NSURL> vmap;  // of a schedule document, in place of the three lists
  YMRTagProfile profile = YMRTagProfileExact;
  int missedBreaks = 0;  // YMRMissedBreaks' numbers
  bool marksBreaks = true;
  bool allowsSkipping = true;
  std::string loadingText = "Ad · loading";
  std::string countdownText = "Ad · %d s";  // formats, as YMRAdSchedule takes them
  std::string podCountdownText = "Ad %2$d of %3$d · %1$d s";
  std::string reachabilityHost;  // empty for the framework's own
  bool headless = false;
  std::optional<Size> size;
  bool isEngineInHost = false;  // or in a process of its own
  bool events = false;
  std::vector<Snapshot> snapshots;
  std::vector<Key> keys;
  int logLevel = 0;  // SKLogger's numbers
};

// The keys of the remote, as --key names them, and "subtitle", which is the program's own.
const std::vector<std::string>& keyNames();

// Parses the command line. Without a value the program is to end with `exitStatus`: help or version was printed (0), or
// what is wrong with the command line (2).
std::optional<Options> parseOptions(int argc, char** argv, int& exitStatus);
