#include "platform/foundation/NSURL.h"

#include <gmock/gmock.h>
#include <unistd.h>

#include <filesystem>

namespace {

TEST(NSURLTest, partsOfWhatParses) {
  const struct {
    const char* text;
    const char* absolute;
    const char* scheme;
    const char* host;
    const char* path;
  } rows[] = {
      {"http://h/x?code=[ERRORCODE]", "http://h/x?code=[ERRORCODE]", "http", "h", "/x"},
      {"HTTPS://Ads.Example:8443/Clip.MP4", "https://ads.example:8443/Clip.MP4", "https", "ads.example", "/Clip.MP4"},
      {"http://host?x=1#f", "http://host/?x=1#f", "http", "host", "/"},
      {"http://h/a/../b/./c.m3u8", "http://h/b/c.m3u8", "http", "h", "/b/c.m3u8"},
      {"http://[::1]:80/x", "http://[::1]:80/x", "http", "::1", "/x"},
      {"http://h/%00", "http://h/%00", "http", "h", "/%00"},
      {"http://1/x", "http://0.0.0.1/x", "http", "0.0.0.1", "/x"},
      {"file:///a%20b.mp4", "file:///a%20b.mp4", "file", "", "/a b.mp4"},
      // What is checked is what is opened: the host is the one after the last "@".
      {"http://good.example\\@evil.example/", "http://good.example\\@evil.example/", "http", "evil.example", "/"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.text);
    const auto url = NSURL::URLWithString(row.text);
    ASSERT_TRUE(url);
    EXPECT_EQ(url->absoluteString(), row.absolute);
    EXPECT_EQ(url->scheme(), row.scheme);
    EXPECT_EQ(url->host(), row.host);
    EXPECT_EQ(url->path(), row.path);
    EXPECT_EQ(NSURL::URLWithString(url->absoluteString()), url) << "parsing again changes it";
    const std::string scheme = row.scheme;
    EXPECT_EQ(url->isHTTP(), scheme == "http" || scheme == "https");
    EXPECT_EQ(url->isFileURL(), scheme == "file");
  }
}

TEST(NSURLTest, whatIsNoURLIsNil) {
  for (const std::string text :
       {"", "h/x", "//h/x", "/x", "http://", "http:/h/x", "http://h:99999/", "http://ho st/", "http://h/a b",
        "http://h/\n", " http://h/", "\thttp://h/", "java\nscript://h", "javascript:alert(1)", "data:text/plain,x",
        "mailto:a@b", "http://h%00/x", "http://h%25x/", "http://%7fh/"}) {
    EXPECT_FALSE(NSURL::URLWithString(text)) << text;
  }
  EXPECT_FALSE(NSURL::URLWithString(std::string_view("http://h/\0x", 11)));
}

TEST(NSURLTest, filesByPathAndByWhatAPersonTypes) {
  const NSURL url = NSURL::fileURLWithPath("/tmp/x/../a b#1?%.mp4");
  EXPECT_EQ(url.absoluteString(), "file:///tmp/a%20b%231%3F%25.mp4");
  EXPECT_EQ(NSURL::URLWithString(url.absoluteString())->path(), url.path());
  const std::string here = std::filesystem::current_path().string();
  EXPECT_EQ(NSURL::fileURLWithPath("clip.mp4").path(), here + "/clip.mp4");
  EXPECT_EQ(NSURL::fileURLWithPath("").path(), here);
  EXPECT_EQ(NSURL::URLFromUserInput("http:name.mp4")->path(), here + "/http:name.mp4");
  EXPECT_FALSE(NSURL::URLFromUserInput("http://"));
}

}  // namespace
