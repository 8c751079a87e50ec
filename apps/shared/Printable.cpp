#include "apps/shared/Printable.h"

namespace {

// The length of the control character that `text` begins with; 0 when it begins with none.
std::size_t lengthOfControl(std::string_view text) {
  const auto byte = static_cast<unsigned char>(text[0]);
  if (byte < 0x20 || byte == 0x7f) return 1;
  // U+0080 to U+009F, as UTF-8.
  return byte == 0xc2 && text.size() > 1 && static_cast<unsigned char>(text[1]) < 0xa0 ? 2 : 0;
}

}  // namespace

std::string printable(std::string_view text) {
  std::string result;
  while (!text.empty()) {
    const std::size_t control = lengthOfControl(text);
    if (control == 0 && text[0] != ' ') {
      result += text[0];
    } else if (!result.empty() && result.back() != ' ') {
      result += ' ';
    }
    text.remove_prefix(control > 0 ? control : 1);
  }
  if (!result.empty() && result.back() == ' ') result.pop_back();
  return result;
}

std::string printableLines(std::string_view text) {
  std::string result;
  while (!text.empty()) {
    const std::size_t control = lengthOfControl(text);
    result += control == 0 || text[0] == '\n' || text[0] == '\t' ? text[0] : ' ';
    text.remove_prefix(control > 0 ? control : 1);
  }
  return result;
}
