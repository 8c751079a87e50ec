// The half of VASTXMLUtil that validates against a schema.
#include <libxml/xmlschemas.h>
#include <libxml/xmlschemastypes.h>

#include <cstdarg>
#include <mutex>

#include "VAST/Parser/VASTSchema.h"
#include "VAST/Parser/VASTXMLUtil.h"
#include "VAST/SKLogger.h"
#include "platform/foundation/NSCharacterSet.h"
#include "xml/ParserContext.h"

namespace {

constexpr std::string_view tag = "VAST - XML Util";

struct SchemaDeleter {
  void operator()(xmlSchemaParserCtxt* context) const { xmlSchemaFreeParserCtxt(context); }
  void operator()(xmlSchemaValidCtxt* context) const { xmlSchemaFreeValidCtxt(context); }
  void operator()(xmlSchema* schema) const { xmlSchemaFree(schema); }
};
template <class T>
using SchemaPointer = std::unique_ptr<T, SchemaDeleter>;

using LogFunction = void (*)(std::string_view tag, std::string_view message);

// What the library reports: its first argument after the format is the message.
template <LogFunction write, const char* prefix>
void logCallback(void*, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  const char* argument = va_arg(arguments, const char*);
  va_end(arguments);
  const auto message =
      stringByTrimmingCharactersInSet(argument ? argument : "", NSCharacterSet::whitespaceAndNewlineCharacterSet());
  if (!message.empty()) write(tag, prefix + std::string(message));
}

constexpr char parserError[] = "Schema parser error: ";
constexpr char parserWarning[] = "Schema parser warning: ";
constexpr char validationError[] = "Schema validation error: ";
constexpr char validationWarning[] = "Schema validation warning: ";
constexpr auto schemaParserErrorCallback = logCallback<SKLogger::error, parserError>;
constexpr auto schemaParserWarningCallback = logCallback<SKLogger::warning, parserWarning>;
constexpr auto schemaValidationErrorCallback = logCallback<SKLogger::error, validationError>;
constexpr auto schemaValidationWarningCallback = logCallback<SKLogger::warning, validationWarning>;

// The library builds its table of types at first use, without a lock.
void initializeTypes() {
  static std::once_flag once;
  std::call_once(once, xmlSchemaInitTypes);
}

// Null when the rules do not make a schema. `text` is the parsed schema and must live as long as the result.
SchemaPointer<xmlSchema> schemaFrom(xmlDoc* text) {
  if (!text) {
    schemaParserErrorCallback(nullptr, "%s", "Failed to parse the XML resource 'in_memory_buffer'.");
    return nullptr;
  }
  const SchemaPointer<xmlSchemaParserCtxt> parser(xmlSchemaNewDocParserCtxt(text));
  if (!parser) return nullptr;
  xmlSchemaSetParserErrors(parser.get(), schemaParserErrorCallback, schemaParserWarningCallback, nullptr);
  return SchemaPointer<xmlSchema>(xmlSchemaParse(parser.get()));
}

// 0 for valid, positive for invalid, negative when no verdict was reached. Without a schema the library would take the
// one that the document itself names, from wherever that is, so it is not asked then.
int verdictOn(xmlDoc* document, xmlSchema* schema) {
  const SchemaPointer<xmlSchemaValidCtxt> validation(schema ? xmlSchemaNewValidCtxt(schema) : nullptr);
  if (!validation) return -1;
  // With a name for the document at hand the library does not look for one among the node's siblings at every error,
  // which takes the square of their number.
  xmlSchemaValidateSetFilename(validation.get(), "document");
  xmlSchemaSetValidErrors(validation.get(), schemaValidationErrorCallback, schemaValidationWarningCallback, nullptr);
  return xmlSchemaValidateDoc(validation.get(), document);
}

}  // namespace

std::span<const std::byte> vastSchema() {
  return std::as_bytes(std::span(kVASTSchema, kVASTSchemaLength));
}

bool validateXMLDocAgainstSchema(std::span<const std::byte> document, std::span<const std::byte> schema) {
  const auto parsed = parseXMLDoc(document);
  if (!parsed) return false;
  initializeTypes();
  const XMLDocumentPointer schemaText = XMLParserContext(schema).readDocument();
  const auto rules = schemaFrom(schemaText.get());
  const int verdict = verdictOn(parsed.get(), rules.get());
  SKLogger::error(tag, verdict == 0  ? "document is valid"
                       : verdict > 0 ? "document is invalid"
                                     : "validation generated an internal error");
  return verdict == 0;
}
