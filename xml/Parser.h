#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <span>

#include "platform/foundation/NSCharacterSet.h"
#include "xml/Accessor.h"
#include "xml/Element.h"
#include "xml/XML.h"

// One parse: an event-driven pass over the bytes that builds the tree. Any thread, one at a time.
//
// The encoding is the one that a byte order mark or the declaration names, else UTF-8. Nothing outside the bytes is
// opened, and entities that the document declares itself stand for nothing. A document nested deeper than 256 elements,
// with a text or attribute of 10 MB, a name of 50,000 bytes, some 700 attributes in a tag, or more than a million
// elements, counts as malformed.
class YMR_API XML::Parser {
 public:
  Parser();
  // Trims each element's text, when the element ends, of these characters at both ends.
  explicit Parser(NSCharacterSet trimming);

  // Reads a document below documentRoot(), up to its first error. Whether it is well-formed, so that one pass serves
  // the syntax check and the tree.
  bool parse(std::span<const std::byte> document);

  // The artificial root, named "XML.Parser.AbstructedDocumentRoot".
  const std::shared_ptr<Element>& documentRoot() const { return documentRoot_; }
  // How many elements are below it: what a document costs in memory, some 300 bytes each and their texts.
  std::size_t elementCount() const { return elementCount_; }

 private:
  std::shared_ptr<Element> documentRoot_;
  std::optional<NSCharacterSet> trimmingManner_;
  std::size_t elementCount_ = 0;
};
