#pragma once

#include <array>
#include <cstdint>
#include <string_view>

// How ad documents are read, which film is taken, and what the trackers are told when. YMRTagRules decides each rule.
enum YMRTagProfile : std::uint32_t {
  YMRTagProfileExact = 0,  // strictly: what is not plain is no ad
  YMRTagProfileBroad = 1,  // every linear ad that can be shown, told as the standard's later versions want it
};

// By profile.
inline constexpr std::array<std::string_view, 2> YMRTagProfileNames{"exact", "broad"};
