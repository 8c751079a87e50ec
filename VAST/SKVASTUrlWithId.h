#pragma once

#include <optional>
#include <string>
#include <utility>

#include "platform/foundation/NSURL.h"

// A URL of a VAST document with the `id` of the element that held it. A plain value.
class SKVASTUrlWithId {
 public:
  SKVASTUrlWithId(std::optional<std::string> id, std::optional<NSURL> url)
      : identifier_(std::move(id)), url_(std::move(url)) {}

  // nil when the element had no `id`.
  const std::optional<std::string>& id_() const { return identifier_; }
  // nil when the element's text is no URL: the XPath queries list such elements too.
  const std::optional<NSURL>& url() const { return url_; }

 private:
  std::optional<std::string> identifier_;
  std::optional<NSURL> url_;
};
