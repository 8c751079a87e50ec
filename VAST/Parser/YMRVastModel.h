#pragma once

#include <cstddef>
#include <deque>
#include <initializer_list>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "VAST/Parser/VASTDocument.h"
#include "VAST/Parser/VASTOffset.h"
#include "VAST/Parser/YMRTagRules.h"
#include "VAST/SKVASTError.h"
#include "VAST/SKVASTMediaFile.h"
#include "VAST/SKVASTUrlWithId.h"
#include "platform/Export.h"

// What became of one ad request, or of one ad of it: the documents of its wrapper chain, and the queries that playing
// the ad needs. A document with several `Ad` elements splits its model into children: pod ads (with `sequence`) and
// stand-alone ones, which serve as fall-backs. A model that was split answers no query for itself.
//
// What differs between the profiles it asks its YMRTagRules; where nothing else is said, these comments tell of the
// exact one.
//
// Always held by shared_ptr. No locks: one thread at a time, the resolver's until the request completes, then the main
// thread's.
class YMR_API YMRVastModel : public std::enable_shared_from_this<YMRVastModel> {
 public:
  using Models = std::vector<std::shared_ptr<YMRVastModel>>;

  explicit YMRVastModel(YMRTagProfile profile = YMRTagProfileExact);
  YMRVastModel(const YMRVastModel&) = delete;
  YMRVastModel& operator=(const YMRVastModel&) = delete;
  ~YMRVastModel();

  const YMRTagRules& rules() const { return rules_; }

  // The last document of an array given to setVASTDocumentArray; nil before that, and untouched by addVASTDocument.
  const std::optional<VASTDocument>& vastDocument() const { return vastDocument_; }
  void setVastDocument(std::optional<VASTDocument> document) { vastDocument_ = std::move(document); }
  // The chain, outermost document first.
  const std::vector<VASTDocument>& vastDocumentArray() const { return vastDocumentArray_; }
  void setVASTDocumentArray(std::vector<VASTDocument> documents);
  // Appends a document, and makes children of its ads when it has two or more. Of those, an ad without `id` is left
  // out, since nothing could find it again.
  void addVASTDocument(const VASTDocument& document);

  // Children for the pod ads, ascending by `sequence` compared as text: "10" comes before "2".
  const Models& adModels() const { return adModels_; }
  void setAdModels(Models models) { adModels_ = std::move(models); }
  // Children for the ads without `sequence`, in document order.
  Models standaloneAdModels() const { return {standaloneAdModels_->begin(), standaloneAdModels_->end()}; }
  void setStandaloneAdModels(const Models& models) { standaloneAdModels_->assign(models.begin(), models.end()); }
  // The `id` of the `Ad` that this child stands for; empty for a model that stands for a whole document.
  const std::string& adID() const { return adID_; }
  void setAdID(std::string id) { adID_ = std::move(id); }
  // This model's ad in each document of the chain, empty where the document was not split.
  const std::vector<std::string>& adIDs() const { return adIDs_; }
  void setAdIDs(std::vector<std::string> ids) { adIDs_ = std::move(ids); }
  // Where this model's ad is in each document of the chain, counted from 0. A model that was split has one less.
  const std::vector<std::size_t>& adPositions() const { return adPositions_; }
  // The `sequence` that made this a pod child, as written; nil for all others.
  const std::optional<std::string>& adSequence() const { return adSequence_; }

  // The model that made this pod child; nil for all others, and when that model is gone. Known weakly, so that a chain
  // needs nobody to take it apart; what a child needs of its parent, the list of fall-backs, lives as long as the child
  // or until the parent is set to nil.
  std::shared_ptr<YMRVastModel> parent() const { return parent_.lock(); }
  void setParent(const std::shared_ptr<YMRVastModel>& parent);

  // What the documents to come may be: wrappers that are followed, several ads of which more than one is played. All of
  // it at first.
  void setAllowance(bool wrappers, bool severalAds);
  // The wrapper at hand is being followed: what it allows holds from now on.
  void passWrapper();

  // The outcome of the last step that touched this model; nil when none has.
  const std::optional<SKVASTError>& vastError() const { return vastError_; }
  void setVastError(SKVASTError error, std::string reason = "") {
    vastError_ = error;
    vastErrorReason_ = std::move(reason);
  }
  // Why no document came when it was not the network's doing, with its URL, for people: a status, a refused redirect, a
  // certificate. Empty when the error says it all.
  const std::string& vastErrorReason() const { return vastErrorReason_; }
  // The same where it is known to be set. Stops the process when it is not.
  SKVASTError getVastError() const;

  // `version` of the first document; nil without one.
  std::optional<std::string> vastVersion() const;

  // The queries. A path that meets two elements of one name before its last step finds nothing, on purpose. A text that
  // after trimming and escaping "|" is no URL, or neither http nor https, is left out with its element.
  //
  // From the last document:

  // Where the wrapper points, as written; nil for an inline ad and for a model with pod children.
  std::optional<std::string> redirectUrl() const;
  std::vector<std::shared_ptr<SKVASTMediaFile>> mediaFiles() const;
  std::optional<std::string> adTitle() const;
  std::optional<std::string> adDescription() const;
  // The `Ad`; null when there is none, or no single one. Belongs to the document.
  const XML::Element* lastAd() const;

  // From every document of the chain, outermost first:

  std::map<std::string, std::vector<NSURL>> trackingEvents() const;
  std::vector<SKVASTUrlWithId> impressions() const;
  std::vector<SKVASTUrlWithId> errors() const;
  std::optional<SKVASTUrlWithId> clickThrough() const;  // of several, the first one
  std::vector<SKVASTUrlWithId> clickTracking() const;

  // Only where the profile knows them; else empty and nil:

  struct Progress {
    VASTOffset offset;
    NSURL url;
  };
  // What is to be told when the film has come so far, in the order of the documents.
  std::vector<Progress> progress() const;
  // From when on the viewer may skip the ad: the innermost document's that says so.
  std::optional<VASTOffset> skipOffset() const;
  // What of the ad is not run here.
  std::vector<VASTNotRun> notRun() const;

  // The ads to play, in order: this model alone when it has no pod children, else theirs.
  Models sequencedAdModels();
  // The one that sequencedAdModelsOfStandaloneAd() would take; nil when there is none.
  std::shared_ptr<YMRVastModel> nextStandaloneAd() const;
  // Takes the next playable stand-alone ad out of the parent's list: a list of one, or empty when there is none.
  // Broadly read, that ad has what is left for its own fall-backs.
  Models sequencedAdModelsOfStandaloneAd();

 private:
  using Queue = std::deque<std::shared_ptr<YMRVastModel>>;

  // `InLine`, or else `Wrapper`, of this model's ad in each document that has one.
  std::vector<const XML::Element*> adsOfChain() const;
  std::vector<SKVASTUrlWithId> urlsOfChain(std::initializer_list<std::string_view> path) const;
  std::shared_ptr<YMRVastModel> makeChild(const YMRTagRules::Child& of) const;

  const YMRTagRules& rules_;
  std::optional<VASTDocument> vastDocument_;
  std::vector<VASTDocument> vastDocumentArray_;
  Models adModels_;
  std::string adID_;
  std::vector<std::string> adIDs_;
  std::vector<std::size_t> adPositions_;
  std::optional<std::string> adSequence_;
  std::weak_ptr<YMRVastModel> parent_;
  // The parent's list, shared with it and its other children, and where it goes on those above it.
  std::vector<std::shared_ptr<Queue>> fallBacks_;
  YMRTagRules::Allowance allowance_;
  std::shared_ptr<Queue> standaloneAdModels_ = std::make_shared<Queue>();
  std::optional<SKVASTError> vastError_;
  std::string vastErrorReason_;
};
