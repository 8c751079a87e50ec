#pragma once

#include <array>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/Export.h"

// A set of Unicode characters. A plain value; any thread.
class YMR_API NSCharacterSet {
 public:
  // Unicode's space separators, tab, and what ends a line or a paragraph.
  static const NSCharacterSet& whitespaceAndNewlineCharacterSet();
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

// The part of UTF-8 `text` without the set's characters at both ends; a view into `text`.
YMR_API std::string_view stringByTrimmingCharactersInSet(std::string_view text, const NSCharacterSet& set);
