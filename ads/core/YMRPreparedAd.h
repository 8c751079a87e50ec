#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "VAST/Parser/VASTOffset.h"
#include "VAST/Parser/YMRVastModel.h"
#include "VAST/SKVASTError.h"
#include "VAST/SKVASTUrlWithId.h"
#include "ads/core/SKVASTMediaFilePicker.h"
#include "platform/Export.h"

// What one ad comes to: a film with all that belongs to it, or why there is none. A plain value; any thread.
struct YMR_API YMRPreparedAd {
  // Chooses one of the files, of which there is at least one; nil refuses them all.
  using Pick = std::function<std::shared_ptr<SKVASTMediaFile>(const SKVASTMediaFilePicker::Files& files)>;

  // Asks the model for everything and picks the film; without `pick` as the model's profile does. What of the ad is not
  // run here is logged.
  static YMRPreparedAd from(const YMRVastModel& model, const Pick& pick = nullptr);

  std::map<std::string, std::vector<NSURL>> trackingEvents;  // URLs by the event's name
  std::vector<SKVASTUrlWithId> impressions;
  std::vector<SKVASTUrlWithId> errors;
  std::vector<YMRVastModel::Progress> progress;  // these two only where the profile knows them
  std::optional<VASTOffset> skipOffset;          // from when on it may be skipped; nil for never
  std::vector<VASTNotRun> notRun;                // also of an ad that has failed
  std::optional<std::string> sequence;           // in its pod
  std::shared_ptr<SKVASTMediaFile> mediaFile;    // has a URL; nil exactly when the ad has failed
  std::optional<std::string> title;              // of an ad with a film, as is the description
  std::optional<std::string> description;
  // When there were files but none to play, SKVASTErrorNoInternet without a network, else
  // SKVASTErrorMediaFileNotCompatible; without files the model's own error, which counts as SKVASTErrorNoAd where no
  // step has set one.
  std::optional<SKVASTError> failure;
  std::optional<int> code;  // of the failure, where the profile knows it better than by its error
  // What it was made of, whose stand-alone ads may take its place as long as nothing of it was seen; nil where the
  // profile lets none.
  std::shared_ptr<YMRVastModel> replaceable;
  std::string reason;  // why the ad's document did not come, where the failure's own text would mislead; else empty

  // By which it was prepared.
  const YMRTagRules& rules() const { return YMRTagRules::of(profile); }
  YMRTagProfile profile = YMRTagProfileExact;

  // Whether the ad's documents led to no ad at all.
  bool foundNothing() const;
  // The failure for people: the reason, or else the text of the error. Only when there is one.
  std::string message() const;
  // The failure for the error URLs; only when there is one.
  std::string errorCode() const;
  // The same for a film that failed while it was to be played; `otherwise` is what counts where the
  // profile knows no better.
  std::string errorCodeOfFilm(const NSError& error, SKVASTError otherwise = SKVASTErrorPlayback) const;
};
