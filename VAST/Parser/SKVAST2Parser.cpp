#include "VAST/Parser/SKVAST2Parser.h"

#include <utility>

#include "VAST/Parser/VASTRequest.h"

SKVAST2Parser::SKVAST2Parser(SKVAST2ParserOptions options)
    : options_(std::move(options)), ymrVastModel_(std::make_shared<YMRVastModel>(options_.profile)) {
  ymrVastModel_->setAllowance(options_.followsWrappers, options_.allowsMultipleAds);
}

void SKVAST2Parser::parseWithUrl(std::optional<NSURL> url, Completion completion) {
  std::make_shared<VASTRequest>(options_, ymrVastModel_, std::move(completion))->start(std::move(url));
}

void SKVAST2Parser::parseWithData(VASTDocument document, Completion completion) {
  std::make_shared<VASTRequest>(options_, ymrVastModel_, std::move(completion))->start(std::move(document));
}
