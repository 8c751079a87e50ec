#pragma once

#include <functional>
#include <optional>
#include <string>

#include "platform/Export.h"
#include "platform/foundation/NSError.h"
#include "platform/foundation/NSURL.h"

// The text of a file of subtitles, or why there is none. A plain value.
struct ASBSubtitleText {
  std::string content;           // UTF-8, without its byte-order mark; empty with an error
  std::optional<NSError> error;  // its message is for people
  bool hadByteOrderMark = false;
};

// Reads what http, https and file URLs lead to, within 3 s for a connection, 5 s without data, 10 s in all and 16 MiB.
// Only regular files are opened. A status other than 200 is an error, and so is text that is not UTF-8, whose message
// says what it looks like. Both forms need an installed run loop and go through URLLoader::shared().

// Holds the caller up until it is read; any thread. In virtual form it runs the loop.
YMR_API ASBSubtitleText readSubtitleText(const NSURL& url);
// Reads elsewhere and calls `completion` exactly once, on the main queue, never before it has returned. Any thread.
YMR_API void readSubtitleText(const NSURL& url, std::function<void(ASBSubtitleText)> completion);

// The same of bytes that were read already. Any thread.
YMR_API ASBSubtitleText subtitleTextOfBytes(std::string bytes);
