#pragma once

#include <optional>
#include <string_view>

// Seconds as options take them: decimal digits, perhaps with a full stop among them, and nothing else; no sign, no
// exponent, no space. nil for other text and for a number that is out of range.
std::optional<double> plainSeconds(std::string_view text);
