#pragma once

#include <string>
#include <string_view>

// UTF-8 text of others' fit for a terminal: each run of white space and control characters, which could be commands to
// it, is one space, and none at the ends.
std::string printable(std::string_view text);

// The same for text of several lines, whose line feeds, tabs and spaces stay: a control character is a space.
std::string printableLines(std::string_view text);
