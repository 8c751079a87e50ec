#include "subtitles/core/ASBSubtitleText.h"

#include <memory>
#include <string_view>
#include <utility>

#include "platform/dispatch/Dispatch.h"
#include "platform/foundation/URLLoader.h"
#include "platform/foundation/UTF8.h"
#include "subtitles/core/ASBSubtitleKind.h"

using namespace std::chrono_literals;

namespace {

constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";

ASBSubtitleText failed(NSError error) {
  return {"", std::move(error), false};
}

ASBSubtitleText textOf(const URLResponse& response) {
  if (response.error) return failed(*response.error);
  if (response.status != 200) {
    return failed({NSURLErrorDomain, NSURLErrorBadServerResponse,
                   "The server answers with status " + std::to_string(response.status) + " and not with the file."});
  }
  return subtitleTextOfBytes({reinterpret_cast<const char*>(response.body.data()), response.body.size()});
}

URLRequest requestFor(const NSURL& url) {
  URLRequest request{url};
  request.connectingLimit = 3s;
  request.silenceLimit = 5s;
  request.timeLimit = 10s;
  request.bytesLimit = 16 * 1024 * 1024;
  request.allowsFiles = true;
  return request;
}

}  // namespace

ASBSubtitleText subtitleTextOfBytes(std::string bytes) {
  if (!isUTF8(bytes)) {
    return failed({NSCocoaErrorDomain, NSFileReadInapplicableStringEncodingError,
                   "The text is not UTF-8: it looks like " + looksOfBytes(bytes)});
  }
  const bool hasMark = bytes.starts_with(byteOrderMark);
  if (hasMark) bytes.erase(0, byteOrderMark.size());
  return {std::move(bytes), std::nullopt, hasMark};
}

ASBSubtitleText readSubtitleText(const NSURL& url) {
  const auto text = std::make_shared<ASBSubtitleText>();
  const auto group = dispatch_group_create();
  dispatch_group_enter(group);
  URLLoader::shared()->load(requestFor(url), dispatch_get_global_queue(), [text, group](const URLResponse& response) {
    *text = textOf(response);
    dispatch_group_leave(group);
  });
  dispatch_group_wait(group);
  return std::move(*text);
}

void readSubtitleText(const NSURL& url, std::function<void(ASBSubtitleText)> completion) {
  // What the completion owns goes with it to the main queue.
  const auto owned = std::make_shared<std::function<void(ASBSubtitleText)>>(std::move(completion));
  URLLoader::shared()->load(requestFor(url), dispatch_get_global_queue(), [owned](const URLResponse& response) {
    dispatch_async(dispatch_get_main_queue(), [completion = std::move(*owned), text = textOf(response)]() mutable {
      completion(std::move(text));
    });
  });
}
