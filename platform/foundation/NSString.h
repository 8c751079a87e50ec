#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>

#include "platform/Export.h"

// What the platform's string reads from its own text: as much of its beginning, after white space, as makes sense.

// A decimal number with an optional sign, held at the limits of 32 bits; 0 when there is none.
YMR_API std::int32_t intValue(std::string_view text);
// True when, after an optional sign and zeros, the next character is one of "Y", "y", "T", "t" or a digit from 1 to 9.
YMR_API bool boolValue(std::string_view text);

// A text with whole numbers in it, by the rules of printf but safe with any format: nothing but `arguments` is read,
// and the work is linear.
//
// "%%" is a percent sign. "%d", "%i" and "%u" all write the next argument in decimal, with its sign; a length (hh, h,
// l, ll, q, j, z, t) is taken and has no effect. "%2$d" writes the second one, and does not count as taking the next.
// Flags "-", "+", " ", "0", a width and a precision of up to 64 have their usual meaning. Everything else ("%s", "%@",
// "%n", "%f", "%*d", a percent sign at the end, a number with no argument for it) stays as it is written and takes no
// argument. The rest of the format is copied byte by byte.
YMR_API std::string stringWithFormat(std::string_view format, std::initializer_list<std::int64_t> arguments);
