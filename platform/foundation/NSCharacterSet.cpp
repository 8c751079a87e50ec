#include "platform/foundation/NSCharacterSet.h"

#include <algorithm>
#include <iterator>

#include "platform/foundation/UTF8.h"

namespace {

// Most text to trim is ASCII at both ends, and a document has thousands.
bool isASCII(char byte) {
  return static_cast<unsigned char>(byte) < 0x80;
}

UTF8Character ascii(char byte) {
  return {static_cast<char32_t>(byte), 1, true};
}

}  // namespace

const NSCharacterSet& NSCharacterSet::whitespaceAndNewlineCharacterSet() {
  static const NSCharacterSet set({{0x09, 0x0D},
                                   {0x20, 0x20},
                                   {0x85, 0x85},
                                   {0xA0, 0xA0},
                                   {0x1680, 0x1680},
                                   {0x2000, 0x200A},
                                   {0x2028, 0x2029},
                                   {0x202F, 0x202F},
                                   {0x205F, 0x205F},
                                   {0x3000, 0x3000}});
  return set;
}

const NSCharacterSet& NSCharacterSet::newlineCharacterSet() {
  static const NSCharacterSet set({{0x0A, 0x0D}, {0x85, 0x85}, {0x2028, 0x2029}});
  return set;
}

NSCharacterSet NSCharacterSet::characterSetWithCharactersInString(std::string_view characters) {
  std::vector<Range> ranges;
  while (!characters.empty()) {
    const UTF8Character character = firstUTF8Character(characters);
    ranges.emplace_back(character.value, character.value);
    characters.remove_prefix(character.length);
  }
  std::sort(ranges.begin(), ranges.end());
  return NSCharacterSet(std::move(ranges));
}

NSCharacterSet::NSCharacterSet(std::vector<Range> ranges) : ranges_(std::move(ranges)) {
  for (std::size_t character = 0; character < ascii_.size(); ++character) {
    ascii_[character] = rangesContain(static_cast<char32_t>(character));
  }
}

bool NSCharacterSet::rangesContain(char32_t character) const {
  const auto after = std::upper_bound(ranges_.begin(), ranges_.end(), character,
                                      [](char32_t value, const Range& range) { return value < range.first; });
  return after != ranges_.begin() && character <= std::prev(after)->second;
}

std::size_t lengthOfCharactersInSet(std::string_view text, const NSCharacterSet& set, bool inverted) {
  std::size_t length = 0;
  while (length < text.size()) {
    const UTF8Character next = isASCII(text[length]) ? ascii(text[length]) : firstUTF8Character(text.substr(length));
    if (set.characterIsMember(next.value) == inverted) break;
    length += next.length;
  }
  return length;
}

std::string_view stringByTrimmingCharactersInSet(std::string_view text, const NSCharacterSet& set) {
  text.remove_prefix(lengthOfCharactersInSet(text, set));
  while (!text.empty()) {
    const UTF8Character last = isASCII(text.back()) ? ascii(text.back()) : lastUTF8Character(text);
    if (!set.characterIsMember(last.value)) break;
    text.remove_suffix(last.length);
  }
  return text;
}
