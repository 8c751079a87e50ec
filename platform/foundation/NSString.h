#pragma once

#include <cstdint>
#include <string_view>

#include "platform/Export.h"

// What the platform's string reads from its own text: as much of its beginning, after white space, as makes sense.

// A decimal number with an optional sign, held at the limits of 32 bits; 0 when there is none.
YMR_API std::int32_t intValue(std::string_view text);
// True when, after an optional sign and zeros, the next character is one of "Y", "y", "T", "t" or a digit from 1 to 9.
YMR_API bool boolValue(std::string_view text);
