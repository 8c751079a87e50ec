#pragma once

#include <string_view>
#include <vector>

#include "platform/Export.h"
#include "subtitles/core/ASBSubtitle.h"

// Reads SRT. Any thread; linear time. Nothing is ever an error: what cannot be made out counts as 0 or as empty.

// The cues of UTF-8 content, in its order.
//
// A cue is a number, a start time, "-->", a stop time with the rest of its line, and lines of text down to the first
// empty one; line ends are "\n" or "\r\n". White space and empty lines before each of the first four do not matter, and
// neither do empty lines between the times and the text. Text lines lose spaces and tabs at both ends. In a file whose
// lines end with a bare "\r" only the first cue is found. Content that ends with more than one line end gives one more
// cue without text.
YMR_API std::vector<ASBSubtitle> subtitlesFromSRT(std::string_view content);

// Seconds of a time stamp, hours:minutes:seconds,milliseconds. All four are whole numbers of any size, with or without
// a sign, and every mark between them may be missing; a field that is no number is 0. "0:0:1,5" is 1.005: five
// milliseconds. "0:0:1.500" is 1: only a comma leads to milliseconds.
YMR_API double timeFromString(std::string_view stamp);
