#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "xml/Attributes.h"
#include "xml/XML.h"

// A node of the tree. The tree is owned from the root down; an element that is kept alone keeps what is below it.
struct YMR_API XML::Element {
  explicit Element(std::string elementName) : name(std::move(elementName)) {}

  // The names from the outermost element still there to this one, joined by " > ".
  std::string path() const;

  std::string name;                 // as written, a namespace's prefix included
  std::optional<std::string> text;  // all character data of this element, around its children too; nil when it has none
  Attributes attributes;
  std::vector<std::shared_ptr<Element>> childElements;  // in document order
  std::weak_ptr<Element> parentElement;                 // nil for the document's root
};
