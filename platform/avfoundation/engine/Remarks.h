#pragma once

#include <string>

// A word to whoever runs the host, in its log: a warning of the domain "ymr". The same one is said once in the life of
// the process, and no more than `remarksLimit` different ones are: what plays there may be of strangers. In a media
// process it goes to the host, which says it once for all of them. Any thread.
void remarkOnce(const std::string& text);

inline constexpr std::size_t remarksLimit = 16;
