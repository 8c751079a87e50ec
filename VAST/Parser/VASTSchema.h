#pragma once

#include <cstdint>

#include "platform/Export.h"

// The rules of VAST 2.0.1 as an XML schema: which elements and attributes a document has, in which order, and the types
// of their values. Handed to libxml2 from memory. The length counts bytes, without the final zero.
extern YMR_API const char kVASTSchema[];
extern YMR_API const std::uint32_t kVASTSchemaLength;
