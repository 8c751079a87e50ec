// The inspector of subtitles as people and scripts use it.
#include <gmock/gmock.h>

#include <nlohmann/json.hpp>

#include "tests/apps/ymrplay/ProgramRun.h"
#include "tests/support/HTTPServer.h"

using nlohmann::json;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

namespace {

struct SubtitleProgram : testing::Test, TemporaryFolder {
  ProgramRun run(const std::vector<std::string>& arguments) { return runProgram(YMRSRT, arguments); }
  ProgramRun shell(const std::string& command) { return runProgram("/bin/sh", {"-c", command, YMRSRT, film}); }

  const std::string film = file("film.srt",
                                "1\n00:00:01,000 --> 00:00:04,000\nGood  morning\n<i>all</i>\n\n"
                                "2\n00:00:05,1 --> 00:00:09,007\n\x1b]0;x\x07\xc2\x9b\u00e9\n");
};

TEST_F(SubtitleProgram, printsEverythingForScripts) {
  const auto ended = run({"--json", film});
  EXPECT_EQ(ended.exitStatus, 0) << ended.errors;
  json all = json::parse(ended.output);
  EXPECT_THAT(all["cues"][1]["notes"].dump(), HasSubstr("not of three digits"));
  all["cues"][1]["notes"] = json::array();
  EXPECT_EQ(all, json::parse(R"({"source": ")" + film + R"(", "error": null, "cues": [
    {"index": 1, "start": 1.0, "stop": 4.0, "text": "Good  morning\n<i>all</i>", "markup": true, "notes": []},
    {"index": 2, "start": 5.001, "stop": 9.007, "text": "\u001b]0;x\u0007\u009b\u00e9", "markup": false, "notes": []}],
    "notes": []})"));
  EXPECT_EQ(json::parse(run({"--json", "--at", "2", film}).output)["shown"], "Good  morning\n<i>all</i>");
}

TEST_F(SubtitleProgram, printsForPeopleWithoutWhatATerminalWouldObey) {
  const auto ended = run({film});
  EXPECT_EQ(ended.exitStatus, 0);
  EXPECT_THAT(ended.output,
              AllOf(HasSubstr("2 cues, all of them show"), HasSubstr("Cue 1  00:00:01,000 to 00:00:04,000"),
                    HasSubstr("    Good  morning\n    <i>all</i>\n"), HasSubstr("  ! The start time"),
                    Not(HasSubstr("\x1b")), Not(HasSubstr("\xc2\x9b"))));
  EXPECT_EQ(run({"--at=9.007", film}).output, " ]0;x  \u00e9\n");
  EXPECT_EQ(run({film, "--at", "4.5"}).output, "");
}

TEST_F(SubtitleProgram, endsWithOneWhenNothingShowsAndWithTwoWhenItCannotTell) {
  HTTPServer server;
  server.on("/film.srt", "1\n0:0:1 --> 0:0:2\nA");
  EXPECT_EQ(run({server.url("/film.srt")}).exitStatus, 0);
  EXPECT_EQ(json::parse(shell("$0 --json - < $1").output)["source"], "-");
  EXPECT_EQ(run({file("empty.srt", "")}).exitStatus, 1);
  EXPECT_EQ(run({"--json", file("backwards.srt", "1\n0:0:2 --> 0:0:1\nA\n\n")}).exitStatus, 1);
  const std::string latin = file("latin.srt", "caf\xe9");
  EXPECT_THAT(run({folder.string()}).errors, HasSubstr("folder"));
  const auto scripted = run({"--json", latin});
  EXPECT_EQ(scripted.exitStatus, 2);
  EXPECT_THAT(json::parse(scripted.output)["error"], HasSubstr("Latin-1"));
  for (const std::string at : {"0x10", "1e3", " 1", "-1", "+1", "nan", "1,5", ""}) {
    EXPECT_EQ(run({film, "--at=" + at}).exitStatus, 2) << at;
  }
  for (const std::string output : {">/dev/full", ">&-"}) {
    const auto ended = shell("exec $0 $1 " + output);
    EXPECT_EQ(ended.exitStatus, 2) << output;
    EXPECT_THAT(ended.errors, HasSubstr("standard output cannot be written")) << output;
  }
}

}  // namespace
