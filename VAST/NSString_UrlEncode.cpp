#include "VAST/NSString_UrlEncode.h"

#include "platform/foundation/NSString.h"

std::string urlencode(std::string_view text) {
  const std::string encoded = stringByAddingPercentEncoding(text.substr(0, text.find('\0')));
  return stringByReplacingOccurrencesOfString(encoded, "%20", "+");
}
