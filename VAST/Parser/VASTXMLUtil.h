#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Export.h"
#include "platform/foundation/NSURL.h"

struct _xmlDoc;
struct _xmlNode;

// Checks and queries over VAST documents held in memory. Any thread. Nothing is thrown: a failure is nil or false with
// one message under "VAST - XML Util".

// What node and attribute dictionaries share. nil and empty stand for a key that is not there.
struct VASTXMLDictionary {
  // A text node's, comment's or CDATA section's own text as it stands, nil for an empty section; an element's or
  // attribute's text children, each trimmed of white space and line breaks, joined.
  std::optional<std::string> nodeContent;
};

struct VASTXMLAttributeDictionary;

// A node of a document as plain values.
struct VASTXMLNodeDictionary : VASTXMLDictionary {
  std::optional<std::string> nodeName;  // "comment" for a comment, nil for a CDATA section
  std::vector<VASTXMLAttributeDictionary> nodeAttributeArray;
  std::vector<VASTXMLNodeDictionary> nodeChildArray;  // without the text nodes: they are in nodeContent
};

struct VASTXMLAttributeDictionary : VASTXMLDictionary {
  std::optional<std::string> attributeName;
  std::vector<VASTXMLNodeDictionary> attributeContent;  // at most one: what the value begins with when that is no text
};

// How much of the tree below a node its dictionary holds. Matches can lie inside one another, so a query over a
// document from outside that needs the children only should ask for no more: whole trees could take the square of its
// size.
enum class VASTXMLDepth { withChildren, whole };

// A parsed document; nil, with "Unable to parse.", when it is not well-formed.
YMR_API std::shared_ptr<_xmlDoc> parseXMLDoc(std::span<const std::byte> document);

// The nodes that an XPath query matches, in document order; nil when the document does not parse, the query does not
// evaluate, or its result is not a set of nodes.
YMR_API std::optional<std::vector<VASTXMLNodeDictionary>> performXMLXPathQuery(std::span<const std::byte> document,
                                                                               std::string_view query);
YMR_API std::optional<std::vector<VASTXMLNodeDictionary>> performXPathQuery(_xmlDoc* document, std::string_view query,
                                                                            VASTXMLDepth depth = VASTXMLDepth::whole);
// nil when the node is text and was folded into the parent's nodeContent.
YMR_API std::optional<VASTXMLNodeDictionary> dictionaryForNode(const _xmlNode* node, VASTXMLDictionary* parent,
                                                               VASTXMLDepth depth = VASTXMLDepth::whole);

// Whether the document is well-formed; "Unable to parse." when not.
YMR_API bool validateXMLDocSyntax(std::span<const std::byte> document);
// Whether the document keeps the schema's rules. What is wrong with either is logged line by line, then the verdict.
// The schema is trusted: what it includes is loaded. Locations that the document names are not.
YMR_API bool validateXMLDocAgainstSchema(std::span<const std::byte> document, std::span<const std::byte> schema);
// The rules of VAST 2.0.1. For tests.
YMR_API std::span<const std::byte> vastSchema();

// The URL that an element's text stands for: trimmed of white space and line breaks, each "|" written "%7c"; nil when
// the rest is no URL.
YMR_API std::optional<NSURL> urlWithCleanString(std::string_view text);
