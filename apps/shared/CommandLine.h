#pragma once

#include <CLI/CLI.hpp>
#include <functional>

// What the programs have in common around their options.

constexpr int wrongUsage = 2;  // exit status of all of them

// Parses the command line and then calls `check`, which throws CLI::ValidationError for what does not hold. False when
// the program is to end with `exitStatus`: help or version was printed (0), or what is wrong (wrongUsage).
inline bool parsed(CLI::App& app, int argc, char** argv, int& exitStatus, const std::function<void()>& check) {
  try {
    app.parse(argc, argv);
    check();
    return true;
  } catch (const CLI::ParseError& error) {
    exitStatus = app.exit(error) == 0 ? 0 : wrongUsage;
    return false;
  }
}
