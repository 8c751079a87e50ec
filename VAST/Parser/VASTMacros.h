#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "platform/Export.h"

// What macros of an ad's URLs stand for at the moment; nil for what has no value now.
struct VASTMacroValues {
  std::optional<std::string> errorCode{};
  std::optional<int> reason{};                      // why a verification is not run, by the standard's numbers
  std::optional<double> mediaPlayhead{};            // seconds into the programme
  std::optional<double> adPlayhead{};               // seconds into the ad
  std::optional<std::string> assetURI{};            // of the film
  std::optional<std::pair<int, int>> playerSize{};  // width and height in points
  std::optional<int> breakPosition{};               // before the programme 1, in it 2, after it 3, on its own 4
  std::optional<std::string> podSequence{};
  std::optional<int> adCount{};  // of the break
};

// `url` with each macro of the standard's, "[NAME]" or "%5BNAME%5D", replaced by its value: percent-encoded, so that no
// value becomes more than one. One without a value becomes -1; what is known of the viewer's machine and not told to ad
// servers -2. All else stays as it is, and what came in for a macro is not looked at again. Linear. Any thread.
YMR_API std::string expandVASTMacros(std::string_view url, const VASTMacroValues& values);
// Whether there may be one in it.
YMR_API bool mayHoldVASTMacros(std::string_view url);
