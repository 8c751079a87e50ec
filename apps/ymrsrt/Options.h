#pragma once

#include <optional>
#include <string>

#include "platform/foundation/NSURL.h"

// What the command line asks for, checked.
struct Options {
  std::string source;        // as it was typed
  std::optional<NSURL> url;  // where it is; nil for standard input
  bool json = false;
  std::optional<double> at;  // seconds: what shows at that time is asked for
};

// Parses the command line. Without a value the program is to end with `exitStatus`: help or version was printed (0), or
// what is wrong with the command line (2).
std::optional<Options> parseOptions(int argc, char** argv, int& exitStatus);
