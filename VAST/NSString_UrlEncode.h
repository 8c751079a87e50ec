#pragma once

#include <string>
#include <string_view>

#include "platform/Export.h"

// Form-encodes UTF-8 text for use inside a URL: A-Z a-z 0-9 - . _ ~ stay, a space becomes "+", every other byte "%XX"
// in upper case, "/" too. Text counts up to its first zero byte. Any thread.
YMR_API std::string urlencode(std::string_view text);
