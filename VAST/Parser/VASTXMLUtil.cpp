#include "VAST/Parser/VASTXMLUtil.h"

#include <libxml/xpath.h>

#include <utility>

#include "VAST/SKLogger.h"
#include "platform/foundation/NSCharacterSet.h"
#include "platform/foundation/NSString.h"
#include "xml/ParserContext.h"

namespace {

constexpr std::string_view tag = "VAST - XML Util";

struct XPathDeleter {
  void operator()(xmlXPathContext* context) const { xmlXPathFreeContext(context); }
  void operator()(xmlXPathObject* object) const { xmlXPathFreeObject(object); }
};

void discardError(void*, xmlErrorPtr) {}

// Other kinds keep something else in the field's place.
const xmlChar* ownContent(const xmlNode& node) {
  switch (node.type) {
    case XML_TEXT_NODE:
    case XML_COMMENT_NODE:
    case XML_PI_NODE:
      return node.content;
    case XML_CDATA_SECTION_NODE:
      return node.content && *node.content ? node.content : nullptr;
    default:
      return nullptr;
  }
}

// Text that belongs to its parent's content. The library names text nodes "text".
bool isFolded(const xmlNode& node) {
  return ownContent(node) && node.name && textOf(node.name) == "text";
}

void fold(std::string_view text, VASTXMLDictionary& parent) {
  const auto trimmed = stringByTrimmingCharactersInSet(text, NSCharacterSet::whitespaceAndNewlineCharacterSet());
  if (!parent.nodeContent) parent.nodeContent.emplace();
  parent.nodeContent->append(trimmed);
}

// `levels` below the node; a document's own nesting is bounded by the parser.
std::optional<VASTXMLNodeDictionary> dictionary(const xmlNode& node, VASTXMLDictionary* parent, int levels);

VASTXMLAttributeDictionary attributeDictionary(const xmlAttr& attribute) {
  VASTXMLAttributeDictionary result;
  if (attribute.name) result.attributeName = textOf(attribute.name);
  if (attribute.children) {
    if (auto content = dictionary(*attribute.children, &result, 0)) {
      result.attributeContent.push_back(*std::move(content));
    }
  }
  return result;
}

VASTXMLNodeDictionary namespaceDictionary(const xmlNs& space) {
  VASTXMLNodeDictionary result;
  if (space.prefix) result.nodeName = textOf(space.prefix);
  if (space.href) result.nodeContent = textOf(space.href);
  return result;
}

std::optional<VASTXMLNodeDictionary> dictionary(const xmlNode& node, VASTXMLDictionary* parent, int levels) {
  if (node.type == XML_NAMESPACE_DECL) return namespaceDictionary(reinterpret_cast<const xmlNs&>(node));
  const xmlChar* content = ownContent(node);
  if (parent && isFolded(node)) {
    fold(textOf(content), *parent);
    return std::nullopt;
  }
  VASTXMLNodeDictionary result;
  if (node.name) result.nodeName = textOf(node.name);
  if (content) result.nodeContent = textOf(content);
  if (node.type == XML_ELEMENT_NODE) {
    for (const xmlAttr* each = node.properties; each; each = each->next) {
      result.nodeAttributeArray.push_back(attributeDictionary(*each));
    }
  }
  if (node.type == XML_ENTITY_REF_NODE) return result;
  for (const xmlNode* each = node.children; each; each = each->next) {
    if (levels == 0 && !isFolded(*each)) continue;
    auto child = dictionary(*each, &result, levels - 1);
    if (child) result.nodeChildArray.push_back(*std::move(child));
  }
  return result;
}

int levelsOf(VASTXMLDepth depth) {
  return depth == VASTXMLDepth::withChildren ? 1 : -1;
}

}  // namespace

std::shared_ptr<_xmlDoc> parseXMLDoc(std::span<const std::byte> document) {
  std::shared_ptr<xmlDoc> parsed = XMLParserContext(document).readDocument();
  if (!parsed) SKLogger::error(tag, "Unable to parse.");
  return parsed;
}

std::optional<std::vector<VASTXMLNodeDictionary>> performXMLXPathQuery(std::span<const std::byte> document,
                                                                       std::string_view query) {
  const auto parsed = parseXMLDoc(document);
  return parsed ? performXPathQuery(parsed.get(), query) : std::nullopt;
}

std::optional<std::vector<VASTXMLNodeDictionary>> performXPathQuery(_xmlDoc* document, std::string_view query,
                                                                    VASTXMLDepth depth) {
  const std::unique_ptr<xmlXPathContext, XPathDeleter> context(document ? xmlXPathNewContext(document) : nullptr);
  if (!context) {
    SKLogger::error(tag, "Unable to create XPath context.");
    return std::nullopt;
  }
  context->error = discardError;
  const std::string text(query);
  const std::unique_ptr<xmlXPathObject, XPathDeleter> result(
      xmlXPathEvalExpression(reinterpret_cast<const xmlChar*>(text.c_str()), context.get()));
  if (!result) {
    SKLogger::error(tag, "Unable to evaluate XPath.");
    return std::nullopt;
  }
  const xmlNodeSet* nodes = result->nodesetval;
  if (!nodes) {
    SKLogger::debug(tag, "Nodes was nil.");
    return std::nullopt;
  }
  std::vector<VASTXMLNodeDictionary> dictionaries;
  dictionaries.reserve(static_cast<std::size_t>(nodes->nodeNr));
  for (int i = 0; i < nodes->nodeNr; ++i) {
    auto found = dictionary(*nodes->nodeTab[i], nullptr, levelsOf(depth));
    if (found) dictionaries.push_back(*std::move(found));
  }
  return dictionaries;
}

std::optional<VASTXMLNodeDictionary> dictionaryForNode(const _xmlNode* node, VASTXMLDictionary* parent,
                                                       VASTXMLDepth depth) {
  return dictionary(*node, parent, levelsOf(depth));
}

bool validateXMLDocSyntax(std::span<const std::byte> document) {
  return parseXMLDoc(document) != nullptr;
}

std::optional<NSURL> urlWithCleanString(std::string_view text) {
  text = stringByTrimmingCharactersInSet(text, NSCharacterSet::whitespaceAndNewlineCharacterSet());
  if (text.find('|') == text.npos) return NSURL::URLWithString(text);
  return NSURL::URLWithString(stringByReplacingOccurrencesOfString(text, "|", "%7c"));
}
