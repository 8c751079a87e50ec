#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "platform/Export.h"

// An absolute URL that parsed. A plain value; any thread. nil is std::nullopt.
//
// Parsing is libcurl's, which also does the fetching, so that what is checked is what is opened. Any scheme
// before "://" parses (callers decide what they open); text without one, with control characters or spaces does not.
class YMR_API NSURL {
 public:
  // nil for text that is not an absolute URL.
  static std::optional<NSURL> URLWithString(std::string_view text);
  // What a document at `base` means by a reference of its own, absolute or not; spaces in it are escaped.
  static std::optional<NSURL> URLWithString(std::string_view text, const NSURL& base);
  // A file URL; a relative path counts from the working directory. An empty path gives that directory.
  static NSURL fileURLWithPath(std::string_view path);
  // What a person typed on a command line: a URL when it has "://", else a path.
  static std::optional<NSURL> URLFromUserInput(std::string_view text);

  // As given, but with scheme and host in lower case, "." and ".." of the path resolved and a path of at least "/".
  const std::string& absoluteString() const { return text_; }
  // Lower case, without the colon.
  std::string scheme() const;
  // In lower case, without port and brackets; empty where the scheme has none.
  std::string host() const;
  // Percent-decoded; for a file URL the path to open.
  std::string path() const;

  bool isFileURL() const;
  bool isHTTP() const;

  friend bool operator==(const NSURL& left, const NSURL& right) { return left.text_ == right.text_; }

 private:
  struct Parts {
    std::string scheme, host, path;
  };

  NSURL(std::string text, std::shared_ptr<const Parts> parts) : text_(std::move(text)), parts_(std::move(parts)) {}
  static std::optional<NSURL> parse(std::string_view text);
  std::size_t endOfScheme() const;

  std::string text_;
  std::shared_ptr<const Parts> parts_;  // null where they stand in the text as they are
};

// What a message calls a URL: it is there without user name, password, query and fragment, which may hold secrets. A
// query that was there is shown as "?…", what is long has "…" in its middle, and what no message should have in it
// (control characters, bytes that are no UTF-8) is replaced. A file's last name, if it is one.
YMR_API std::string nameForMessage(const NSURL& url);
// The same of text that need not be a URL.
YMR_API std::string nameForMessage(std::string_view url);
