#include "platform/foundation/UTF8.h"

#include <cstdint>
#include <cstring>

namespace {

constexpr UTF8Character invalid{0xFFFD, 1, false};

bool isContinuation(char byte) {
  return (static_cast<std::uint8_t>(byte) & 0xC0U) == 0x80U;
}

std::size_t asciiPrefix(std::string_view text) {
  std::size_t length = 0;
  for (std::uint64_t word = 0; length + sizeof word <= text.size(); length += sizeof word) {
    std::memcpy(&word, text.data() + length, sizeof word);
    if ((word & 0x8080808080808080U) != 0) break;
  }
  while (length < text.size() && static_cast<std::uint8_t>(text[length]) < 0x80) ++length;
  return length;
}

}  // namespace

UTF8Character firstUTF8Character(std::string_view text) {
  const auto lead = static_cast<std::uint8_t>(text.front());
  if (lead < 0x80) return {lead, 1, true};
  const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
  if (lead < 0xC2 || lead > 0xF4 || text.size() < length) return invalid;
  char32_t value = lead & (0x7FU >> length);
  for (std::size_t i = 1; i < length; ++i) {
    if (!isContinuation(text[i])) return invalid;
    value = value << 6U | (static_cast<std::uint8_t>(text[i]) & 0x3FU);
  }
  const char32_t smallest = length == 4 ? 0x10000 : length == 3 ? 0x800 : 0x80;
  const bool isSurrogate = value >= 0xD800 && value <= 0xDFFF;
  if (value < smallest || value > 0x10FFFF || isSurrogate) return invalid;
  return {value, length, true};
}

UTF8Character lastUTF8Character(std::string_view text) {
  std::size_t start = text.size() - 1;
  while (start > 0 && text.size() - start < 4 && isContinuation(text[start])) --start;
  const UTF8Character character = firstUTF8Character(text.substr(start));
  return start + character.length == text.size() ? character : invalid;
}

bool isUTF8(std::string_view text) {
  while (true) {
    text.remove_prefix(asciiPrefix(text));
    if (text.empty()) return true;
    const UTF8Character character = firstUTF8Character(text);
    if (!character.isValid) return false;
    text.remove_prefix(character.length);
  }
}
