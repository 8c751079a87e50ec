#pragma once

#include <string>
#include <utility>

#include "platform/foundation/NSURL.h"

// One external subtitle track of a programme: a file in the SubRip form. A plain value; any thread.
class YMRSubtitle {
 public:
  static YMRSubtitle subtitleWithUrl(NSURL url, std::string label) { return {std::move(url), std::move(label)}; }

  // Where the file lies: a file, http or https.
  const NSURL& url() const { return url_; }
  void setUrl(NSURL url) { url_ = std::move(url); }
  // The track's name for menus of the host's own; the player never reads it.
  const std::string& label() const { return label_; }
  void setLabel(std::string label) { label_ = std::move(label); }

 private:
  YMRSubtitle(NSURL url, std::string label) : url_(std::move(url)), label_(std::move(label)) {}

  NSURL url_;
  std::string label_;
};
