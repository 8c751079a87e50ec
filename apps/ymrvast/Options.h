#pragma once

#include <optional>
#include <string>

#include "VAST/YMRTagProfile.h"
#include "platform/foundation/NSURL.h"

// What the command line asks for, checked.
struct Options {
  std::string source;        // as it was typed
  std::optional<NSURL> url;  // the source, when it is fetched
  bool json = false;
  bool validate = false;
  YMRTagProfile profile = YMRTagProfileExact;
  int screenWidth = 1920;
  int screenHeight = 1080;
  std::string reachabilityHost;  // empty: the library's own
  int logLevel = 1;              // SKLogger's numbers

  bool readsStandardInput() const { return source == "-"; }
};

// Parses the command line. Without a value the program is to end with `exitStatus`: help or version was printed (0), or
// what is wrong with the command line (2).
std::optional<Options> parseOptions(int argc, char** argv, int& exitStatus);
