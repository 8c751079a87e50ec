#pragma once

#include <string>
#include <string_view>

#include "subtitles/core/ASBSubtitleNote.h"
#include "subtitles/core/ASBSubtitleSource.h"

// What is odd about one cue taken by itself, and what to do about it; added to `notes`.
void noteNumber(const ASBSubtitleSource& source, ASBNoteList& notes);
void noteTimes(const ASBSubtitleSource& source, ASBNoteList& notes);
void noteText(const ASBSubtitleSource& source, ASBNoteList& notes);

// Whether a cue is nothing but the empty lines at the end of a file.
bool isTrail(const ASBSubtitleSource& source);

// A part of a file in a note: in quotes, on one line, cut when it is long.
std::string quoted(std::string_view text);
