#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/Export.h"

// An absolute URL that parsed. A plain value; any thread. nil is std::nullopt.
//
// Parsing is libcurl's, which also does the fetching, so that what is checked is what is opened. Any scheme
// before "://" parses (callers decide what they open); text without one, with control characters or spaces does not.
class YMR_API NSURL {
 public:
  // nil for text that is not an absolute URL.
  static std::optional<NSURL> URLWithString(std::string_view text);
  // A file URL; a relative path counts from the working directory. An empty path gives that directory.
  static NSURL fileURLWithPath(std::string_view path);
  // What a person typed on a command line: a URL when it has "://", else a path.
  static std::optional<NSURL> URLFromUserInput(std::string_view text);

  // As given, but with scheme and host in lower case, "." and ".." of the path resolved and a path of at least "/".
  const std::string& absoluteString() const { return text_; }
  // Lower case, without the colon.
  const std::string& scheme() const { return scheme_; }
  // In lower case, without port and brackets; empty where the scheme has none.
  const std::string& host() const { return host_; }
  // Percent-decoded; for a file URL the path to open.
  const std::string& path() const { return path_; }
  // The last component's ending in lower case without the dot; empty when it has none.
  std::string pathExtension() const;

  bool isFileURL() const { return scheme_ == "file"; }
  bool isHTTP() const { return scheme_ == "http" || scheme_ == "https"; }

  friend bool operator==(const NSURL& left, const NSURL& right) { return left.text_ == right.text_; }

 private:
  NSURL() = default;
  std::string text_;
  std::string scheme_;
  std::string host_;
  std::string path_;
};
