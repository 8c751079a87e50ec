#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "VAST/Parser/VASTXMLUtil.h"
#include "VAST/SKVASTMediaFile.h"
#include "VAST/SKVASTUrlWithId.h"
#include "platform/Export.h"
#include "platform/foundation/NSURL.h"

// Answers the usual questions over a list of VAST documents by XPath, whatever the documents' structure. The player's
// own path asks YMRVastModel instead. Any thread, one at a time.
//
// A document is parsed by the first query that needs it and kept parsed; one that does not parse matches nothing and is
// logged by each query. Names in a namespace match no query.
class YMR_API SKVASTModel {
 public:
  SKVASTModel();
  SKVASTModel(const SKVASTModel&) = delete;
  SKVASTModel& operator=(const SKVASTModel&) = delete;
  ~SKVASTModel();

  void addVASTDocument(std::vector<std::byte> document);

  // Of the first document; nil without documents or without the attribute.
  std::optional<std::string> vastVersion();

  // Over all documents, in order; nil, and not empty, when nothing matches. An element whose text is no URL is listed
  // with a nil URL.
  std::optional<std::vector<SKVASTUrlWithId>> errors();
  std::optional<std::vector<SKVASTUrlWithId>> impressions();
  std::optional<std::vector<SKVASTUrlWithId>> clickTracking();
  std::optional<SKVASTUrlWithId> clickThrough();  // of several, the first one
  std::optional<std::vector<SKVASTUrlWithId>> resultsForQuery(std::string_view query);

  // The URLs by event of all tracking elements inside `Linear`; nil when there is none.
  std::optional<std::map<std::string, std::vector<NSURL>>> trackingEvents();
  std::vector<std::shared_ptr<SKVASTMediaFile>> mediaFiles();

  // Of the last document: "" when it has none, nil without documents.
  std::optional<std::string> adTitle();
  std::optional<std::string> adDescription();

  // The text of a match: its own when that is not empty, else that of its first child other than a comment (a CDATA
  // section, mostly); nil when there is none.
  static std::optional<std::string> content(const VASTXMLNodeDictionary& node);
  static std::optional<NSURL> urlWithCleanString(std::string_view text);

 private:
  struct Document;
  using Matches = std::vector<VASTXMLNodeDictionary>;

  static std::optional<Matches> matches(Document& document, std::string_view query);
  Matches matchesInAll(std::string_view query);
  std::optional<std::string> textInLast(std::string_view query);

  std::vector<Document> documents_;
};
