#pragma once

#include <libxml/parser.h>
#include <libxml/tree.h>

#include <cstddef>
#include <memory>
#include <set>
#include <span>
#include <string>
#include <string_view>

struct XMLDocumentDeleter {
  void operator()(xmlDoc* document) const { xmlFreeDoc(document); }
};
using XMLDocumentPointer = std::unique_ptr<xmlDoc, XMLDocumentDeleter>;

// A view of the library's text, which is not null.
inline std::string_view textOf(const xmlChar* text) {
  return reinterpret_cast<const char*>(text);
}

// libxml2's parser over bytes in memory, for documents from anybody. For the source files that include libxml2.
//
// It opens nothing, loads no DTD, substitutes no entity, prints nothing, and changes no setting of the process, which
// others share. Entities that a document declares are remembered by name only, so that a reference to one is no error
// and stands for nothing; the DTD's default attributes are dropped. The library's own bounds hold (no "huge" option);
// to them come bounds where its work grows with the square of something: attributes of a tag, namespaces in scope, and
// the length of an internal DTD.
class XMLParserContext {
 public:
  explicit XMLParserContext(std::span<const std::byte> bytes);
  XMLParserContext(const XMLParserContext&) = delete;
  XMLParserContext& operator=(const XMLParserContext&) = delete;

  // Parses into a tree of libxml2's; null unless well-formed.
  XMLDocumentPointer readDocument();
  // Parses into events: the handler's element, character and CDATA events. Each finds its receiver with receiver().
  // Whether the document is well-formed.
  bool sendEvents(const xmlSAXHandler& events, void* receiver);

  // From inside an event: the receiver given to sendEvents.
  template <class Receiver>
  static Receiver& receiver(void* libxmlContext) {
    return *static_cast<Receiver*>(from(libxmlContext).receiver_);
  }
  // From inside an event: ends the parse soon and lets the document count as malformed.
  static void refuse(void* libxmlContext) { from(libxmlContext).isRefused_ = true; }

 private:
  struct Policy;
  struct ContextDeleter {
    void operator()(xmlParserCtxt* context) const { xmlFreeParserCtxt(context); }
  };

  static XMLParserContext& from(void* libxmlContext) {
    return *static_cast<XMLParserContext*>(static_cast<xmlParserCtxt*>(libxmlContext)->_private);
  }
  XMLDocumentPointer run();

  std::unique_ptr<xmlParserCtxt, ContextDeleter> context_;
  void* receiver_ = nullptr;
  std::span<const std::byte> remaining_;
  std::size_t lengthOfInternalDTD_ = 0;
  bool isRefused_ = false;
  std::set<std::string> declaredEntities_;
};
