#pragma once

#include <ostream>
#include <string_view>

#include "subtitles/core/ASBSubtitleNotes.h"

// For people: the file as a whole, then each cue with its times, its text and what is odd about it. What the file holds
// is printed without its control characters.
void printText(std::string_view source, const ASBSubtitleNotes& notes, std::ostream& out);
