// Any document against the schema, and through the queries that a document from outside meets.
#include <cstdint>
#include <cstdlib>

#include "VAST/Parser/VASTXMLUtil.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto bytes = std::as_bytes(std::span(data, size));
  const bool isValid = validateXMLDocAgainstSchema(bytes, vastSchema());
  const auto document = parseXMLDoc(bytes);
  if (!document) {
    if (isValid) std::abort();
    return 0;
  }
  for (const auto* query : {"/", "/VAST/@version", "//Error", "//MediaFile", "//AdTitle", "//@*", "//namespace::*"}) {
    performXPathQuery(document.get(), query);
  }
  const auto slow = performXPathQuery(document.get(), "//Linear//Tracking", VASTXMLDepth::withChildren);
  const auto fast = performXPathQuery(document.get(), "//Tracking[ancestor::Linear]", VASTXMLDepth::withChildren);
  if (!slow || !fast || slow->size() != fast->size()) std::abort();
  for (std::size_t i = 0; i < slow->size(); ++i) {
    if ((*slow)[i].nodeContent != (*fast)[i].nodeContent) std::abort();
  }
  return 0;
}
