// The player program as people and scripts use it: real media, real time, no display.
#include <gmock/gmock.h>
#include <signal.h>

#include <QImage>
#include <cmath>
#include <filesystem>

#include "tests/apps/ymrplay/ProgramRun.h"
#include "tests/support/HTTPServer.h"

using testing::ElementsAre;
using testing::HasSubstr;

namespace {

std::string sample(const std::string& name) {
  return std::string(YMR_SAMPLES) + "/" + name;
}

ProgramRun play(std::vector<std::string> arguments, const std::function<void(const std::string&, int)>& onLine = {}) {
  arguments.insert(arguments.begin(), {"--headless", "--events", "--size", "640x360"});
  return runProgram(YMRPLAY, arguments, {}, onLine);
}

// Times of the ticks, in whole seconds: the one after a jump comes when playing has gone on for a moment.
std::vector<double> ticks(const ProgramRun& run) {
  std::vector<double> times;
  for (const auto& event : run.events()) {
    if (event["event"] == "videoOnTime") times.push_back(std::round(event["time"].get<double>()));
  }
  return times;
}

const std::vector<std::string> tickNames{"videoOnTime", "videoOnTimeDuration"};

}  // namespace

TEST(PlayProgram, playsFromTheStartPositionToTheEnd) {
  const auto run = play({"--start", "5", sample("clip.mp4")});
  EXPECT_EQ(run.exitStatus, 0) << run.errors;
  EXPECT_EQ(run.errors, "");
  const auto names = run.eventNames(tickNames);
  ASSERT_GE(names.size(), 8u) << run.output;
  EXPECT_EQ(names[0], "videoOnPlay");
  EXPECT_EQ(names[1], "videoOnPlayDuration");
  EXPECT_THAT(std::vector(names.end() - 5, names.end()),
              ElementsAre("videoOnPause", "videoOnPauseDuration", "videoDidPlayFinished", "playerWillDismiss",
                          "playerDidDismiss"));
  for (const char* once : {"videoOnPlay", "videoOnPlayDuration", "videoOnPause", "videoDidPlayFinished"}) {
    EXPECT_EQ(run.count(once), 1u) << once;
  }
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
  EXPECT_EQ(sought.exitStatus, 0) << sought.errors;
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

TEST(PlayProgram, badMediaAreReportedOnceAndEndWithOne) {
  HTTPServer server;
  server.onFile("/text.mp4", sample("text.mp4"), "video/mp4");
  const std::vector<std::string> media{sample("nothing-of-that-name.mp4"),
                                       sample("zero.mp4"),
                                       sample("text.mp4"),
                                       sample("headless.mp4"),
                                       server.url("/404.mp4"),
                                       server.url("/text.mp4"),
                                       "http://127.0.0.1:1/refused.mp4"};
  for (const auto& one : media) {
    const auto run = play({one});
    EXPECT_EQ(run.exitStatus, 1) << one;
    EXPECT_EQ(run.count("videoOnError"), 1u) << one << "\n" << run.output;
    EXPECT_GT(run.first("videoOnError").value("message", "").size(), 10u) << one;
    EXPECT_THAT(run.errors, HasSubstr("ymrplay: ")) << one;
    EXPECT_THAT(run.eventNames(), testing::Contains("playerDidDismiss")) << one;
    EXPECT_EQ(run.count("videoDidPlayFinished"), 0u) << one << "\n" << run.output;
  }
}

TEST(PlayProgram, oddMediaAreASensibleProgramme) {
  struct Case {
    std::vector<std::string> arguments;
    double end;
  };
  const std::vector<Case> cases{
      {{sample("half.mp4"), "--start", "-3"}, 0.5},
      {{sample("half.mp4"), "--start", "100"}, 0.5},
      {{sample("oneframe.mp4")}, 0.04},
      {{sample("half.mp4"), "--artwork", sample("text.mp4")}, 0.5},
      {{sample("half.mp4"), "--artwork", "http://127.0.0.1:1/a.png"}, 0.5},
      {{sample("audio.m4a"), "--start", "9"}, 10.0},
  };
  for (const auto& [arguments, end] : cases) {
    const auto run = play(arguments);
    EXPECT_EQ(run.exitStatus, 0) << testing::PrintToString(arguments) << run.errors;
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

TEST(PlayProgram, writesThePicturesItWasAskedFor) {
  const auto folder = std::filesystem::temp_directory_path() / ("ymrplay_test_" + std::to_string(getpid()));
  std::filesystem::create_directories(folder);
  const auto file = (folder / "picture.png").string();
  const auto run = play({"--snapshot", "4=" + file, "--key", "5=menu", sample("clip.mp4")});
  EXPECT_EQ(run.exitStatus, 0) << run.errors;
  const QImage picture(QString::fromStdString(file));
  EXPECT_EQ(picture.size(), QSize(640, 360));
  EXPECT_NE(picture.pixelColor(320, 60), QColor(Qt::black)) << "the programme fills the middle";
  std::filesystem::remove_all(folder);

  const auto nowhere = play({"--snapshot", "0.1=/nowhere/at/all.png", "--key", "1=menu", sample("clip.mp4")});
  EXPECT_EQ(nowhere.exitStatus, 1);
  EXPECT_THAT(nowhere.errors, HasSubstr("/nowhere/at/all.png"));
  const auto late = play({"--snapshot", "50=late.png", sample("half.mp4")});
  EXPECT_EQ(late.exitStatus, 1);
  EXPECT_THAT(late.errors, HasSubstr("late.png"));
}

TEST(PlayProgram, aTerminationSignalDismisses) {
  const auto run = play({sample("clip.mp4")}, [](const std::string& line, int process) {
    if (line.find("videoOnPlayDuration") != std::string::npos) kill(process, SIGTERM);
  });
  EXPECT_EQ(run.exitStatus, 0) << run.errors;
  EXPECT_EQ(run.count("playerDidDismiss"), 1u);
}
