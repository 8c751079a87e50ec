#pragma once

#include <clocale>
#include <string>
#include <string_view>

// The language and region that texts are meant for. A plain value.
//
// Kept from the platform: the current locale and its identifier. Left out: everything that formats.
struct NSLocale {
  std::string localeIdentifier;  // "en_GB"; empty for no language in particular

  // The one the process runs under, as the host set it with setlocale. Main thread.
  static NSLocale currentLocale() {
    const char* name = std::setlocale(LC_MESSAGES, nullptr);
    const std::string_view text = name ? name : "";
    const std::string_view identifier = text.substr(0, text.find_first_of(".@"));
    if (identifier == "C" || identifier == "POSIX") return {};
    return {std::string(identifier)};
  }
};
