#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "VAST/Parser/SKVAST2Parser.h"
#include "VAST/Parser/YMRVastModel.h"
#include "apps/ymrvast/Options.h"

class PlainRunLoop;

// What the library made of an ad tag. Nothing of the model is consumed by looking.
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
  struct Ad {
    std::shared_ptr<YMRVastModel> model;
    std::vector<MediaFile> files;
    std::optional<NSURL> picked;
    std::optional<SKVASTError> failure;  // what the player would report in place of playing it
    std::string reason;                  // for the lack of media files in a document that came
    bool isShown = false;                // by the player, when nothing fails on the way
  };
  struct Validation {
    bool isValid = true;
    std::vector<std::string> messages;
  };

  std::string source;
  std::string fault;  // of a document that was not fetched, as a hop's reason
  std::shared_ptr<YMRVastModel> model;
  std::vector<Hop> hops;
  std::vector<Ad> ads;         // in the order in which they are played
  std::vector<Ad> standalone;  // fall-backs, the root's first
  std::size_t shownCount = 0;
  std::optional<Validation> validation;  // when asked for
};

// Fetches and resolves what the options name; a document that was read from a file or standard input comes in
// `document`. Runs the loop until the request has completed.
Inspection inspect(const Options& options, const std::optional<VASTDocument>& document, PlainRunLoop& loop);
