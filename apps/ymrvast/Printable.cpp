#include "apps/ymrvast/Printable.h"

std::string printable(std::string_view text) {
  std::string result;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto byte = static_cast<unsigned char>(text[i]);
    // U+0080 to U+009F, as UTF-8.
    const bool isC1 = byte == 0xc2 && i + 1 < text.size() && static_cast<unsigned char>(text[i + 1]) < 0xa0;
    if (isC1) ++i;
    if (byte > 0x20 && byte != 0x7f && !isC1) {
      result += text[i];
    } else if (!result.empty() && result.back() != ' ') {
      result += ' ';
    }
  }
  if (!result.empty() && result.back() == ' ') result.pop_back();
  return result;
}
