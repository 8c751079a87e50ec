#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/foundation/NSCharacterSet.h"
#include "xml/Element.h"

// Makes a tree of a parser's events. Text and children are gathered in buffers that are used again, and go to their
// element in one piece when it ends: most of what a tree costs is allocation.
class XMLTreeBuilder {
 public:
  // `trimming` may be null and must otherwise outlive the builder.
  XMLTreeBuilder(std::shared_ptr<XML::Element> root, const NSCharacterSet* trimming);

  // The new element, for its attributes.
  XML::Element& elementStarts(std::string name);
  void elementEnds();
  // The length of the open element's text so far.
  std::size_t characters(std::string_view text);
  // Ends, untrimmed, what a malformed document left open.
  void finish();

 private:
  struct Open {
    std::shared_ptr<XML::Element> element;
    std::size_t firstChild = 0;  // in ended_
    std::string text;
    bool hasText = false;
  };

  void open(std::shared_ptr<XML::Element> element);
  void close(const NSCharacterSet* trimming);

  std::vector<Open> open_;  // from the root; those from depth_ on are spare
  std::size_t depth_ = 0;
  std::vector<std::shared_ptr<XML::Element>> ended_;  // whose parents are open
  const NSCharacterSet* const trimming_;
};
