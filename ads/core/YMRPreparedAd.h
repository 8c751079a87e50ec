#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "VAST/SKVASTError.h"
#include "VAST/SKVASTUrlWithId.h"
#include "ads/core/SKVASTMediaFilePicker.h"
#include "platform/Export.h"

class YMRVastModel;

// What one ad comes to: a film with all that belongs to it, or why there is none. A plain value; any thread.
struct YMR_API YMRPreparedAd {
  // Chooses one of the files, of which there is at least one; nil refuses them all.
  using Pick = std::function<std::shared_ptr<SKVASTMediaFile>(const SKVASTMediaFilePicker::Files& files)>;

  // Asks the model for everything and picks the film.
  static YMRPreparedAd from(const YMRVastModel& model, const Pick& pick = SKVASTMediaFilePicker::pick);

  std::map<std::string, std::vector<NSURL>> trackingEvents;  // URLs by the event's name
  std::vector<SKVASTUrlWithId> impressions;
  std::vector<SKVASTUrlWithId> errors;
  std::shared_ptr<SKVASTMediaFile> mediaFile;  // has a URL; nil exactly when the ad has failed
  std::optional<std::string> title;            // of an ad with a film, as is the description
  std::optional<std::string> description;
  // When there were files but none to play, SKVASTErrorNoInternet without a network, else
  // SKVASTErrorMediaFileNotCompatible; without files the model's own error, which counts as SKVASTErrorNoAd where no
  // step has set one.
  std::optional<SKVASTError> failure;
  std::string reason;  // why the ad's document did not come, where the failure's own text would mislead; else empty

  // Whether the ad's documents led to no ad at all, so that a stand-alone ad may take its place.
  bool foundNothing() const;
  // The failure for people: the reason, or else the text of the error. Only when there is one.
  std::string message() const;
  // The failure for the error URLs; only when there is one.
  std::string errorCode() const;
};
