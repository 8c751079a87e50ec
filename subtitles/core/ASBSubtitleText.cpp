#include "subtitles/core/ASBSubtitleText.h"

#include <algorithm>
#include <array>
#include <memory>
#include <string_view>
#include <utility>

#include "platform/dispatch/Dispatch.h"
#include "platform/foundation/URLLoader.h"
#include "platform/foundation/UTF8.h"

using namespace std::chrono_literals;
using namespace std::string_view_literals;

namespace {

constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";

ASBSubtitleText failed(NSError error) {
  return {"", std::move(error), false};
}

// UTF-16 of nearly any text of subtitles has a zero in every other byte.
std::string_view zerosOfUTF16(std::string_view bytes) {
  const std::string_view sample = bytes.substr(0, 4096);
  std::array<std::size_t, 2> zeros{};  // at even and at odd places
  for (std::size_t i = 0; i < sample.size(); ++i) zeros[i % 2] += sample[i] == '\0';
  if (zeros[1] * 4 > sample.size() && zeros[0] * 4 < zeros[1])
    return "UTF-16 (little endian, without a byte-order mark)";
  if (zeros[0] * 4 > sample.size() && zeros[1] * 4 < zeros[0]) return "UTF-16 (big endian, without a byte-order mark)";
  return "";
}

// What text that is not UTF-8 looks like.
std::string looksOf(std::string_view bytes) {
  if (bytes.starts_with("\xFF\xFE\0\0"sv) || bytes.starts_with("\0\0\xFE\xFF"sv)) return "UTF-32";
  if (bytes.starts_with("\xFF\xFE")) return "UTF-16 (little endian)";
  if (bytes.starts_with("\xFE\xFF")) return "UTF-16 (big endian)";
  if (bytes.starts_with("\x1F\x8B") || bytes.starts_with("PK\x03\x04")) return "a packed file, which must be unpacked";
  if (const auto utf16 = zerosOfUTF16(bytes); !utf16.empty()) return std::string(utf16);

  std::size_t good = 0, bad = 0, line = 1, lineOfBad = 0;
  while (!bytes.empty()) {
    const UTF8Character character = firstUTF8Character(bytes);
    line += character.value == '\n';
    good += character.length > 1;
    bad += !character.isValid;
    if (!character.isValid && lineOfBad == 0) lineOfBad = line;
    bytes.remove_prefix(character.length);
  }
  return (good > bad ? "UTF-8 that is damaged, first in line "
                     : "Latin-1 or another eight-bit encoding, first in line ") +
         std::to_string(lineOfBad);
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
  request.connecting = 3s;
  request.silence = 5s;
  request.whole = 10s;
  request.maximumBytes = 16 * 1024 * 1024;
  request.allowsFiles = true;
  return request;
}

}  // namespace

ASBSubtitleText subtitleTextOfBytes(std::string bytes) {
  if (!isUTF8(bytes)) {
    return failed({NSCocoaErrorDomain, NSFileReadInapplicableStringEncodingError,
                   "The text is not UTF-8: it looks like " + looksOf(bytes) + ". Save it as UTF-8."});
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
