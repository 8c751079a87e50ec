#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "VAST/Parser/SKVAST2Parser.h"
#include "VAST/Parser/VMAPDocument.h"
#include "VAST/Parser/YMRVastModel.h"
#include "ads/core/YMRPreparedAd.h"
#include "apps/ymrvast/Options.h"

class PlainRunLoop;

// What the library made of an ad tag, and what the player would make of it.
struct Inspection {
  struct Hop {
    std::string url;
    int depth;
    long status;
    std::size_t bytes;
    std::chrono::milliseconds elapsed;
    std::optional<SKVASTError> error;
    std::string reason;  // for the lack of a response, or of a document or an ad in it
  };
  struct MediaFile {
    std::shared_ptr<SKVASTMediaFile> file;
    std::string verdict;  // why it was not picked; empty for the one that was
  };
  // What the profile that was not asked for makes of the same ad.
  struct Other {
    YMRTagProfile profile = YMRTagProfileExact;
    std::optional<NSURL> picked;  // nil: it shows nothing
    std::string why;              // they differ; empty when they don't
  };
  struct Ad {
    std::shared_ptr<YMRVastModel> model;
    YMRPreparedAd prepared;
    std::vector<MediaFile> files;  // as the document lists them
    std::string reason;            // for the lack of media files in a document that came, or for its refusal
    bool isShown = false;          // by the player, when nothing fails on the way
    Other other;

    // Where the film is that the player would play; nil for none.
    std::optional<NSURL> picked() const { return prepared.mediaFile ? prepared.mediaFile->url() : std::nullopt; }
    // What the player would report in place of playing it; nil also for an ad that was never resolved.
    std::optional<SKVASTError> failure() const {
      return !model->vastError() && prepared.foundNothing() ? std::nullopt : prepared.failure;
    }
  };
  struct Validation {
    bool isValid = true;
    std::vector<std::string> messages;
  };

  // A break of a schedule document, and what its ads come to; empty for one that is left.
  struct Break {
    VMAPBreak listed;
    std::vector<Ad> ads;
  };

  std::string source;
  std::string fault;                    // of a document that was not fetched, as a hop's reason
  std::shared_ptr<YMRVastModel> model;  // its lists of stand-alone ads are used up
  std::vector<Hop> hops;
  std::vector<Ad> ads;         // in the order in which they are played
  std::vector<Ad> standalone;  // fall-backs, the root's first
  std::size_t shownCount = 0;
  std::optional<Validation> validation;  // when asked for
  std::optional<VMAPDocument> schedule;  // when the source is one; then there are breaks and no ads
  std::string scheduleProblem;           // when it is meant as one
  std::vector<Break> breaks;
  bool isSchedule() const { return schedule || !scheduleProblem.empty(); }
};

// Fetches and resolves what the options name; a document that was read from a file or standard input comes in
// `document`. Runs the loop until the request has completed.
Inspection inspect(const Options& options, const std::optional<VASTDocument>& document, PlainRunLoop& loop);
