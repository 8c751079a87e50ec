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

// A text with whole numbers in it, safe with any format: nothing but `arguments` is read, and the work is linear.
//
// "%d" writes the next argument in decimal, with its sign. "%2$d" writes the second one, and does not count as taking
// the next. "%3d" fills up with spaces to three characters, "%03d" with zeros; a width is 64 at most. "%%" is a percent
// sign. Everything else ("%s", "%@", "%n", "%f", "%ld", "%*d", a percent sign at the end, a number with no argument for
// it) stays as it is written and takes no argument. The rest of the format is copied byte by byte.
YMR_API std::string stringWithFormat(std::string_view format, std::initializer_list<std::int64_t> arguments);

// `text` with each `target`, which is not empty, replaced; from left to right, in one pass.
YMR_API std::string stringByReplacingOccurrencesOfString(std::string_view text, std::string_view target,
                                                         std::string_view replacement);
// A-Z a-z 0-9 - . _ ~ stay, every other byte becomes "%XX" in upper case. Up to 2 GiB.
YMR_API std::string stringByAddingPercentEncoding(std::string_view text);

// What follows is the same in every locale, as the standard library's functions for it are not.

// A number in decimal with a point and up to 80 decimals; "nan", "inf" and "-inf".
YMR_API std::string stringWithDouble(double value, int decimals);
// A capital of ASCII as its small letter; any other byte as it is.
YMR_API char lowercaseASCII(char c);
