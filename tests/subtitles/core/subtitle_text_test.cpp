// From the file to its text: what servers do wrong is an error within the bounds.
#include "subtitles/core/ASBSubtitleText.h"

#include <gmock/gmock.h>

#include "platform/dispatch/VirtualRunLoop.h"
#include "tests/support/ScriptedURLLoader.h"

using namespace std::chrono_literals;
using namespace std::string_literals;
using testing::AllOf;
using testing::HasSubstr;

namespace {

const std::string address = "http://films.test/a.srt";

TEST(SubtitleText, dropsOneByteOrderMarkAndSaysWhatOtherEncodingsLookLike) {
  EXPECT_EQ(subtitleTextOfBytes("\ufeff\ufeff1\r\n").content, "\ufeff1\r\n");
  EXPECT_EQ(subtitleTextOfBytes("zero \0 byte"s).content, "zero \0 byte"s);
  const std::pair<std::string, const char*> rows[] = {
      {"\xff\xfe\n\0"s, "UTF-16 (little endian)"},
      {"1\0\n\0\xe9\0a\0b\0"s, "UTF-16 (little endian, without"},
      {"\0001\0\n\0\xe9\0a"s, "UTF-16 (big endian, without"},
      {"1\n\ncaf\xe9 noir", "Latin-1 or another eight-bit encoding, first in line 3"},
      {"\x7f\x45\x4c\x46\1\1\0\2\xff"s, "binary data and no text. Choose"},
      {"\u00e9\u00e9\u00e9\n\u00e9\xe9", "UTF-8 that is damaged, first in line 2"},
      {"\xed\xa0\x80", "eight-bit"},  // a surrogate
  };
  for (const auto& [bytes, looks] : rows) {
    const auto text = subtitleTextOfBytes(bytes);
    ASSERT_TRUE(text.error) << looks;
    EXPECT_THAT(text.error->message, AllOf(HasSubstr("not UTF-8"), HasSubstr(looks)));
    EXPECT_EQ(text.content, "");
  }
}

TEST(SubtitleText, waitsForAServerWithinItsBoundsAndTellsTheMainQueueOnce) {
  VirtualRunLoop loop;
  const ScriptedLoaderInPlace script;
  script.loader->answer(address, {.body = "\ufeff1", .delay = 4s});
  const auto url = *NSURL::URLWithString(address);
  EXPECT_EQ(readSubtitleText(url).content, "1");
  const URLRequest& request = script.loader->asked().at(0);
  EXPECT_EQ(request.connectingLimit, 3s);
  EXPECT_EQ(request.silenceLimit, 5s);
  EXPECT_EQ(request.timeLimit, 10s);
  EXPECT_EQ(request.bytesLimit, 16u << 20);
  EXPECT_TRUE(request.allowsFiles);

  script.loader->answer(address, {.never = true});
  script.loader->answer(address, {.status = 404, .body = "<html>"});
  script.loader->answer(address, "\xff");
  const auto began = loop.now();
  EXPECT_EQ(readSubtitleText(url).content, "1") << "the first answer is there once more";
  for (const int code : {NSURLErrorTimedOut, NSURLErrorBadServerResponse, NSFileReadInapplicableStringEncodingError}) {
    const auto text = readSubtitleText(url);
    EXPECT_EQ(text.error.value_or(NSError{}).code, code);
    EXPECT_EQ(text.content, "");
  }
  EXPECT_EQ(loop.now() - began, 9s);

  int calls = 0;
  readSubtitleText(url, [&](const ASBSubtitleText& text) {
    ++calls;
    EXPECT_TRUE(loop.isCurrent());
    EXPECT_TRUE(text.error);
  });
  EXPECT_EQ(calls, 0);
  loop.advance(20s);
  EXPECT_EQ(calls, 1);
}

}  // namespace
