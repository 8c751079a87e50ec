#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>

#include "VAST/Parser/YMRVastModel.h"
#include "platform/Export.h"
#include "platform/foundation/NSURL.h"

class URLLoader;

// The depth at which a document is refused: a first document and four wrapper hops are accepted.
inline constexpr std::int32_t kMaxRecursiveDepth = 5;
// Whether each document must also be valid against the VAST 2.0.1 schema.
inline constexpr bool kValidateWithSchema = false;

// One fetch of a request, for who inspects tags.
struct VASTHop {
  std::string url;         // as it was asked for; where that could not be, as the document gives it
  std::int32_t depth = 0;  // of the document that it was to bring
  long status = 0;         // 0 when there was no response
  std::chrono::milliseconds elapsed{0};
  std::optional<SKVASTError> error;  // of the fetch itself, 6 or 7; nil when a document came
  std::string reason;                // why no document came, for people; empty when one did
  std::span<const std::byte> body;   // while the observer is called
};

struct SKVAST2ParserOptions {
  std::shared_ptr<URLLoader> loader;  // nil: URLLoader::shared()
  YMRTagProfile profile = YMRTagProfileExact;
  // For the addresses of wrappers, where the profile fills macros in.
  VASTMacroValues macroValues{};
  // Of the first document, in either profile: whether its wrappers are followed, and whether more than one of its ads
  // counts.
  bool followsWrappers = true;
  bool allowsMultipleAds = true;
  bool validatesWithSchema = kValidateWithSchema;
  // For the request as a whole; hops that are not resolved by then get the time-out value.
  std::chrono::milliseconds timeLimit{30'000};
  // Called once a hop, in order, off the main thread and never two at a time; not after the completion.
  std::function<void(const VASTHop&)> hopObserver;
};

// Turns one ad tag into a tree of models: fetches, checks and follows wrappers, depth first and one hop at a time.
// Only http and https are fetched.
//
// One parser serves one request: it completes exactly once, on the main queue, whatever happens, with the parser's
// model, whose getVastError() is the outcome. The parser may be dropped at once; the request owns what it needs, and
// there is no way to cancel it. What the completion or the observer of hops throws is logged. Main thread.
class YMR_API SKVAST2Parser {
 public:
  using Completion = std::function<void(std::shared_ptr<YMRVastModel>)>;

  explicit SKVAST2Parser(SKVAST2ParserOptions options = {});

  // A URL of nil is a fetch that fails.
  void parseWithUrl(std::optional<NSURL> url, Completion completion);
  // The same for a document in memory.
  void parseWithData(VASTDocument document, Completion completion);

 private:
  SKVAST2ParserOptions options_;
  std::shared_ptr<YMRVastModel> ymrVastModel_;
};
