#include "platform/foundation/NSCharacterSet.h"

#include <algorithm>
#include <iterator>

#include "platform/foundation/UTF8.h"

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

bool NSCharacterSet::characterIsMember(char32_t character) const {
  const auto after = std::upper_bound(ranges_.begin(), ranges_.end(), character,
                                      [](char32_t value, const Range& range) { return value < range.first; });
  return after != ranges_.begin() && character <= std::prev(after)->second;
}

std::string_view stringByTrimmingCharactersInSet(std::string_view text, const NSCharacterSet& set) {
  while (!text.empty()) {
    const UTF8Character first = firstUTF8Character(text);
    if (!set.characterIsMember(first.value)) break;
    text.remove_prefix(first.length);
  }
  while (!text.empty()) {
    const UTF8Character last = lastUTF8Character(text);
    if (!set.characterIsMember(last.value)) break;
    text.remove_suffix(last.length);
  }
  return text;
}
