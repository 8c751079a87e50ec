// The player program as people and scripts use it: real media, real time, a real server, no display.
#include <gmock/gmock.h>
#include <signal.h>
#include <sys/stat.h>

#include <QImage>
#include <cmath>
#include <cstdio>
#include <filesystem>

#include "tests/apps/ymrplay/ProgramRun.h"
#include "tests/player/AdDocument.h"
#include "tests/support/HTTPServer.h"

using namespace std::string_literals;
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

const std::vector<std::string> tickNames{"videoOnTime", "videoOnTimeDuration", "videoAdOnTime"};

}  // namespace

TEST(PlayProgram, playsFromTheStartPositionToTheEnd) {
  const auto run = play({"--start", "5", "--log", "error", sample("clip.mp4")});
  EXPECT_EQ(run.exitStatus, 0) << run.errors;
  EXPECT_EQ(run.errors, "");
  EXPECT_THAT(run.eventNames(tickNames),
              ElementsAre("videoOnPlay", "videoOnPlayDuration", "videoDidSeekTo", "videoOnPause",
                          "videoOnPauseDuration", "videoDidPlayFinished", "playerWillDismiss", "playerDidDismiss"));
  EXPECT_EQ(std::floor(run.first("videoDidSeekTo")["time"].get<double>()), 5) << run.output;
  EXPECT_NEAR(run.first("videoOnPlayDuration")["duration"], 10.0, 0.1);
  EXPECT_NEAR(run.first("videoOnPause")["time"], 10.0, 0.1);
  std::vector<double> ticks;  // the one after a jump comes when playing has gone on for a moment
  for (const auto& event : run.events()) {
    if (event["event"] == "videoOnTime") ticks.push_back(std::round(event["time"].get<double>()));
  }
  EXPECT_THAT(ticks, ElementsAre(5.0, 6.0, 7.0, 8.0, 9.0, 10.0)) << run.output;
}

TEST(PlayProgram, obeysTheKeysOfTheRemoteAndTerminationSignals) {
  const auto run = play(
      {"--key", "4=playpause", "--key", "5=playpause", "--key", "6=right", "--key", "50=menu", sample("minute.mp4")},
      [&](const auto& line, int process) {
        const auto event = nlohmann::json::parse(line);
        if (event["event"] == "videoOnTime" && event["time"] > 11) kill(process, SIGTERM);
      });
  EXPECT_EQ(run.exitStatus, 0) << run.errors;
  EXPECT_THAT(run.eventNames(tickNames),
              ElementsAre("videoOnPlay", "videoOnPlayDuration", "videoDidSeekTo", "videoOnPause",
                          "videoOnPauseDuration", "videoOnPlay", "videoOnPlayDuration", "videoDidSeekTo",
                          "playerWillDismiss", "videoOnPause", "videoOnPauseDuration", "playerDidDismiss"))
      << run.output;
}

TEST(PlayProgram, reportsMediaThatFailOnce) {
  const auto run = play({"--artwork", sample("ad.mp4"), sample("nothing-of-that-name.mp4")});
  EXPECT_EQ(run.exitStatus, 1);
  EXPECT_GT(run.first("videoOnError").value("message", "").size(), 10u);
  EXPECT_THAT(run.errors, HasSubstr("nothing-of-that-name.mp4: "));
  EXPECT_THAT(run.errors, HasSubstr("/ad.mp4: This is no picture.\n"));
  EXPECT_THAT(run.eventNames({"videoOnPlay", "videoOnPlayDuration"}),
              ElementsAre("videoOnError", "playerWillDismiss", "playerDidDismiss"));
}

TEST(PlayProgram, leavesWhenNobodyReadsItsEventsAndSaysThatItHasNoDisplay) {
  const auto shell = [](const std::string& command) { return runProgram("/bin/sh", {"-c", command}); };
  const std::string program = YMRPLAY, film = " --events " + sample("minute.mp4");
  const auto unread = shell("{ " + program + " --headless" + film + "; echo status $? >&2; } | head -1");
  EXPECT_EQ(unread.errors, "ymrplay: the events can't be written: Broken pipe\nstatus 1\n");
  const auto blind = shell("QT_QPA_PLATFORM=xcb DISPLAY=:65000 " + program + film);
  EXPECT_EQ(blind.exitStatus, 2);
  EXPECT_EQ(blind.errors, "ymrplay: no usable display: could not connect to display :65000\n");
}

TEST(PlayProgram, writesThePicturesItWasAskedForOrSaysWhichNot) {
  const auto file = testing::TempDir() + "/ymrplay_" + std::to_string(getpid()) + ".png";
  const auto run = play({"--snapshot", "4=" + file, "--key", "5=menu", sample("clip.mp4")});
  EXPECT_EQ(run.exitStatus, 0) << run.errors;
  const QImage picture(QString::fromStdString(file));
  std::remove(file.c_str());
  EXPECT_EQ(picture.size(), QSize(640, 360));
  EXPECT_NE(picture.pixelColor(320, 60), QColor(Qt::black)) << "the programme fills the middle";
  ASSERT_EQ(mkfifo(file.c_str(), 0600), 0);
  for (const std::string& snapshot : {"0.1=/nowhere/at/all.png"s, "50=late.png"s, "0.1=" + file}) {
    const auto failed = play({"--snapshot", snapshot, sample("half.mp4")});
    EXPECT_EQ(failed.exitStatus, 1);
    EXPECT_THAT(failed.errors, HasSubstr(snapshot.substr(snapshot.find('=') + 1)));
  }
  EXPECT_TRUE(std::filesystem::is_fifo(file));
  std::remove(file.c_str());
}

TEST(PlayProgram, showsAdsAroundAProgrammeAndReportsThoseThatFail) {
  HTTPServer server;
  server.onOthers([](const HTTPServer::Request&) { return HTTPServer::Reply(); });
  server.on("/404", HTTPServer::Reply{.status = 404});
  for (const std::string film : {"ad", "page", "truncated"}) {
    server.onFile("/film/" + film + ".mp4", sample(film + ".mp4"), "video/mp4");
  }
  const AdPlaces places{server.url("/film"), server.url("/track")};
  server.on("/tag", adDocument({{"ad"}}, places), "application/xml");
  server.on("/pod",
            adDocument({{"page", "video/mp4", "1"}, {"truncated", "video/mp4", "2"}, {"ad", "video/mp4", "3"}}, places),
            "application/xml");
  const std::string tag = server.url("/tag"), pod = server.url("/pod"), missing = server.url("/404");
  const auto run = play({"--preroll", missing, "--preroll", pod, "--midroll", "1=" + missing, "--postroll", missing,
                         sample("clip.webm")});
  EXPECT_EQ(run.exitStatus, 0) << run.errors;
  std::vector<nlohmann::json> asked;
  for (const auto& event : run.events()) {
    if (event["event"] == "videoAdOnRequest") asked.push_back(event["ad"]);
  }
  const auto ad = [](const char* roll, int offset, const std::string& url) {
    return nlohmann::json{
        {"roll", roll}, {"offset", offset}, {"vastUrl", url}, {"title", nullptr}, {"description", nullptr}};
  };
  EXPECT_THAT(asked, ElementsAre(ad("Preroll", 0, missing), ad("Preroll", 0, pod), ad("Midroll", 1, missing),
                                 ad("Postroll", 0, missing)));
  EXPECT_EQ(run.first("videoAdOnComplete")["ad"]["title"], "Title of ad");
  EXPECT_EQ(run.first("videoAdOnComplete")["ad"]["description"], "About ad");
  EXPECT_EQ(run.count("videoAdOnErrorDesc"), 5u);
  EXPECT_EQ(run.first("videoAdOnError")["message"], "No document from " + missing + ": The server answered 404.");
  EXPECT_EQ(run.first("videoAdOnErrorDesc")["code"], 0) << run.output;
  EXPECT_EQ(run.first("videoAdOnErrorDesc")["message"], "There was a problem requesting ads from the server.");
  EXPECT_EQ(run.count("videoDidPlayFinished"), 1u);
  EXPECT_EQ(server.count("/track/ad/complete"), 1u);
  for (const std::string bad : {"page", "truncated"}) {
    EXPECT_EQ(server.count("/track/" + bad + "/error-402"), 1u) << bad;
    EXPECT_EQ(server.count("/track/" + bad + "/complete"), 0u) << bad;
  }

  const auto alone =
      runProgram(YMRPLAY, {"--headless", "--events", "--reachability-host", "127.0.0.1", "--ad-screen", tag},
                 [](const auto& line, int process) {
                   if (line.find("complete") != line.npos) kill(process, SIGTERM);
                 });
  EXPECT_EQ(alone.exitStatus, 0) << alone.errors;
  EXPECT_EQ(alone.count("vastDidDismissFullScreen"), 1u) << alone.output;
  EXPECT_EQ(server.count("/track/ad/complete"), 2u);
}
