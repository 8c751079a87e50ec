#include "VAST/Parser/VASTRequest.h"

#include <algorithm>
#include <atomic>
#include <utility>

#include "VAST/HostCall.h"
#include "VAST/Parser/VASTSchema.h"
#include "VAST/Parser/VASTXMLUtil.h"
#include "VAST/SKLogger.h"

namespace {

constexpr const char* tag = "VAST-Parser";

// What a request may bring in all, so that a server that answers fast cannot fill the machine's memory within the time
// limit: bytes fetched, and elements of all documents.
constexpr std::size_t requestBytesLimit = 64 * 1024 * 1024;
constexpr std::size_t requestElementsLimit = 1'000'000;

// The error of a model that has a document of that depth, while nothing has gone wrong.
SKVASTError noAdErrorAt(std::int32_t depth) {
  return depth == 0 ? SKVASTErrorNoAd : SKVASTErrorNoAdAfterWrappers;
}

URLResponse failed(int code, const char* message) {
  URLResponse response;
  response.error = NSError{NSURLErrorDomain, code, message};
  return response;
}

URLResponse timeIsUp() {
  return failed(NSURLErrorTimedOut, "The request's time was used up.");
}

// The error of a fetch that brought no document.
SKVASTError fetchError(const URLResponse& response) {
  return response.error && response.error->code == NSURLErrorTimedOut ? SKVASTErrorTimeout : SKVASTErrorNoInternet;
}

// Whether nobody was reached, or lost again: not the server's doing, nor its URL's.
bool isTheNetworks(const URLResponse& response) {
  constexpr int codes[] = {NSURLErrorTimedOut, NSURLErrorCannotFindHost, NSURLErrorCannotConnectToHost,
                           NSURLErrorNetworkConnectionLost};
  return response.error && std::ranges::find(codes, response.error->code) != std::end(codes);
}

}  // namespace

struct VASTRequest::Fetch {
  Fetch(std::string given, Unresolved whose, RunLoop::Duration now)
      : url(std::move(given)), of(std::move(whose)), startedAt(now) {}

  const std::string url;
  const Unresolved of;  // the model whose chain the document continues, and the document's own depth
  const RunLoop::Duration startedAt;
  std::atomic<RunLoop::TimerToken> timer = 0;
  std::atomic<bool> isOver = false;
};

VASTRequest::VASTRequest(SKVAST2ParserOptions options, std::shared_ptr<YMRVastModel> model,
                         SKVAST2Parser::Completion completion)
    : options_(std::move(options)),
      rules_(YMRTagRules::of(options_.profile)),
      loader_(options_.loader ? options_.loader : URLLoader::shared()),
      deadline_(RunLoop::main().now() + options_.timeLimit),
      model_(std::move(model)),
      completion_(std::move(completion)),
      bytesLeft_(requestBytesLimit),
      elementsLeft_(requestElementsLimit) {}

void VASTRequest::start(std::optional<NSURL> url) {
  dispatch_async(dispatch_get_global_queue(), [self = shared_from_this(), url = std::move(url)] {
    const std::string text = url ? url->absoluteString() : "";
    if (!self->getDataWithUrl(text, {self->model_, 0})) self->checkAndHandleRedirect();
  });
}

void VASTRequest::start(VASTDocument document) {
  dispatch_async(dispatch_get_global_queue(), [self = shared_from_this(), document = std::move(document)] {
    self->parseRecursivelyWithData(document, 0, self->model_);
    self->checkAndHandleRedirect();
  });
}

void VASTRequest::checkAndHandleRedirect() {
  while (!unresolved_.empty()) {
    const Unresolved next = std::move(unresolved_.back());
    unresolved_.pop_back();
    const auto& [model, depth] = next;
    if (const auto redirect = model->redirectUrl()) {
      model->passWrapper();
      if (getDataWithUrl(*redirect, {model, depth + 1})) return;
    } else if (model->adModels().empty()) {
      model->setVastError(noAdErrorAt(depth));
    } else {
      for (const auto& children : {model->standaloneAdModels(), model->adModels()}) {
        std::for_each(children.rbegin(), children.rend(), [&, depth = depth](const auto& child) {
          unresolved_.push_back({child, depth});
        });
      }
    }
  }
  complete();
}

void VASTRequest::parseRecursivelyWithData(const VASTDocument& given, std::int32_t depth,
                                           const std::shared_ptr<YMRVastModel>& model) {
  const auto rest = given.bytes().subspan(rules_.blanksBefore(given.bytes()));
  const bool isWhole = rest.size() == given.bytes().size();
  const VASTDocument document = isWhole ? given : VASTDocument(std::vector(rest.begin(), rest.end()));
  if (depth >= kMaxRecursiveDepth) {
    model->setVastError(SKVASTErrorTooManyWrappers);
    return;
  }
  if (SKLogger::reachesSink(SKLogLevelDebug)) {
    SKLogger::debug(tag, "VAST file\n" + std::string(document.text()));
  }
  if (const auto refusal = check(document)) {
    model->setVastError(*refusal);
    return;
  }
  model->addVASTDocument(document);
  model->setVastError(noAdErrorAt(depth));
  unresolved_.push_back({model, depth});
}

std::optional<SKVASTError> VASTRequest::check(const VASTDocument& document) {
  if (document.elementCount() > elementsLeft_) {
    SKLogger::error(tag, "The documents of this request have too many elements");
    return SKVASTErrorXMLParse;
  }
  elementsLeft_ -= document.elementCount();
  // Reading the tree was a syntax check already. The other one is made only for what it says in the log.
  if (!document.isWellFormed()) {
    validateXMLDocSyntax(document.bytes());
    return SKVASTErrorXMLParse;
  }
  if (options_.validatesWithSchema) {
    SKLogger::debug(tag, "Validating against schema");
    const auto schema = std::as_bytes(std::span(kVASTSchema, kVASTSchemaLength));
    if (!validateXMLDocAgainstSchema(document.bytes(), schema)) return SKVASTErrorSchemaValidation;
  }
  return std::nullopt;
}

bool VASTRequest::getDataWithUrl(const std::string& text, Unresolved of) {
  const auto now = RunLoop::main().now();
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline_ - now);
  auto url = rules_.urlOf(text);
  if (url) url = rules_.withMacros(*url, options_.macroValues);
  const auto fetch = std::make_shared<Fetch>(url ? url->absoluteString() : text, std::move(of), now);
  if (!url || !url->isHTTP()) {
    ended(*fetch, failed(NSURLErrorUnsupportedURL, "Only http and https are fetched."));
    return false;
  }
  if (left <= std::chrono::milliseconds::zero()) {
    ended(*fetch, timeIsUp());
    return false;
  }
  URLRequest request{*url};
  request.silenceLimit = std::min(request.silenceLimit, left);
  request.timeLimit = std::min(request.timeLimit, left);
  request.bytesLimit = std::min(request.bytesLimit, bytesLeft_);
  // The loader's limits count from when it begins with a fetch; until then it may hold it back. From here on the
  // request may be going on elsewhere.
  fetch->timer = RunLoop::main().schedule(left, [self = shared_from_this(), fetch] {
    dispatch_async(dispatch_get_global_queue(), [self, fetch] { self->goOn(*fetch, timeIsUp()); });
  });
  loader_->load(std::move(request), dispatch_queue_create("vast fetch"),
                [self = shared_from_this(), fetch](URLResponse response) { self->goOn(*fetch, std::move(response)); });
  return true;
}

void VASTRequest::goOn(Fetch& fetch, URLResponse response) {
  if (fetch.isOver.exchange(true)) return;
  RunLoop::main().cancel(fetch.timer);
  ended(fetch, std::move(response));
  checkAndHandleRedirect();
}

void VASTRequest::ended(const Fetch& fetch, URLResponse response) {
  // A transfer that broke off after its head counts as no response.
  const long status = response.error ? 0 : response.status;
  if (status != 0) loader_->noteAnswer();
  std::optional<SKVASTError> error;
  const auto answer = rules_.answerOf(response);
  if (answer == YMRTagRules::Answer::nothing) error = fetchError(response);
  const bool isNoAd = answer == YMRTagRules::Answer::noAd;
  const std::string reason = error ? response.reason() : isNoAd ? "the server has no ad" : "";
  if (options_.hopObserver) {
    const auto elapsed = RunLoop::main().now() - fetch.startedAt;
    callHost(tag, [&] {
      options_.hopObserver({fetch.url, fetch.of.depth, status,
                            std::chrono::duration_cast<std::chrono::milliseconds>(elapsed), error, reason,
                            response.body});
    });
  }
  if (error) {
    const std::string message = "No document from " + (fetch.url.empty() ? "no URL" : fetch.url) + ": " + reason;
    SKLogger::warning(tag, message);
    fetch.of.model->setVastError(*error, isTheNetworks(response) ? "" : message);
    return;
  }
  if (isNoAd) {
    SKLogger::info(tag, "No ad from " + fetch.url);
    fetch.of.model->setVastError(noAdErrorAt(fetch.of.depth));
    return;
  }
  bytesLeft_ -= std::min(bytesLeft_, response.body.size());
  parseRecursivelyWithData(VASTDocument(std::move(response.body)), fetch.of.depth, fetch.of.model);
}

void VASTRequest::complete() {
  dispatch_async(dispatch_get_main_queue(), [completion = std::move(completion_), model = std::move(model_)]() mutable {
    const auto call = std::exchange(completion, nullptr);
    if (call) callHost(tag, [&] { call(std::move(model)); });
  });
}
