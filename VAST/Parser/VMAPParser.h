#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "VAST/Parser/VMAPDocument.h"
#include "VAST/YMRTagProfile.h"
#include "platform/Export.h"
#include "platform/foundation/NSURL.h"

class URLLoader;

// Fetches a schedule document over http or https, and reads it off the main thread. Within 10 s and 16 MiB. Main
// thread.
class YMR_API VMAPParser {
 public:
  struct Result {
    std::optional<VMAPDocument> document;  // nil: there is none
    std::string problem;                   // why, for people
  };
  // Called exactly once, on the main queue, not before the call that asks has returned.
  using Completion = std::function<void(Result)>;

  // Macros of the address are filled in where the profile does that. Without a loader URLLoader::shared().
  static void parseWithUrl(const NSURL& url, Completion completion, YMRTagProfile profile = YMRTagProfileExact,
                           std::shared_ptr<URLLoader> loader = nullptr);
  static void parseWithData(std::vector<std::byte> document, Completion completion);
};
