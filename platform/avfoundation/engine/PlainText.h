#pragma once

#include <string>
#include <string_view>

// The plain text of marked-up subtitles. Everything here takes untrusted bytes, runs in linear time, and never looks at
// what a tag says. What is not UTF-8 gives replacement characters. Any thread.

// Pango markup or the HTML of text subtitles: tags dropped, the five entities and numbered ones resolved.
std::string plainTextFromMarkup(std::string_view markup);
// One event of an ASS or SSA script as Matroska stores it (nine fields, then the text).
std::string plainTextFromScript(std::string_view event);
// Plain text with line ends made line feeds, control characters dropped, and blank lines at both ends removed; no
// longer than `maximumCaptionLength` bytes.
std::string tidyPlainText(std::string_view text);

inline constexpr std::size_t maximumCaptionLength = 4096;
