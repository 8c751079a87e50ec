#include "platform/avfoundation/process/PlaylistLook.h"

#include <gtest/gtest.h>

#include "platform/avfoundation/bytes/ByteStore.h"
#include "platform/dispatch/VirtualRunLoop.h"

using namespace std::string_literals;

namespace {

using Finding = PlaylistLook::Finding;

TEST(PlaylistLook, tellsListsThatAreReadHereFromThoseThatTheLibraryReadsAndMediaAtTheFirstByte) {
  const auto look = [](const std::string& begin) { return PlaylistLook::findingOf(begin, false); };
  for (const auto& list : {"#EXTM3U\n"s, "\xEF\xBB\xBF#EXTM3U"s}) EXPECT_EQ(look(list), Finding::segments) << list;
  for (const auto& list : {"<?xml version='1.0'?>\n<MPD xmlns"s, "\n <mpd>"s,
                           "\xFF\xFE<\0S\0m\0o\0o\0t\0h\0S\0t\0r\0e\0a\0m\0i\0n\0g\0M\0e\0d\0i\0a\0"s}) {
    EXPECT_EQ(look(list), Finding::playlist) << list;
    for (std::size_t part = 0; part < list.size() / 2; ++part) EXPECT_EQ(look(list.substr(0, part)), std::nullopt);
  }
  for (const auto& media : {"\0\0\0\x20"
                            "ftyp"s,
                            "G"s, "\x1A"s, "ID3"s, "\xFF\xFB\x90"s, "#EXX"s}) {
    EXPECT_EQ(look(media), Finding::media) << media;
  }
  EXPECT_EQ(look("<html>"), std::nullopt);
  EXPECT_EQ(PlaylistLook::findingOf("<html>", true), Finding::media);
}

TEST(PlaylistLook, waitsForAllOfAListWithoutAThreadAndGoesWithItsEngine) {
  VirtualRunLoop loop;
  const auto store = ByteStore::make(1 << 20);
  std::optional<PlaylistLook::Result> found;
  auto look = std::make_unique<PlaylistLook>(store->makeReader(), [&](const auto& result) { found = result; });
  loop.advance(std::chrono::seconds(5));
  store->tellHead({});
  store->append(0, std::as_bytes(std::span("#EXT", 4)));
  loop.advance(std::chrono::seconds(5));
  store->append(0, std::as_bytes(std::span("M3U\n#EXT", 8)));
  loop.advance(std::chrono::seconds(5));
  EXPECT_FALSE(found);
  store->tellEnd(12);
  loop.advance(std::chrono::milliseconds(101));
  ASSERT_TRUE(found);
  EXPECT_EQ(found->finding, Finding::segments);
  EXPECT_EQ(found->text, "#EXTM3U\n#EXT");
  look = std::make_unique<PlaylistLook>(store->makeReader(), [](const auto&) { FAIL(); });
  look.reset();
  EXPECT_EQ(loop.pendingTimers(), 0u);
}

}  // namespace
