#pragma once

#include <array>
#include <cstddef>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/Export.h"

// A set of Unicode characters. A plain value; any thread.
class YMR_API NSCharacterSet {
 public:
  // Unicode's space separators, tab, and what ends a line or a paragraph.
  static const NSCharacterSet& whitespaceAndNewlineCharacterSet();
  // What ends a line or a paragraph: U+000A to U+000D, U+0085, U+2028 and U+2029.
  static const NSCharacterSet& newlineCharacterSet();
  // The characters of UTF-8 text; bytes that are no UTF-8 count as U+FFFD.
  static NSCharacterSet characterSetWithCharactersInString(std::string_view characters);

  bool characterIsMember(char32_t character) const {
    return character < ascii_.size() ? ascii_[character] : rangesContain(character);
  }

 private:
  using Range = std::pair<char32_t, char32_t>;  // first and last
  explicit NSCharacterSet(std::vector<Range> ranges);
  bool rangesContain(char32_t character) const;

  std::vector<Range> ranges_;
  std::array<bool, 128> ascii_;  // what the ranges say, for the characters that are asked for most
};

// The length in bytes of what UTF-8 `text` begins with that is, or with `inverted` is not, of the set. Linear time.
YMR_API std::size_t lengthOfCharactersInSet(std::string_view text, const NSCharacterSet& set, bool inverted = false);

// The part of UTF-8 `text` without the set's characters at both ends; a view into `text`.
YMR_API std::string_view stringByTrimmingCharactersInSet(std::string_view text, const NSCharacterSet& set);
