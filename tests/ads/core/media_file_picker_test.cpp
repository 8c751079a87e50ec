#include "ads/core/SKVASTMediaFilePicker.h"

#include <gmock/gmock.h>

#include "platform/dispatch/VirtualRunLoop.h"
#include "platform/uikit/values/UIScreen.h"
#include "tests/VAST/Parser/RecordedLog.h"
#include "tests/support/NetworkNamespace.h"
#include "tests/support/ScriptedURLLoader.h"

using namespace std::chrono_literals;
using testing::Contains;
using testing::ElementsAre;

namespace {

std::shared_ptr<SKVASTMediaFile> file(const char* width, const char* height,
                                      std::optional<std::string> type = "video/mp4") {
  const std::optional<std::string> nil;
  return std::make_shared<SKVASTMediaFile>(nil, nil, std::move(type), nil, width, height, nil, nil, nil,
                                           std::string("http://m.example/") + width + "x" + height);
}

struct MediaFilePicker : testing::Test {
  MediaFilePicker() {
    SKVASTMediaFilePicker::setProbeHost("127.0.0.1");
    UIScreen::mainScreen().setSize({1920, 1080});
  }
  static std::string pick(const SKVASTMediaFilePicker::Files& files) {
    const auto picked = SKVASTMediaFilePicker::pick(files);
    return picked ? picked->url()->path().substr(1) : "nil";
  }
};

TEST_F(MediaFilePicker, takesTheAreaNearestToTheScreens) {
  const auto small = file("640", "360"), middle = file("1280", "720"), large = file("1920", "1080");
  const struct {
    CGSize screen;
    SKVASTMediaFilePicker::Files files;
    const char* expected;
  } rows[] = {
      {{1920, 1080}, {small, middle, large}, "1920x1080"},
      {{1920, 1080}, {large, small, middle}, "1920x1080"},
      {{1280, 720}, {small, middle, large}, "1280x720"},
      {{1, 1}, {large, middle, small}, "640x360"},
      {{3840, 2160}, {small, large}, "1920x1080"},
      {{1920, 1080}, {}, "nil"},
      // Equally near: the smaller one. 2000 is 1000 away from both 1000 and 3000.
      {{2000, 1}, {file("3000", "1"), file("1000", "1")}, "1000x1"},
      // Of equal areas the first is taken, and ends the search: no other has a smaller difference than the one before
      // it.
      {{200, 1}, {file("50", "2"), file("10", "10"), file("200", "1")}, "50x2"},
      // Without a size the area is 0.
      {{10, 10}, {file("", ""), file("20", "20")}, "x"},
      {{100.9, 1.001}, {file("100", "1"), file("101", "1")}, "101x1"},  // 101.0009 points count as 101
      // Products that pass 32 bits wrap: 65536 x 65536 counts as 0, 50000 x 50000 as a negative number.
      {{1920, 1080}, {file("65536", "65536"), large}, "1920x1080"},
      {{1, 1}, {file("50000", "50000"), file("2", "1")}, "2x1"},
      {{1e12, 1e12}, {large, small}, "1920x1080"},
  };
  for (const auto& row : rows) {
    UIScreen::mainScreen().setSize(row.screen);
    EXPECT_EQ(pick(row.files), row.expected) << row.screen.width << "x" << row.screen.height;
  }
}

TEST_F(MediaFilePicker, takesOnlyTypesThatThePlayerPlays) {
  for (const char* type : {"video/mp4", "VIDEO/MP4", "video/x-m4v", "video/Quicktime", "video/3gpp", "mp4", "x3gppx"}) {
    EXPECT_EQ(pick({file("1920", "1080", "video/webm"), file("1", "1", type)}), "1x1") << type;
  }
  for (const char* type : {"video/webm", "application/x-mpegURL", "video/mp", "", "video/mp\x14"}) {
    EXPECT_EQ(pick({file("1", "1", type)}), "nil") << type;
  }
  EXPECT_EQ(pick({file("1", "1", std::nullopt)}), "nil");
}

TEST_F(MediaFilePicker, onAMachineThatReachesOnlyItsAdServerThereIsANetworkWhileThatAnswers) {
  const NetworkNamespace network;
  if (!network.obstacle().empty()) GTEST_SKIP() << network.obstacle();
  VirtualRunLoop loop;
  const ScriptedLoaderInPlace net;
  const RecordedLog log;
  EXPECT_EQ(pick({file("640", "360")}), "640x360");
  EXPECT_THAT(log.lines(), ElementsAre("debug VAST - Mediafile Picker: NetworkType: 2",
                                       "debug VAST - Mediafile Picker: Selected Media File: http://m.example/640x360"));
  SKVASTMediaFilePicker::setProbeHost("elsewhere.invalid");
  for (const bool hasNetwork : {false, true, false}) {
    EXPECT_EQ(SKVASTMediaFilePicker::networkType(), hasNetwork ? SKNetworkTypeWiFi : SKNetworkTypeNone);
    EXPECT_EQ(pick({file("640", "360")}), hasNetwork ? "640x360" : "nil");
    EXPECT_EQ(SKVASTMediaFilePicker::errorOfNone(), hasNetwork ? 5 : 6);
    loop.advance(2min);
    if (!hasNetwork) net.loader->noteAnswer();
    if (!hasNetwork) loop.advance(1min);
  }
  EXPECT_THAT(log.lines(), Contains("error VAST - Mediafile Picker: There is no network: no route leads to "
                                    "elsewhere.invalid, and no server answered lately"));
  SKVASTMediaFilePicker::setProbeHost("");
  EXPECT_EQ(pick({file("640", "360")}), "nil") << "said to be none";
}

}  // namespace
