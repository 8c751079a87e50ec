#pragma once

#include <cstddef>
#include <span>
#include <string_view>

#include "platform/Export.h"

class NSCharacterSet;

// Reads a document into a tree of elements and walks it. Used as a namespace. A call reads synchronously, on any
// thread; a tree is not synchronised: built once, then only read.
class YMR_API XML {
 public:
  class Accessor;
  class Attributes;
  struct Element;
  class Parser;

  XML() = delete;

  // An accessor on the abstract root, whose only child is the document's element. A malformed document gives the tree
  // up to its first error; XML::Parser tells the two apart. Text throws XMLError when it is not UTF-8.
  static Accessor parse(std::span<const std::byte> document);
  static Accessor parse(std::string_view document);
  // The same with each element's text trimmed of the set's characters at both ends.
  static Accessor parse(std::span<const std::byte> document, const NSCharacterSet& trimming);
  static Accessor parse(std::string_view document, const NSCharacterSet& trimming);
};
