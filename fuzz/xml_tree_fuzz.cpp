// Any bytes into the tree, and every step over it. The tree and libxml2's own must agree on what is well-formed and on
// what elements there are.
#include <cstdint>
#include <cstdlib>

#include "xml/Parser.h"
#include "xml/ParserContext.h"

namespace {

void require(bool holds) {
  if (!holds) std::abort();
}

// Elements below the node, its own children first.
int countOf(const xmlNode* parent) {
  int count = 0;
  for (const xmlNode* each = parent->children; each; each = each->next) {
    if (each->type == XML_ELEMENT_NODE) count += 1 + countOf(each);
  }
  return count;
}

int walk(const XML::Accessor& accessor) {
  int count = 0;
  const auto names = XML::Accessor(accessor.element()->childElements).names();
  for (const auto& name : *names) {
    const auto named = accessor[name];
    require(!named.error() && named.count() > 0 && named.first()[0].name() == name);
  }
  for (const auto child : XML::Accessor(accessor.element()->childElements)) {
    require(child.element()->parentElement.lock() == accessor.element());
    child.url();
    child.intValue();
    child.doubleValue();
    count += 1 + walk(child);
  }
  return count;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto bytes = std::as_bytes(std::span(data, size));
  XML::Parser parser(NSCharacterSet::whitespaceAndNewlineCharacterSet());
  const bool isWellFormed = parser.parse(bytes);
  const int count = walk(XML::Accessor(parser.documentRoot()));
  const auto document = XMLParserContext(bytes).readDocument();
  require(isWellFormed == (document != nullptr));
  require(!document || count == countOf(reinterpret_cast<const xmlNode*>(document.get())));
  return 0;
}
