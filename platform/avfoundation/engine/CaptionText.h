#pragma once

#include <string>
#include <string_view>

// The texts of legible tracks, made ready to be handed on. Everything here takes untrusted bytes and runs in linear
// time. Line ends become line feeds, other control characters are dropped, so are blank lines at both ends, and what is
// beyond `captionBytesLimit` bytes. What is not UTF-8 gives replacement characters. Any thread.

// Plain text.
std::string tidyCaption(std::string_view text);
// Marked-up text, whose markup stays: reading it is for who draws it.
std::string captionFromMarkup(std::string_view markup);
// One event of an ASS or SSA script as Matroska stores it (nine fields, then the text), as plain text.
std::string captionFromScript(std::string_view event);

inline constexpr std::size_t captionBytesLimit = 4096;
