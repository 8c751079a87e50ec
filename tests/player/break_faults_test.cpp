// It always comes back: each step of a break that can fail fails once, in turn, in breaks of every kind.
//
// One rule is checked each time: the programme plays again within a bound, where it stopped, with sound, and is
// followed; each ad has exactly one ending; each tracking URL gets exactly its requests, in order, and none after the
// end.
#include <gmock/gmock.h>

#include <algorithm>

#include "ads/core/SKVASTMediaFilePicker.h"
#include "tests/player/BreakRig.h"

using testing::ElementsAre;
using testing::EndsWith;
using testing::IsEmpty;

namespace {

const NSError broken{AVFoundationErrorDomain, AVErrorDecodeFailed, "broken"};
const std::string theTag = BreakRig::tag("break");

// A fault of the break's document: the one ad that stands for it ends with `code`.
struct DocumentFault {
  const char* name;
  int code;
  ScriptedURLLoader::Answer answer;
  std::string says = "";  // to the host, at the end
  Lines tracked{};        // of the ad "a", where there is one
};

// A fault of one ad, which ends with `code`, or as if nothing were wrong (-1), or without a word (-2).
struct AdFault {
  static constexpr int none = -1;
  static constexpr int silent = -2;
  const char* name;
  int code;
  Lines tracked;
  MediaScript film;
  std::string type = "video/mp4";
};

// The hop of a chain that takes for ever: as slow as may be, and leads to the next.
ScriptedURLLoader::Answer slowHop(int next) {
  auto answer = BreakRig::wrapper(BreakRig::tag(std::to_string(next)));
  answer.delay = 9900ms;
  return answer;
}

const std::vector<DocumentFault>& documentFaults() {
  static const std::vector<DocumentFault> faults{
      {"refused", 0, {.error = NSURLErrorCannotConnectToHost}, "Error:No internet connection"},
      {"404", 0, {.status = 404, .body = "nothing"}, "from " + theTag + ": The server answered 404."},
      {"silence", 5, {.never = true}},
      {"empty body", 1, {}},
      {"a page", 1, {.body = "<html><body>Welcome<br></body></html>"}},
      {"cut short", 1, {.body = BreakRig::pod({"a"}).body.substr(0, 300)}},
      {"no ad", 3, {.body = "<VAST version=\"3.0\"></VAST>"}},
      {"an empty ad", 3, {.body = "<VAST version=\"3.0\"><Ad id=\"a\"/></VAST>"}},
      {"not linear", 3, BreakRig::document({{"a", ""}}), "", {"error-303"}},
      {"wraps itself", 8, BreakRig::wrapper(theTag)},
      {"wraps a file", 0, BreakRig::wrapper("file:///etc/passwd"),
       "Error:No document from file:///etc/passwd: Only http and https are fetched."},
      {"hops that take for ever", 5, slowHop(1)},
  };
  return faults;
}

const std::vector<AdFault>& adFaults() {
  static const auto begun = [](const Lines& more) {
    Lines all{"impression", "start", "creativeView"};
    all.insert(all.end(), more.begin(), more.end());
    return all;
  };
  static const std::vector<AdFault> faults{
      {"nothing", AdFault::none, BreakRig::wholeAd(), {.duration = 8}},
      {"a type nobody plays", 4, {"error-401"}, {}, "application/x-mpegURL"},
      {"no linear creative", 3, {"error-303"}, {}, ""},
      {"no player", AdFault::silent, {"impression", "error-400"}, {.cannotBeMade = true}},
      {"does not load", 10, begun({"error-402"}), {.loadFailure = broken}},
      {"never loads", 10, begun({"error-402"}), {.neverLoads = true}},
      {"loads late", AdFault::none, BreakRig::wholeAd(), {.duration = 8, .loadDelay = 9}},
      {"breaks at once", 10, begun({"error-402"}), {.duration = 8, .failure = {{0, broken}}}},
      {"breaks in the middle", 10, begun({"firstQuartile", "error-402"}), {.duration = 8, .failure = {{4.5, broken}}}},
      {"breaks at its end",
       10,
       begun({"firstQuartile", "midpoint", "thirdQuartile", "error-402"}),
       {.duration = 8, .failure = {{8, broken}}}},
      {"waits for data", AdFault::none, BreakRig::wholeAd(), {.duration = 8, .stalls = {{4, 5}}}},
      {"runs dry", 10, begun({"firstQuartile", "error-402"}), {.duration = 8, .stalls = {{4.5, 1000}}}},
      {"one picture", AdFault::none, begun({"complete"}), {.duration = 0.04}},
      {"is shorter than declared", AdFault::none, BreakRig::wholeAd(), {.duration = 3.2}},
  };
  return faults;
}

// A break in a presentation: its kind, and how the host is to be heard.
class Presentation : public BreakRig {
 public:
  explicit Presentation(YMRAdRoll roll) : roll_(roll) {
    const auto url = NSURL::URLWithString(theTag);
    schedule->addAdBreak(roll == YMRAdRollPre   ? YMRAd::initPreRollWithVastUrl(url)
                         : roll == YMRAdRollMid ? YMRAd::initMidRollWithVastUrl(url, 3)
                                                : YMRAd::initPostRollWithVastUrl(url));
    host.inside["videoOnPause"] = [this] { stoppedAt_.push_back(hub().currentPosition()); };
    host.inside["videoOnPlay"] = [this] { startedAt_.push_back(hub().currentPosition()); };
  }

  void run() {
    ASSERT_TRUE(playToEnd(150s)) << "it never came back";
    const auto trackedByNow = tracked();
    loop.advance(60s);
    EXPECT_EQ(tracked(), trackedByNow) << "tracking after the end";
  }

  // What holds whatever happened in the break.
  void expectTheProgrammeCameBack() {
    EXPECT_TRUE(isAdGone());
    EXPECT_EQ(host.count("videoDidPlayFinished"), 1);
    EXPECT_EQ(host.count("videoOnError"), 0);
    EXPECT_EQ(host.count("videoAdOnPause") + host.count("videoAdOnPlay"), 0) << "nobody paused";
    for (int second = 0; second <= 20; ++second) {
      EXPECT_GE(std::count(host.heard.begin(), host.heard.end(), "videoOnTime " + std::to_string(second)), 1) << second;
    }
    ASSERT_FALSE(startedAt_.empty());
    EXPECT_EQ(startedAt_[0], 0);
    ASSERT_EQ(startedAt_.size(), roll_ == YMRAdRollMid ? 2u : 1u) << "starts that the host heard of";
    if (roll_ == YMRAdRollMid && stoppedAt_.size() == 2) {
      EXPECT_NEAR(startedAt_[1], stoppedAt_[0], 0.001) << "not where it stopped";
    }
    EXPECT_LE(media.logs(PlayerRig::film).front()->flushes, 0) << "it was sought back";
    EXPECT_EQ(media.aliveEngines(), 1);
    EXPECT_FALSE(roll_ != YMRAdRollPost && media.logs(PlayerRig::film).front()->muted);
    EXPECT_EQ(net.loader->inFlight(), 0);
  }

 private:
  const YMRAdRoll roll_;
  std::vector<double> stoppedAt_, startedAt_;
};

void forEachRoll(const std::function<void(YMRAdRoll)>& check) {
  for (const auto roll : {YMRAdRollPre, YMRAdRollMid, YMRAdRollPost}) {
    SCOPED_TRACE(YMRAd::getNameFromRoll(roll));
    check(roll);
  }
}

}  // namespace

TEST(BreakFaults, aDocumentThatBringsNoAdIsOneFailedAd) {
  for (const auto& fault : documentFaults()) {
    SCOPED_TRACE(fault.name);
    forEachRoll([&](YMRAdRoll roll) {
      Presentation presentation(roll);
      presentation.media.script(PlayerRig::film).duration = 40;  // so that no chain of hops outlasts it
      presentation.net.loader->answer(theTag, fault.answer);
      for (int hop = 1; hop < 4; ++hop) {
        presentation.net.loader->answer(BreakRig::tag(std::to_string(hop)), slowHop(hop + 1));
      }
      presentation.run();
      EXPECT_EQ(presentation.host.heardOf({"videoAdOnErrorDesc", "videoAdOnComplete", "videoAdOnStart"}),
                (Lines{"videoAdOnErrorDesc " + std::to_string(fault.code)}));
      EXPECT_THAT(presentation.host.heardOf({"videoAdOnError"}), ElementsAre(EndsWith(fault.says)));
      EXPECT_EQ(presentation.tracked("a"), fault.tracked);
      EXPECT_THAT(presentation.media.logs(BreakRig::film("a")), IsEmpty());
      presentation.expectTheProgrammeCameBack();
    });
  }
}

TEST(BreakFaults, anAdThatFailsHasOneEndingAndTheOthersPlay) {
  for (const auto& fault : adFaults()) {
    for (const std::size_t count : {1u, 3u}) {
      for (std::size_t which = 0; which < count; ++which) {
        SCOPED_TRACE(std::string(fault.name) + ", ad " + std::to_string(which + 1) + " of " + std::to_string(count));
        forEachRoll([&](YMRAdRoll roll) {
          Presentation presentation(roll);
          const std::vector<std::string> names{"a", "b", "c"};
          std::vector<BreakRig::Ad> ads;
          Lines endings;
          for (std::size_t each = 0; each < count; ++each) {
            const bool fails = each == which;
            ads.push_back({names[each], fails ? fault.type : "video/mp4", count > 1 ? std::to_string(each + 1) : ""});
            if (!fails || fault.code == AdFault::none) {
              endings.push_back("videoAdOnComplete:" + YMRAd::getNameFromRoll(roll));
            } else if (fault.code != AdFault::silent) {
              endings.push_back("videoAdOnErrorDesc " + std::to_string(fault.code));
            }
          }
          presentation.net.loader->answer(theTag, BreakRig::document(ads));
          presentation.media.script(BreakRig::film(names[which])) = fault.film;
          presentation.run();
          EXPECT_EQ(presentation.host.heardOf({"videoAdOnErrorDesc", "videoAdOnComplete"}), endings);
          for (std::size_t each = 0; each < count; ++each) {
            EXPECT_EQ(presentation.tracked(names[each]), each == which ? fault.tracked : BreakRig::wholeAd());
          }
          const bool lastFails = which + 1 == count && fault.code != AdFault::none;
          EXPECT_EQ(presentation.host.count("videoAdOnPodStart"), count > 1 ? 1 : 0);
          EXPECT_EQ(presentation.host.count("videoAdOnPodComplete"), count > 1 && !lastFails ? 1 : 0);
          presentation.expectTheProgrammeCameBack();
        });
      }
    }
  }
}

TEST(BreakFaults, withoutANetworkEveryAdSaysSo) {
  forEachRoll([&](YMRAdRoll roll) {
    Presentation presentation(roll);
    presentation.net.loader->answer(theTag, BreakRig::pod({"a", "b"}));
    SKVASTMediaFilePicker::setProbeHost("");
    presentation.run();
    EXPECT_EQ(presentation.host.heardOf({"videoAdOnErrorDesc", "videoAdOnComplete", "videoAdOnError"}),
              (Lines{"videoAdOnError:No internet connection", "videoAdOnErrorDesc 0",
                     "videoAdOnError:No internet connection", "videoAdOnErrorDesc 0"}));
    EXPECT_EQ(presentation.tracked(), (Lines{"a/error-900", "b/error-900"}));
    presentation.expectTheProgrammeCameBack();
  });
}
