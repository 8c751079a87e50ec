#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

#include "VAST/YMRTagProfile.h"

// Adds --profile, which sets `profile`.
inline void addProfileOption(CLI::App& app, YMRTagProfile& profile) {
  const std::vector<std::string> names(YMRTagProfileNames.begin(), YMRTagProfileNames.end());
  app.add_option_function<std::string>(
         "--profile",
         [&profile](const std::string& name) {
           profile = name == YMRTagProfileNames[YMRTagProfileBroad] ? YMRTagProfileBroad : YMRTagProfileExact;
         },
         "How ad documents are read: exact (the default), or broad, which shows every linear ad that it can")
      ->type_name("PROFILE")
      ->check(CLI::IsMember(names).description(""));
}
