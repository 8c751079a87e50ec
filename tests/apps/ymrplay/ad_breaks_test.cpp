// Ad breaks through the player program: real media, real time, a real server.
#include <gmock/gmock.h>

#include "tests/apps/ymrplay/ProgramRun.h"
#include "tests/support/HTTPServer.h"

using testing::ElementsAre;

namespace {

std::string sample(const std::string& name) {
  return std::string(YMR_SAMPLES) + "/" + name;
}

const std::vector<std::string> trackedEvents{"start",    "creativeView",  "firstQuartile",
                                             "midpoint", "thirdQuartile", "complete"};

// An ad server whose tags /NAME hold one ad that plays `clip`.
class AdServer : public HTTPServer {
 public:
  AdServer() {
    onOthers([](const Request&) { return Reply(); });
  }

  std::string tag(const std::string& name, const std::string& clip) {
    onFile("/clip/" + clip, sample(clip), "video/mp4");
    std::string tracking;
    for (const auto& event : trackedEvents) {
      tracking += "<Tracking event=\"" + event + "\">" + url("/" + name + "/" + event) + "</Tracking>";
    }
    on("/" + name,
       "<VAST version=\"2.0\"><Ad id=\"1\"><InLine><AdSystem>t</AdSystem><AdTitle>The " + name +
           "</AdTitle><Impression>" + url("/" + name + "/impression") +
           "</Impression><Creatives><Creative><Linear><Duration>00:00:05</Duration><TrackingEvents>" + tracking +
           "</TrackingEvents><MediaFiles><MediaFile delivery=\"progressive\" type=\"video/mp4\" width=\"640\" "
           "height=\"360\">" +
           url("/clip/" + clip) + "</MediaFile></MediaFiles></Linear></Creative></Creatives></InLine></Ad></VAST>",
       "application/xml");
    return url("/" + name);
  }
};

ProgramRun play(std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(),
                   {"--headless", "--events", "--size", "640x360", "--reachability-host", "127.0.0.1"});
  return runProgram(YMRPLAY, arguments);
}

const std::vector<std::string> ticks{"videoOnTime", "videoOnTimeDuration", "videoAdOnTime"};

}  // namespace

TEST(PlayAdBreaks, comeBeforeWithinAndAfterTheProgrammeWhichGoesOnWhereItStopped) {
  AdServer server;
  const auto before = server.tag("before", "ad.mp4");
  const auto within = server.tag("within", "half.mp4");
  const auto after = server.tag("after", "half.mp4");
  const auto run = play({"--preroll", before, "--midroll", "1=" + within, "--postroll", after, sample("clip.webm")});
  EXPECT_EQ(run.exitStatus, 0) << run.errors;

  auto names = run.eventNames(ticks);
  // The two short ads are over within a second and may or may not reach a quartile.
  ASSERT_EQ(std::count(names.begin(), names.begin() + 7, "videoAdOnPlayQuartile"), 3) << run.output;
  std::erase(names, "videoAdOnPlayQuartile");
  EXPECT_THAT(names, ElementsAre("videoAdOnRequest", "videoAdOnResponse", "videoAdOnStart", "videoAdOnComplete",
                                 "videoOnPlay", "videoOnPlayDuration", "videoDidSeekTo",  //
                                 "videoAdOnRequest", "videoAdOnResponse", "videoAdOnStart", "videoOnPause",
                                 "videoOnPauseDuration", "videoAdOnComplete", "videoOnPlay", "videoOnPlayDuration",
                                 "videoDidSeekTo",  //
                                 "videoOnPause", "videoOnPauseDuration", "videoAdOnRequest", "videoAdOnResponse",
                                 "videoAdOnStart", "videoAdOnComplete",  //
                                 "videoDidPlayFinished", "playerWillDismiss", "playerDidDismiss"))
      << run.output;

  std::vector<nlohmann::json> requests, quartiles;
  double sought = -1;
  for (const auto& event : run.events()) {
    if (event["event"] == "videoAdOnRequest") requests.push_back(event["ad"]);
    if (event["event"] == "videoAdOnPlayQuartile") quartiles.push_back(event["quartile"]);
    if (event["event"] == "videoDidSeekTo") sought = event["time"];
  }
  EXPECT_THAT(
      requests,
      ElementsAre(
          nlohmann::json{
              {"roll", "Preroll"}, {"offset", 0}, {"vastUrl", before}, {"title", nullptr}, {"description", nullptr}},
          nlohmann::json{
              {"roll", "Midroll"}, {"offset", 1}, {"vastUrl", within}, {"title", nullptr}, {"description", nullptr}},
          nlohmann::json{
              {"roll", "Postroll"}, {"offset", 0}, {"vastUrl", after}, {"title", nullptr}, {"description", nullptr}}));
  EXPECT_EQ(run.first("videoAdOnStart")["ad"]["title"], "The before");
  EXPECT_EQ(nlohmann::json(std::vector(quartiles.begin(), quartiles.begin() + 3)), nlohmann::json({0, 1, 2}));
  const double stopped = run.first("videoOnPause")["time"];
  EXPECT_GE(stopped, 1.0);
  EXPECT_LT(stopped, 1.9) << run.output;
  EXPECT_NEAR(sought, stopped, 0.04) << run.output;

  for (const auto& event : trackedEvents) EXPECT_EQ(server.count("/before/" + event), 1u) << event;
  for (const std::string name : {"before", "within", "after"}) {
    for (const char* event : {"impression", "start", "creativeView", "complete"}) {
      EXPECT_EQ(server.count("/" + name + "/" + event), 1u) << name << " " << event;
    }
  }
}

TEST(PlayAdBreaks, thatFailAreReportedAndTheProgrammePlays) {
  HTTPServer server;
  const auto run = play({"--preroll", server.url("/404"), "--postroll", HTTPServer::refusingURL(), sample("half.mp4")});
  EXPECT_EQ(run.exitStatus, 0) << run.errors;
  EXPECT_THAT(run.eventNames(ticks),
              ElementsAre("videoAdOnRequest", "videoAdOnResponse", "videoAdOnError", "videoAdOnErrorDesc",
                          "videoOnPlay", "videoOnPlayDuration", "videoDidSeekTo", "videoOnPause",
                          "videoOnPauseDuration",  //
                          "videoAdOnRequest", "videoAdOnResponse", "videoAdOnError", "videoAdOnErrorDesc",
                          "videoDidPlayFinished", "playerWillDismiss", "playerDidDismiss"))
      << run.output;
  const auto error = run.first("videoAdOnErrorDesc");
  EXPECT_TRUE(error["code"].is_number_integer()) << run.output;
  EXPECT_GT(error["message"].get<std::string>().size(), 5u) << run.output;
  EXPECT_GT(run.first("videoAdOnError")["message"].get<std::string>().size(), 5u) << run.output;
}
