// Texts of the media: what is offered can be drawn, and comes when it is due.
#include "tests/platform/avfoundation/engine/EngineTest.h"

namespace {

class Captions : public EngineTest {
 protected:
  // The first of the legible tracks, once there is one; nil when none comes.
  std::optional<MediaTrack> legible() {
    std::optional<MediaTrack> first;
    runUntil([&] {
      for (const MediaTrack& track : engine->tracks()) {
        if (!first && track.kind >= MediaTrack::Kind::subtitle) first = track;
      }
      return first.has_value() || told.ended > 0;
    });
    return first;
  }
  std::vector<std::string> texts() const {
    std::vector<std::string> all;
    for (const auto& caption : told.captions) all.push_back(caption ? caption->text : "");
    return all;
  }
};

TEST_F(Captions, ofLine21AreDrawnFromATrackAndFromThePictures) {
  for (const char* where : {"captions.mov", "captioned.mp4", "@captioned.mp4"}) {
    SCOPED_TRACE(where);
    ASSERT_TRUE(open(where));
    engine->setRate(1);
    const auto track = legible();
    ASSERT_TRUE(track);
    EXPECT_EQ(track->kind, MediaTrack::Kind::closedCaption);
    ASSERT_EQ(seek(0), true);
    engine->selectLegibleTrack(track->identifier);
    ASSERT_TRUE(runUntil([this] { return told.ended > 0; }));
    EXPECT_EQ(texts().at(0), "HELLO");
    EXPECT_EQ(texts().size(), track->identifier.ends_with("captions") ? 2u : 1u) << "it is taken away, or not";
  }
}

TEST_F(Captions, thatNothingHereDrawsAreNotOffered) {
  ASSERT_TRUE(open("undrawn.mkv"));
  EXPECT_TRUE(playTo(0.5));
  EXPECT_EQ(engine->tracks().size(), 2u);
}

TEST_F(Captions, ofATrackThatEndsEarlyStayAndComeBack) {
  ASSERT_TRUE(open("early.mkv"));
  const auto track = legible();
  ASSERT_TRUE(playTo(2));
  ASSERT_TRUE(track);
  engine->selectLegibleTrack(track->identifier);
  ASSERT_TRUE(runUntil([this] { return !told.captions.empty(); }));
  EXPECT_LT(position(), 3) << "it is shown for as long as it lasts";
  EXPECT_TRUE(runUntil([this] { return told.captions.size() == 2; }));
  ASSERT_EQ(seek(9.5), true);
  ASSERT_TRUE(runUntil([this] { return told.ended > 0; }));
  ASSERT_EQ(seek(1.5), true);
  EXPECT_TRUE(runUntil([this] { return told.captions.size() == 3; }));
  EXPECT_THAT(texts(), testing::ElementsAre("English one", "", "English one"));
}

}  // namespace
