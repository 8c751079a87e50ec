// The player program as people and scripts use it: real media, real time, a real server, no display.
#include <gmock/gmock.h>
#include <signal.h>

#include <QImage>
#include <cmath>
#include <cstdio>

#include "tests/apps/ymrplay/ProgramRun.h"
#include "tests/player/AdDocument.h"
#include "tests/support/HTTPServer.h"

using testing::ElementsAre;
using testing::HasSubstr;

namespace {

std::string sample(const std::string& name) {
  return std::string(YMR_SAMPLES) + "/" + name;
}

ProgramRun play(std::vector<std::string> arguments, const std::function<void(const std::string&, int)>& onLine = {}) {
  arguments.insert(arguments.begin(),
                   {"--headless", "--events", "--size", "640x360", "--reachability-host", "127.0.0.1"});
  return runProgram(YMRPLAY, arguments, onLine);
}

// Times of the ticks, in whole seconds: the one after a jump comes when playing has gone on for a moment.
std::vector<double> ticks(const ProgramRun& run) {
  std::vector<double> times;
  for (const auto& event : run.events()) {
    if (event["event"] == "videoOnTime") times.push_back(std::round(event["time"].get<double>()));
  }
  return times;
}

const std::vector<std::string> tickNames{"videoOnTime", "videoOnTimeDuration", "videoAdOnTime"};

}  // namespace

TEST(PlayProgram, playsFromTheStartPositionToTheEnd) {
  const auto run = play({"--start", "5", sample("clip.mp4")});
  EXPECT_EQ(run.exitStatus, 0) << run.errors;
  EXPECT_EQ(run.errors, "");
  EXPECT_THAT(run.eventNames(tickNames),
              ElementsAre("videoOnPlay", "videoOnPlayDuration", "videoDidSeekTo", "videoOnPause",
                          "videoOnPauseDuration", "videoDidPlayFinished", "playerWillDismiss", "playerDidDismiss"));
  EXPECT_NEAR(run.first("videoDidSeekTo")["time"], 5.0, 0.1) << run.output;
  EXPECT_NEAR(run.first("videoOnPlayDuration")["duration"], 10.0, 0.1);
  EXPECT_NEAR(run.first("videoOnPause")["time"], 10.0, 0.1);
  EXPECT_THAT(ticks(run), ElementsAre(5.0, 6.0, 7.0, 8.0, 9.0, 10.0)) << run.output;
  const double took = run.first("playerDidDismiss").value("t", 0.0) - run.first("videoOnPlay").value("t", 0.0);
  EXPECT_LT(took, 7.0) << "five seconds of programme take little more than five\n" << run.output;
}

TEST(PlayProgram, obeysTheKeysOfTheRemoteOnceEach) {
  const auto paused = play({"--key", "4=playpause", "--key", "5=playpause", "--key", "6=menu", sample("clip.mp4")});
  EXPECT_EQ(paused.exitStatus, 0) << paused.errors;
  EXPECT_THAT(paused.eventNames({"videoOnTime", "videoOnTimeDuration", "videoDidSeekTo"}),
              ElementsAre("videoOnPlay", "videoOnPlayDuration", "videoOnPause", "videoOnPauseDuration", "videoOnPlay",
                          "videoOnPlayDuration", "playerWillDismiss", "videoOnPause", "videoOnPauseDuration",
                          "playerDidDismiss"))
      << paused.output;

  const auto sought =
      play({"--key", "4=right", "--key", "30=menu", sample("minute.mp4")}, [](const auto& line, int process) {
        const auto event = nlohmann::json::parse(line);
        if (event["event"] == "videoOnTime" && event["time"] > 11) kill(process, SIGTERM);
      });
  EXPECT_EQ(sought.exitStatus, 0) << "a termination signal dismisses\n" << sought.errors;
  EXPECT_EQ(sought.count("playerDidDismiss"), 1u);
  double before = 0;
  double target = 0;
  for (const auto& event : sought.events()) {
    if (event["event"] == "videoOnTime" && target < 10) before = event["time"];
    if (event["event"] == "videoDidSeekTo") target = event["time"];
  }
  EXPECT_GE(target - before, 9.5) << sought.output;
  EXPECT_LT(target - before, 11.5) << sought.output;
  EXPECT_EQ(sought.count("videoOnPlay"), 1u) << sought.output;
  EXPECT_EQ(sought.count("videoOnPause"), 1u) << "only the one of dismissal\n" << sought.output;
}

TEST(PlayProgram, badMediaAreReportedOnceAndOddOnesAreASensibleProgramme) {
  HTTPServer server;
  server.onFile("/text.mp4", sample("text.mp4"), "video/mp4");
  const std::vector<std::string> bad{sample("nothing-of-that-name.mp4"),
                                     sample("zero.mp4"),
                                     sample("text.mp4"),
                                     sample("headless.mp4"),
                                     server.url("/404.mp4"),
                                     server.url("/text.mp4"),
                                     HTTPServer::refusingURL()};
  for (const auto& media : bad) {
    const auto run = play({media});
    EXPECT_EQ(run.exitStatus, 1) << media;
    EXPECT_EQ(run.count("videoOnError"), 1u) << media << "\n" << run.output;
    EXPECT_GT(run.first("videoOnError").value("message", "").size(), 10u) << media;
    EXPECT_THAT(run.errors, HasSubstr("ymrplay: ")) << media;
    EXPECT_EQ(run.count("playerDidDismiss"), 1u) << media;
    EXPECT_EQ(run.count("videoDidPlayFinished"), 0u) << media << "\n" << run.output;
  }
  const std::vector<std::pair<std::vector<std::string>, double>> odd{
      {{sample("half.mp4"), "--start", "-3"}, 0.5},
      {{sample("half.mp4"), "--start", "100"}, 0.5},
      {{sample("oneframe.mp4")}, 0.04},
      {{sample("clip.ts"), "--start", "9"}, 10.0},  // its first time stamp is past 0
      {{sample("half.mp4"), "--artwork", sample("text.mp4")}, 0.5},
      {{sample("half.mp4"), "--artwork", "http://127.0.0.1:1/a.png"}, 0.5},
      {{sample("audio.m4a"), "--start", "9"}, 10.0},
  };
  for (const auto& [arguments, end] : odd) {
    const auto run = play(arguments);
    EXPECT_EQ(run.exitStatus, 0) << testing::PrintToString(arguments) << run.errors;
    EXPECT_EQ(run.count("videoOnPlay"), 1u) << run.output;
    EXPECT_EQ(run.count("videoDidPlayFinished"), 1u) << run.output;
    EXPECT_NEAR(run.first("videoOnPause").value("time", -1.0), end, 0.15)
        << testing::PrintToString(arguments) << run.output;
  }
}

TEST(PlayProgram, aServerThatStallsInMidFileLosesNoSecond) {
  HTTPServer server;
  HTTPServer::Reply reply;
  reply.file = sample("clip.mp4");
  reply.type = "video/mp4";
  reply.stallAfter = 500'000;
  reply.stallFor = std::chrono::seconds(7);
  server.on("/stall.mp4", reply);
  const auto run = play({server.url("/stall.mp4")});
  EXPECT_EQ(run.exitStatus, 0) << run.errors;
  EXPECT_GE(run.count("videoDidBuffer"), 1u) << run.output;
  EXPECT_EQ(run.count("videoDidBuffer"), run.count("videoOnBuffer"));
  EXPECT_THAT(ticks(run), ElementsAre(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10)) << run.output;
  EXPECT_EQ(run.count("videoDidPlayFinished"), 1u);
}

TEST(PlayProgram, writesThePicturesItWasAskedForOrSaysWhichNot) {
  const auto file = testing::TempDir() + "/ymrplay_" + std::to_string(getpid()) + ".png";
  const auto run = play({"--snapshot", "4=" + file, "--key", "5=menu", sample("clip.mp4")});
  EXPECT_EQ(run.exitStatus, 0) << run.errors;
  const QImage picture(QString::fromStdString(file));
  std::remove(file.c_str());
  EXPECT_EQ(picture.size(), QSize(640, 360));
  EXPECT_NE(picture.pixelColor(320, 60), QColor(Qt::black)) << "the programme fills the middle";
  for (const std::string snapshot : {"0.1=/nowhere/at/all.png", "50=late.png"}) {
    const auto failed = play({"--snapshot", snapshot, sample("half.mp4")});
    EXPECT_EQ(failed.exitStatus, 1);
    EXPECT_THAT(failed.errors, HasSubstr(snapshot.substr(snapshot.find('=') + 1)));
  }
}

TEST(PlayProgram, showsAdsBeforeWithinAndAfterTheProgrammeWhichGoesOnWhereItStopped) {
  HTTPServer server;
  server.onOthers([](const HTTPServer::Request&) { return HTTPServer::Reply(); });
  const auto tag = [&](const std::string& name, const std::string& clip) {
    server.onFile("/film/" + name + ".mp4", sample(clip), "video/mp4");
    server.on("/" + name, adDocument({{name}}, {server.url("/film"), server.url("/track")}), "application/xml");
    return server.url("/" + name);
  };
  const auto before = tag("before", "ad.mp4"), within = tag("within", "half.mp4"), after = tag("after", "half.mp4");
  const auto run = play({"--preroll", before, "--midroll", "1=" + within, "--postroll", after, sample("clip.webm")});
  EXPECT_EQ(run.exitStatus, 0) << run.errors;

  auto names = run.eventNames(tickNames);
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

  std::vector<std::string> requests;
  std::vector<int> quartiles;
  double sought = -1;
  for (const auto& event : run.events()) {
    if (event["event"] == "videoAdOnRequest") requests.push_back(event["ad"].dump());
    if (event["event"] == "videoAdOnPlayQuartile") quartiles.push_back(event["quartile"]);
    if (event["event"] == "videoDidSeekTo") sought = event["time"];
  }
  const auto request = [](const char* roll, int offset, const std::string& url) {
    return nlohmann::json{
        {"roll", roll}, {"offset", offset}, {"vastUrl", url}, {"title", nullptr}, {"description", nullptr}}
        .dump();
  };
  EXPECT_THAT(requests,
              ElementsAre(request("Preroll", 0, before), request("Midroll", 1, within), request("Postroll", 0, after)));
  EXPECT_EQ(run.first("videoAdOnStart")["ad"]["title"], "Title of before");
  EXPECT_THAT(std::vector(quartiles.begin(), quartiles.begin() + 3), ElementsAre(0, 1, 2));
  const double stopped = run.first("videoOnPause")["time"];
  EXPECT_GE(stopped, 1.0);
  EXPECT_LT(stopped, 1.9) << run.output;
  EXPECT_NEAR(sought, stopped, 0.04) << run.output;

  for (const auto* event : {"firstQuartile", "midpoint", "thirdQuartile"}) {
    EXPECT_EQ(server.count(std::string("/track/before/") + event), 1u) << event;
  }
  for (const std::string name : {"before", "within", "after"}) {
    for (const char* event : {"impression", "start", "creativeView", "complete"}) {
      EXPECT_EQ(server.count("/track/" + name + "/" + event), 1u) << name << " " << event;
    }
  }
}

TEST(PlayProgram, reportsAdsThatFailAndPlays) {
  HTTPServer server;
  const auto run = play({"--preroll", server.url("/404"), "--postroll", HTTPServer::refusingURL(), sample("half.mp4")});
  EXPECT_EQ(run.exitStatus, 0) << run.errors;
  EXPECT_THAT(run.eventNames(tickNames),
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
