#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "VAST/Parser/SKVAST2Parser.h"
#include "platform/dispatch/RunLoop.h"
#include "platform/foundation/URLLoader.h"

// One request on its way. Whoever works for it at the moment (a fetch, a block of a queue) owns it, so it lives until
// it has completed, or until a fetch that came too late has ended.
//
// No thread waits for a hop: what is left to resolve is kept in a list, and the end of a fetch goes on with it on that
// fetch's own queue. One fetch at a time, so there are no locks.
class VASTRequest : public std::enable_shared_from_this<VASTRequest> {
 public:
  VASTRequest(SKVAST2ParserOptions options, std::shared_ptr<YMRVastModel> model, SKVAST2Parser::Completion completion);

  // Either one, once. Any thread.
  void start(std::optional<NSURL> url);
  void start(VASTDocument document);

 private:
  struct Unresolved {
    std::shared_ptr<YMRVastModel> model;
    std::int32_t depth;
  };
  struct Fetch;

  // One HTTP GET of what a document or a host gave as URL, on a queue of its own; goes on with the request when it has
  // ended. Returns false when it ended at once, with its outcome set and nothing gone on with.
  bool getDataWithUrl(const std::string& url, Unresolved of);
  void goOn(Fetch& fetch, URLResponse response);
  void ended(const Fetch& fetch, URLResponse response);
  // Checks one document and appends it to the model's chain.
  void parseRecursivelyWithData(const VASTDocument& document, std::int32_t depth,
                                const std::shared_ptr<YMRVastModel>& model);
  std::optional<SKVASTError> check(const VASTDocument& document);
  // Follows the wrappers of what is unresolved, depth first, until a fetch has to be waited for; completes at the end.
  void checkAndHandleRedirect();
  void complete();

  const SKVAST2ParserOptions options_;
  const YMRTagRules& rules_;
  const std::shared_ptr<URLLoader> loader_;
  const RunLoop::Duration deadline_;
  std::shared_ptr<YMRVastModel> model_;
  SKVAST2Parser::Completion completion_;
  std::vector<Unresolved> unresolved_;  // resolved from its end
  std::size_t bytesLeft_;
  std::size_t elementsLeft_;
};
