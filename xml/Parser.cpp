#include "xml/Parser.h"

#include <libxml/parserInternals.h>

#include <string>
#include <string_view>
#include <utility>

#include "platform/foundation/UTF8.h"
#include "xml/ParserContext.h"

namespace {

// A tag of four bytes becomes some 300 in memory.
constexpr std::size_t maximumElements = 1'000'000;

std::string qualifiedName(const xmlChar* localName, const xmlChar* prefix) {
  if (!prefix) return std::string(textOf(localName));
  std::string name(textOf(prefix));
  name += ':';
  return name += textOf(localName);
}

// The library hands an ampersand of an attribute's value on as a character reference.
std::string attributeValue(const xmlChar* begin, const xmlChar* end) {
  constexpr std::string_view ampersand = "&#38;";
  const std::string_view value(reinterpret_cast<const char*>(begin), static_cast<std::size_t>(end - begin));
  std::string result;
  std::size_t from = 0;
  for (auto at = value.find(ampersand); at != value.npos; at = value.find(ampersand, from)) {
    result.append(value, from, at - from + 1);
    from = at + ampersand.size();
  }
  return result.append(value, from, value.npos);
}

std::span<const std::byte> bytesOf(std::string_view text) {
  if (!isUTF8(text)) throw XMLError::parseError();
  return std::as_bytes(std::span(text));
}

XML::Accessor accessorAfter(XML::Parser parser, std::span<const std::byte> document) {
  parser.parse(document);
  return XML::Accessor(parser.documentRoot());
}

}  // namespace

struct XML::Parser::Events {
  static Parser& parser(void* context) { return XMLParserContext::receiver<Parser>(context); }

  static void elementStarts(void* context, const xmlChar* name, const xmlChar* prefix, const xmlChar*,
                            int namespaceCount, const xmlChar** namespaces, int attributeCount, int,
                            const xmlChar** attributes) {
    if (++parser(context).elementCount_ > maximumElements) XMLParserContext::refuse(context);
    auto element = std::make_shared<Element>(qualifiedName(name, prefix));
    element->attributes.reserve(static_cast<std::size_t>(namespaceCount + attributeCount));
    for (int i = 0; i < namespaceCount; ++i, namespaces += 2) {
      element->attributes.append(namespaces[0] ? "xmlns:" + std::string(textOf(namespaces[0])) : "xmlns",
                                 namespaces[1] ? std::string(textOf(namespaces[1])) : std::string());
    }
    for (int i = 0; i < attributeCount; ++i, attributes += 5) {
      element->attributes.append(qualifiedName(attributes[0], attributes[1]),
                                 attributeValue(attributes[3], attributes[4]));
    }
    auto& stack = parser(context).stack_;
    element->parentElement = stack.back();
    stack.back()->childElements.push_back(element);
    stack.push_back(std::move(element));
  }

  static void characters(void* context, const xmlChar* text, int length) {
    auto& whole = parser(context).stack_.back()->text;
    if (!whole) whole.emplace();
    whole->append(reinterpret_cast<const char*>(text), static_cast<std::size_t>(length));
    if (whole->size() > XML_MAX_TEXT_LENGTH) XMLParserContext::refuse(context);
  }

  static void elementEnds(void* context, const xmlChar*, const xmlChar*, const xmlChar*) {
    Parser& self = parser(context);
    auto& text = self.stack_.back()->text;
    if (text && self.trimmingManner_) {
      text = std::string(stringByTrimmingCharactersInSet(*text, *self.trimmingManner_));
    }
    self.stack_.pop_back();
  }
};

XML::Parser::Parser() : documentRoot_(std::make_shared<Element>("XML.Parser.AbstructedDocumentRoot")) {}

XML::Parser::Parser(NSCharacterSet trimming) : Parser() {
  trimmingManner_ = std::move(trimming);
}

bool XML::Parser::parse(std::span<const std::byte> document) {
  stack_.assign(1, documentRoot_);
  xmlSAXHandler handler{};
  handler.startElementNs = Events::elementStarts;
  handler.endElementNs = Events::elementEnds;
  handler.characters = Events::characters;
  handler.ignorableWhitespace = Events::characters;
  handler.cdataBlock = Events::characters;
  const bool isWellFormed = XMLParserContext(document).sendEvents(handler, this);
  stack_.clear();
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
