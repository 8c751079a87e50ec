#include "xml/Parser.h"

#include <libxml/parserInternals.h>

#include <string>
#include <string_view>
#include <utility>

#include "platform/foundation/NSString.h"
#include "platform/foundation/UTF8.h"
#include "xml/ParserContext.h"
#include "xml/TreeBuilder.h"

namespace {

// A tag of four bytes becomes some 300 in memory.
constexpr std::size_t elementsLimit = 1'000'000;

std::string qualifiedName(const xmlChar* localName, const xmlChar* prefix) {
  if (!prefix) return std::string(textOf(localName));
  std::string name(textOf(prefix));
  name += ':';
  return name += textOf(localName);
}

// The library hands an ampersand of an attribute's value on as a character reference.
std::string attributeValue(const xmlChar* begin, const xmlChar* end) {
  const std::string_view value(reinterpret_cast<const char*>(begin), static_cast<std::size_t>(end - begin));
  return stringByReplacingOccurrencesOfString(value, "&#38;", "&");
}

std::span<const std::byte> bytesOf(std::string_view text) {
  if (!isUTF8(text)) throw XMLError::parseError();
  return std::as_bytes(std::span(text));
}

// The events of a parse, on their way to the tree.
struct Pass {
  XMLTreeBuilder builder;
  std::size_t elementCount = 0;

  static Pass& of(void* context) { return XMLParserContext::receiver<Pass>(context); }

  static void elementStarts(void* context, const xmlChar* name, const xmlChar* prefix, const xmlChar*,
                            int namespaceCount, const xmlChar** namespaces, int attributeCount, int,
                            const xmlChar** attributes) {
    if (++of(context).elementCount > elementsLimit) XMLParserContext::refuse(context);
    XML::Attributes& made = of(context).builder.elementStarts(qualifiedName(name, prefix)).attributes;
    made.reserve(static_cast<std::size_t>(namespaceCount) + static_cast<std::size_t>(attributeCount));
    for (int i = 0; i < namespaceCount; ++i, namespaces += 2) {
      made.append(namespaces[0] ? "xmlns:" + std::string(textOf(namespaces[0])) : "xmlns",
                  namespaces[1] ? std::string(textOf(namespaces[1])) : std::string());
    }
    for (int i = 0; i < attributeCount; ++i, attributes += 5) {
      made.append(qualifiedName(attributes[0], attributes[1]), attributeValue(attributes[3], attributes[4]));
    }
  }

  static void characters(void* context, const xmlChar* text, int length) {
    if (length == 0) return;  // an empty CDATA section is no text
    const std::string_view part(reinterpret_cast<const char*>(text), static_cast<std::size_t>(length));
    if (of(context).builder.characters(part) > XML_MAX_TEXT_LENGTH) XMLParserContext::refuse(context);
  }

  static void elementEnds(void* context, const xmlChar*, const xmlChar*, const xmlChar*) {
    of(context).builder.elementEnds();
  }
};

XML::Accessor accessorAfter(XML::Parser parser, std::span<const std::byte> document) {
  parser.parse(document);
  return XML::Accessor(parser.documentRoot());
}

}  // namespace

XML::Parser::Parser() : documentRoot_(std::make_shared<Element>("XML.Parser.AbstructedDocumentRoot")) {}

XML::Parser::Parser(NSCharacterSet trimming) : Parser() {
  trimmingManner_ = std::move(trimming);
}

bool XML::Parser::parse(std::span<const std::byte> document) {
  xmlSAXHandler handler{};
  handler.startElementNs = Pass::elementStarts;
  handler.endElementNs = Pass::elementEnds;
  handler.characters = Pass::characters;
  handler.ignorableWhitespace = Pass::characters;
  handler.cdataBlock = Pass::characters;
  const XMLTreeMemory::Scope memory;
  Pass pass{{documentRoot_, trimmingManner_ ? &*trimmingManner_ : nullptr}};
  const bool isWellFormed = XMLParserContext(document).sendEvents(handler, &pass);
  pass.builder.finish();
  elementCount_ += pass.elementCount;
  return isWellFormed;
}

XML::Accessor XML::parse(std::span<const std::byte> document) {
  return accessorAfter(Parser(), document);
}

XML::Accessor XML::parse(std::string_view document) {
  return parse(bytesOf(document));
}

XML::Accessor XML::parse(std::span<const std::byte> document, const NSCharacterSet& trimming) {
  return accessorAfter(Parser(trimming), document);
}

XML::Accessor XML::parse(std::string_view document, const NSCharacterSet& trimming) {
  return parse(bytesOf(document), trimming);
}
