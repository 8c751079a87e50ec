#include "xml/ParserContext.h"

#include <libxml/SAX2.h>

#include <algorithm>
#include <cstring>
#include <mutex>
#include <utility>

namespace {

constexpr std::size_t internalDTDLimit = 16 * 1024;
// Lengths of the library's arrays, which double as they grow.
constexpr int attributeSlotsLimit = 5 * 1024;  // five an attribute
constexpr int namespaceSlotsLimit = 2 * 512;   // two a namespace

void initializeLibrary() {
  static std::once_flag once;
  std::call_once(once, xmlInitParser);
}

}  // namespace

// What the parser asks while it works.
struct XMLParserContext::Policy {
  // Bounds are looked at here since the library has no hook between the attributes of a tag.
  static int read(void* self, char* buffer, int length) {
    auto& context = *static_cast<XMLParserContext*>(self);
    const xmlParserCtxt& parser = *context.context_;
    if (parser.inSubset != 0) context.lengthOfInternalDTD_ += static_cast<std::size_t>(length);
    if (parser.maxatts > attributeSlotsLimit || parser.nsMax > namespaceSlotsLimit ||
        context.lengthOfInternalDTD_ > internalDTDLimit) {
      context.isRefused_ = true;
    }
    if (context.isRefused_) return 0;
    const std::size_t count = std::min(static_cast<std::size_t>(length), context.remaining_.size());
    if (count > 0) std::memcpy(buffer, context.remaining_.data(), count);
    context.remaining_ = context.remaining_.subspan(count);
    return static_cast<int>(count);
  }

  static void discardError(void*, xmlErrorPtr) {}

  static std::string key(const xmlChar* name, bool isParameter) {
    return (isParameter ? "%" : "&") + std::string(textOf(name));
  }

  static void rememberEntity(void* parser, const xmlChar* name, int type, const xmlChar*, const xmlChar*, xmlChar*) {
    const bool isParameter = type == XML_INTERNAL_PARAMETER_ENTITY || type == XML_EXTERNAL_PARAMETER_ENTITY;
    from(parser).declaredEntities_.insert(key(name, isParameter));
  }

  // An entity that is not found is an error, unless a DTD that was not read could have declared it; that is said of
  // those that this document's internal DTD did declare.
  static xmlEntityPtr findEntity(void* parser, const xmlChar* name) {
    auto& context = *static_cast<xmlParserCtxt*>(parser);
    const bool namesDTD = context.extSubURI || context.extSubSystem;
    context.hasExternalSubset = namesDTD || from(parser).declaredEntities_.contains(key(name, false));
    return xmlGetPredefinedEntity(name);
  }

  static xmlEntityPtr findParameterEntity(void* parser, const xmlChar* name) {
    if (from(parser).declaredEntities_.contains(key(name, true))) static_cast<xmlParserCtxt*>(parser)->hasPErefs = 1;
    return nullptr;
  }

  static xmlParserInputPtr openNothing(void*, const xmlChar*, const xmlChar*) { return nullptr; }

  // Comes when the internal DTD has been read, in place of loading the external one.
  static void dropDefaultAttributes(void* parser, const xmlChar*, const xmlChar*, const xmlChar*) {
    auto& context = *static_cast<xmlParserCtxt*>(parser);
    xmlHashFree(context.attsDefault, xmlHashDefaultDeallocator);
    context.attsDefault = nullptr;
  }

  static void apply(xmlSAXHandler& handler) {
    handler.initialized = XML_SAX2_MAGIC;
    handler.serror = discardError;
    handler.entityDecl = rememberEntity;
    handler.getEntity = findEntity;
    handler.getParameterEntity = findParameterEntity;
    handler.resolveEntity = openNothing;
    handler.externalSubset = dropDefaultAttributes;
    handler.attributeDecl = nullptr;
    handler.elementDecl = nullptr;
    handler.notationDecl = nullptr;
    handler.unparsedEntityDecl = nullptr;
  }
};

XMLParserContext::XMLParserContext(std::span<const std::byte> bytes) : remaining_(bytes) {
  initializeLibrary();
  context_.reset(xmlNewParserCtxt());
  if (context_) context_->_private = this;
}

XMLDocumentPointer XMLParserContext::readDocument() {
  if (context_) Policy::apply(*context_->sax);
  return run();
}

bool XMLParserContext::sendEvents(const xmlSAXHandler& events, void* receiver) {
  if (!context_) return false;
  receiver_ = receiver;
  *context_->sax = events;
  // With a document, if an empty one, the library keeps no entities of its own for the parse.
  context_->sax->startDocument = xmlSAX2StartDocument;
  Policy::apply(*context_->sax);
  return run() != nullptr;
}

XMLDocumentPointer XMLParserContext::run() {
  if (!context_) return nullptr;
  XMLDocumentPointer document(xmlCtxtReadIO(context_.get(), Policy::read, nullptr, this, "", nullptr, XML_PARSE_NONET));
  return isRefused_ ? nullptr : std::move(document);
}
