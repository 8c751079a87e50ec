#pragma once

#include <optional>
#include <ostream>
#include <string>

#include "apps/ymrsrt/Options.h"
#include "subtitles/core/ASBSubtitleNotes.h"

// For scripts: one JSON object, a cue a line. With --at also what is shown then; see the manual page.
void printJSON(const Options& options, const ASBSubtitleText& text, const ASBSubtitleNotes& notes,
               const std::optional<std::string>& shown, std::ostream& out);
