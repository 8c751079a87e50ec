#pragma once

#include <cstddef>
#include <string_view>

#include "platform/Export.h"

struct UTF8Character {
  char32_t value;      // U+FFFD for a byte that begins no character
  std::size_t length;  // in bytes; 1 for such a byte
  bool isValid;
};

// The first and the last character of text that is not empty. Overlong forms and surrogates are not valid.
YMR_API UTF8Character firstUTF8Character(std::string_view text);
YMR_API UTF8Character lastUTF8Character(std::string_view text);

YMR_API bool isUTF8(std::string_view text);
