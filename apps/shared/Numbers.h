#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <utility>

// Numbers as options take them: decimal digits and what is named here, nothing else: no space, no exponent, no base
// but ten. nil for other text and for a number that is out of range.

// Seconds, perhaps with a full stop among the digits; no sign.
std::optional<double> plainSeconds(std::string_view text);
// Perhaps with a minus sign.
std::optional<std::int64_t> plainInteger(std::string_view text);
// "WxH" with sides from `smallest` to `largest`.
std::optional<std::pair<int, int>> plainSize(std::string_view text, int smallest, int largest);
