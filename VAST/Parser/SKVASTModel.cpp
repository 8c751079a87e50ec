#include "VAST/Parser/SKVASTModel.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "VAST/SKLogger.h"

namespace {

constexpr std::string_view tag = "VAST - Model";

std::optional<std::string> attribute(const VASTXMLNodeDictionary& node, std::string_view name) {
  for (const auto& each : node.nodeAttributeArray) {
    if (each.attributeName == name) return each.nodeContent;
  }
  return std::nullopt;
}

std::optional<NSURL> urlOf(const VASTXMLNodeDictionary& node) {
  const auto text = SKVASTModel::content(node);
  return text ? SKVASTModel::urlWithCleanString(*text) : std::nullopt;
}

bool hasText(const std::optional<std::string>& content) {
  return content && !content->empty();
}

}  // namespace

// Bytes until the first query, then the parsed document; neither when it does not parse.
struct SKVASTModel::Document {
  std::vector<std::byte> bytes;
  std::shared_ptr<_xmlDoc> parsed;
};

SKVASTModel::SKVASTModel() = default;
SKVASTModel::~SKVASTModel() = default;

void SKVASTModel::addVASTDocument(std::vector<std::byte> document) {
  documents_.push_back({std::move(document), nullptr});
}

std::optional<SKVASTModel::Matches> SKVASTModel::matches(Document& document, std::string_view query) {
  if (!document.parsed) {
    document.parsed = parseXMLDoc(document.bytes);
    document.bytes = {};
  }
  if (!document.parsed) return std::nullopt;
  return performXPathQuery(document.parsed.get(), query, VASTXMLDepth::withChildren);
}

SKVASTModel::Matches SKVASTModel::matchesInAll(std::string_view query) {
  Matches all;
  for (Document& document : documents_) {
    auto found = matches(document, query).value_or(Matches());
    std::move(found.begin(), found.end(), std::back_inserter(all));
  }
  return all;
}

std::optional<std::string> SKVASTModel::vastVersion() {
  if (documents_.empty()) return std::nullopt;
  const auto found = matches(documents_.front(), "/VAST/@version");
  return found && !found->empty() ? found->front().nodeContent : std::nullopt;
}

std::optional<std::vector<SKVASTUrlWithId>> SKVASTModel::resultsForQuery(std::string_view query) {
  std::optional<std::vector<SKVASTUrlWithId>> results;
  for (const auto& match : matchesInAll(query)) {
    if (!results) results.emplace();
    results->emplace_back(attribute(match, "id"), urlOf(match));
  }
  std::string name(query);
  name.erase(std::remove(name.begin(), name.end(), '/'), name.end());
  SKLogger::debug(tag,
                  "returning " + name + " array with " + std::to_string(results ? results->size() : 0) + " element(s)");
  return results;
}

std::optional<std::vector<SKVASTUrlWithId>> SKVASTModel::errors() {
  return resultsForQuery("//Error");
}

std::optional<std::vector<SKVASTUrlWithId>> SKVASTModel::impressions() {
  return resultsForQuery("//Impression");
}

std::optional<std::vector<SKVASTUrlWithId>> SKVASTModel::clickTracking() {
  return resultsForQuery("//ClickTracking");
}

std::optional<SKVASTUrlWithId> SKVASTModel::clickThrough() {
  auto results = resultsForQuery("//ClickThrough");
  return results ? std::optional(std::move(results->front())) : std::nullopt;
}

std::optional<std::map<std::string, std::vector<NSURL>>> SKVASTModel::trackingEvents() {
  std::optional<std::map<std::string, std::vector<NSURL>>> events;
  // What "//Linear//Tracking" matches; that form takes libxml2 the square of the matches.
  for (const auto& match : matchesInAll("//Tracking[ancestor::Linear]")) {
    if (!events) events.emplace();
    const auto event = attribute(match, "event");
    auto url = urlOf(match);
    if (event && url) (*events)[*event].push_back(*std::move(url));
  }
  SKLogger::debug(tag, "returning event dictionary with " + std::to_string(events ? events->size() : 0) + " event(s)");
  if (!events) return events;
  for (const auto& [event, urls] : *events) {
    SKLogger::debug(tag, event + " has " + std::to_string(urls.size()) + " URL(s)");
  }
  return events;
}

std::vector<std::shared_ptr<SKVASTMediaFile>> SKVASTModel::mediaFiles() {
  std::vector<std::shared_ptr<SKVASTMediaFile>> files;
  for (const auto& match : matchesInAll("//MediaFile")) {
    const auto text = [&match](std::string_view name) { return attribute(match, name); };
    const auto url = urlOf(match);
    files.push_back(std::make_shared<SKVASTMediaFile>(
        text("id"), text("delivery"), text("type"), text("bitrate"), text("width"), text("height"), text("scalable"),
        text("maintainAspectRatio"), text("apiFramework"), url ? std::optional(url->absoluteString()) : std::nullopt));
  }
  return files;
}

std::optional<std::string> SKVASTModel::textInLast(std::string_view query) {
  if (documents_.empty()) return std::nullopt;
  const auto found = matches(documents_.back(), query);
  if (!found || found->empty()) return "";
  const VASTXMLNodeDictionary& match = found->front();
  if (hasText(match.nodeContent)) return match.nodeContent;
  // A comment counts here, other than in content().
  return match.nodeChildArray.empty() ? "" : match.nodeChildArray.front().nodeContent.value_or("");
}

std::optional<std::string> SKVASTModel::adTitle() {
  return textInLast("//AdTitle");
}

std::optional<std::string> SKVASTModel::adDescription() {
  return textInLast("//Description");
}

std::optional<std::string> SKVASTModel::content(const VASTXMLNodeDictionary& node) {
  if (hasText(node.nodeContent)) return node.nodeContent;
  for (const auto& child : node.nodeChildArray) {
    if (child.nodeName != "comment") return child.nodeContent;
  }
  return std::nullopt;
}

std::optional<NSURL> SKVASTModel::urlWithCleanString(std::string_view text) {
  return ::urlWithCleanString(text);
}
