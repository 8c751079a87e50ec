#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

#include "platform/Export.h"
#include "platform/foundation/NSCharacterSet.h"

// Reads a text piece by piece, from its beginning to its end. A value for one thread; the text, which is UTF-8, and the
// sets it is given must outlive it. What it hands out are views into the text.
//
// Kept from the platform: every scan first passes over characters to be skipped, which are white space and line ends
// unless others are set; what does not scan consumes nothing, not even those. Left out: going back, comparing without
// regard to case, numbers other than whole ones. Whatever is scanned in whatever order, reading a text to its end takes
// linear time. Bytes that are no UTF-8 count as U+FFFD, one by one; a zero byte is a character like any other.
class YMR_API NSScanner {
 public:
  explicit NSScanner(std::string_view string) : string_(string) {}

  // nil: nothing is skipped from now on.
  void setCharactersToBeSkipped(const NSCharacterSet* set) { skipped_ = set; }
  // Where the next scan begins, in bytes, before it has skipped anything.
  std::size_t scanLocation() const { return location_; }
  // Whether there is nothing left but characters to be skipped.
  bool isAtEnd() const { return afterSkipping() == string_.size(); }

  // An optional sign and the ASCII digits that follow it at once. A number beyond 64 bits is the nearest that there is;
  // all of its digits are consumed.
  std::optional<std::int64_t> scanInteger();
  // Whether `string` comes next; consumes it then.
  bool scanString(std::string_view string);
  // What comes before the next `string`, or all that is left when there is none; nil when that is nothing.
  std::optional<std::string_view> scanUpToString(std::string_view string);
  // What comes before the next character of the set, or all that is left; nil when that is nothing.
  std::optional<std::string_view> scanUpToCharactersFromSet(const NSCharacterSet& set);
  // The characters of the set that come next; nil when there is none.
  std::optional<std::string_view> scanCharactersFromSet(const NSCharacterSet& set);

 private:
  // A place, and how far skipping takes from there.
  struct Skip {
    const NSCharacterSet* set = nullptr;
    std::size_t from = 0;
    std::size_t to = 0;
  };

  std::size_t afterSkipping() const;
  std::optional<std::string_view> take(std::size_t start, std::size_t end);

  std::string_view string_;
  std::size_t location_ = 0;
  const NSCharacterSet* skipped_ = &NSCharacterSet::whitespaceAndNewlineCharacterSet();
  mutable Skip lastSkip_;  // scans that fail skip from the same place again, perhaps to the end of a long text
};
