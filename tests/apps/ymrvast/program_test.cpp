// The inspector as people and scripts use it: real files, real HTTP on loopback.
#include <gmock/gmock.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <set>

#include "tests/VAST/Parser/VASTTexts.h"
#include "tests/apps/ymrplay/ProgramRun.h"
#include "tests/support/HTTPServer.h"

using nlohmann::json;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

struct VastProgram : testing::Test, TemporaryFolder {
  ProgramRun run(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), {"--reachability-host", "127.0.0.1"});
    return runProgram(YMRVAST, arguments);
  }

  // The object that --json prints for a source.
  json inspect(const std::string& source, int exitStatus, std::vector<std::string> options = {}) {
    options.insert(options.end(), {"--json", source});
    const auto ended = run(options);
    EXPECT_EQ(ended.exitStatus, exitStatus) << source << "\n" << ended.output << ended.errors;
    return json::parse(ended.output, nullptr, false);
  }

  std::string serve(const std::string& path, const std::string& content) {
    server.on(path, vast::document(content), "application/xml");
    return server.url(path);
  }

  HTTPServer server;
};

std::vector<std::string> each(const json& list, const char* member) {
  std::vector<std::string> values;
  for (const auto& one : list) values.push_back(one.at(member).dump());
  return values;
}

}  // namespace

TEST_F(VastProgram, printsEverythingOfAnAdForScripts) {
  const std::string source = file(
      "tag.xml",
      vast::document(
          vast::inLine(
              "<AdTitle>Harbour</AdTitle><Error id='e'>http://t.test/e?c=[ERRORCODE]</Error>"
              "<Impression>http://t.test/i</Impression>" +
              vast::linear(vast::mediaFile("http://media.test/a.mp4",
                                           "id='f' delivery='progressive' type='video/mp4' bitrate='800' "
                                           "width='640' height='360' scalable='0' apiFramework='x'") +
                               vast::mediaFile("http://media.test/b.mp4", "type='video/mp4' width='1280' height='720'"),
                           vast::tracking("start", "http://t.test/s"))),
          "3.0"));
  const json all = inspect(source, 0, {"--screen", "1280x720"});
  EXPECT_EQ(all, json::parse(R"({
    "source": ")" + source + R"(", "version": "3.0", "error": 0, "message": "No ad to show", "hops": [],
    "ads": [{
      "id": "", "title": "Harbour", "description": null, "error": 0, "message": "No ad to show", "documents": 1,
      "impressions": [{"id": null, "url": "http://t.test/i"}],
      "errors": [{"id": "e", "url": "http://t.test/e?c=[ERRORCODE]"}],
      "tracking": {"start": ["http://t.test/s"]},
      "mediaFiles": [
        {"id": "f", "delivery": "progressive", "type": "video/mp4", "bitrate": 800, "width": 640, "height": 360,
         "scalable": false, "maintainAspectRatio": false, "apiFramework": "x", "url": "http://media.test/a.mp4"},
        {"id": null, "delivery": null, "type": "video/mp4", "bitrate": 0, "width": 1280, "height": 720,
         "scalable": true, "maintainAspectRatio": false, "apiFramework": null, "url": "http://media.test/b.mp4"}],
      "picked": "http://media.test/b.mp4",
      "other": {"profile": "broad", "picked": "http://media.test/b.mp4", "why": null}}],
    "standalone": []})"));
}

TEST_F(VastProgram, listsHopsAPodInTheOrderOfPlayAndItsFallBacks) {
  const std::string source =
      file("pod.xml",
           vast::document(vast::playable("two", "id='B' sequence='2'") + vast::playable("spare", "id='S'") +
                          vast::playable("nameless") + vast::wrapper(server.url("/inner"), "id='C' sequence='1'") +
                          vast::wrapper(server.url("/missing"), "id='D' sequence='3'")));
  const std::string inner = vast::playable("inner", "id='C1' sequence='1'") + vast::inLine("", "id='C2' sequence='2'") +
                            vast::playable("innerspare", "id='CS'");
  serve("/inner", inner);
  const json all = inspect(source, 0);
  EXPECT_THAT(each(all["ads"], "id"), ElementsAre("\"C1\"", "\"C2\"", "\"B\"", "\"D\""));
  EXPECT_THAT(each(all["ads"], "documents"), ElementsAre("2", "2", "1", "1"));
  EXPECT_THAT(each(all["ads"], "error"), ElementsAre("1", "1", "0", "6"));
  EXPECT_THAT(each(all["standalone"], "id"), ElementsAre("\"S\"", "\"CS\"")) << "the root's first";
  EXPECT_THAT(each(all["hops"], "status"), ElementsAre("200", "404"));
  EXPECT_THAT(each(all["hops"], "error"), ElementsAre("null", "6"));
  EXPECT_EQ(all["hops"][0]["url"], server.url("/inner"));
  EXPECT_EQ(all["hops"][0]["depth"], 1);
  EXPECT_EQ(all["hops"][0]["bytes"], vast::document(inner).size());
  EXPECT_THAT(run({source}).output, HasSubstr("never played: 1 of several ads, without an id"));
}

TEST_F(VastProgram, endsWithZeroOnlyWhenAnAdWouldBeShown) {
  const std::string unplayable = vast::inLine(
      vast::linear(vast::mediaFile("http://media.test/a.webm", "type='video/webm'")), "id='U' sequence='1'");
  const struct {
    const char* name;
    std::string ads;
    int status;
  } rows[] = {
      {"a fall-back for an empty ad", vast::inLine("", "id='P' sequence='1'") + vast::playable("s", "id='S'"), 0},
      {"none for one whose files are refused", unplayable + vast::playable("s", "id='S'"), 1},
      {"none for one whose wrapper is missing",
       vast::wrapper(server.url("/missing"), "id='P' sequence='1'") + vast::playable("s", "id='S'"), 1},
      {"a fall-back that is a pod",
       vast::inLine("", "id='P' sequence='1'") + vast::wrapper(server.url("/pod"), "id='S'"), 0},
      {"one ad of it for each that failed",
       vast::inLine("", "id='P' sequence='1'") + vast::wrapper(server.url("/half"), "id='S'"), 1},
      {"the second of a pod", vast::inLine("", "id='P' sequence='1'") + vast::playable("q", "id='Q' sequence='2'"), 0},
      {"stand-alone ads only", vast::playable("a", "id='A'") + vast::playable("b", "id='B'"), 1},
      {"nothing", "", 1},
  };
  const std::string shown = vast::playable("x", "id='X' sequence='1'");
  serve("/pod", shown + vast::playable("y", "id='Y' sequence='2'"));
  serve("/half", shown + vast::inLine("", "id='W' sequence='0'"));
  for (const auto& row : rows) {
    EXPECT_EQ(run({file("row.xml", vast::document(row.ads))}).exitStatus, row.status) << row.name;
  }
}

TEST_F(VastProgram, checksEveryFetchedDocumentAgainstTheSchema) {
  const std::string tracked = "<Impression>http://t.test/i</Impression><Creatives>";
  serve("/good", vast::inLine("<AdTitle>t</AdTitle>" + tracked +
                                  "<Creative><Linear><Duration>00:00:10</Duration>"
                                  "</Linear></Creative></Creatives>",
                              "id='1'"));
  serve("/bad", "<Ad id='1'><Surprise/></Ad>");
  for (const std::string path : {"/good", "/bad"}) {
    const auto wrapping = vast::document(vast::wrapper(server.url(path), "id='1'", tracked + "</Creatives>"));
    const json all = inspect(file("tag.xml", wrapping), 1, {"--validate"});
    EXPECT_EQ(all["valid"], path == "/good") << all["validation"];
    EXPECT_EQ(all["validation"].dump().find(server.url(path)) != std::string::npos, path == "/bad");
  }
}

TEST_F(VastProgram, saysWhatEitherProfileMakesOfATagAndWhyTheyDiffer) {
  // What exact shows of the documents in the tree; broad shows all that have a film.
  const std::set<std::string> shownExactly{"default-namespace", "interactive-beside-film", "plain",
                                           "pod-of-eleven",     "program-beside-film",     "sizes-and-rates",
                                           "verification"};
  for (const auto& entry : std::filesystem::directory_iterator(TAGS)) {
    if (entry.path().extension() != ".xml") continue;
    const std::string name = entry.path().stem();
    const bool hasFilm = name.rfind("none-", 0) != 0, isShownExactly = shownExactly.count(name) > 0;
    const json exact = inspect(entry.path(), isShownExactly ? 0 : 1);
    const json broad = inspect(entry.path(), hasFilm ? 0 : 1, {"--profile", "broad"});
    const json& ad = broad["ads"][0];
    EXPECT_EQ(ad["picked"].is_string(), hasFilm) << name;
    EXPECT_EQ(ad["other"]["profile"], "exact");
    EXPECT_EQ(ad["other"]["picked"].is_string(), isShownExactly) << name;
    const bool isToldOtherwise = !hasFilm && ad["code"] != (name == "none-program" ? 401 : 303);
    EXPECT_EQ(ad["other"]["why"].is_string(), ad["other"]["picked"] != ad["picked"] || isToldOtherwise) << name << ad;
    EXPECT_EQ(exact["ads"][0]["other"]["picked"].is_string(), hasFilm) << name << exact;
  }
  const std::string text = run({"--profile", "broad", TAGS "/verification.xml"}).output;
  EXPECT_THAT(text, AllOf(HasSubstr("exact           the same"), HasSubstr("a verification script of tide")));
  EXPECT_THAT(run({"--profile", "broad", TAGS "/none-program.xml"}).output, HasSubstr("(VAST code 901)"));
  EXPECT_THAT(run({TAGS "/pod-of-eleven.xml"}).output, HasSubstr("part-10.mp4: broad plays it as number 10, since"));
  EXPECT_THAT(run({TAGS "/companion.xml"}).output,
              HasSubstr("broad           shows https://media.example/harbour.mp4: exact shows nothing: no media file"));
}

TEST_F(VastProgram, showsTheBreaksOfASchedule) {
  const json all = inspect(TAGS "/schedule.vmap", 0, {"--profile", "broad"});
  EXPECT_EQ(all["error"], nullptr);
  EXPECT_THAT(each(all["breaks"], "second"), ElementsAre("301", "0", "null", "null", "null", "null"));
  EXPECT_EQ(all["breaks"][0]["ads"][0]["picked"], "https://media.example/quay.mp4");
  EXPECT_EQ(all["breaks"][1]["ads"].size(), 1u) << "of a pod of two, which it does not allow";
  EXPECT_EQ(all["breaks"][2]["why"], nullptr);
  for (const std::size_t left : {3, 4, 5}) EXPECT_TRUE(all["breaks"][left]["why"].is_string()) << left;
  const std::string text = run({TAGS "/schedule.vmap"}).output;
  for (const auto* line :
       {"VMAP 1.0, 6 breaks", "Break 1 'fifth-minute' at 301 s", "'opening' before the programme",
        "'half' at 50% of the programme", "is not repeated after 00:10:00", "'numbered' left out: '#1' is a position",
        "'banner' left out: its kind is 'nonlinear'", "'own' left out: ads of the kind 'house'"}) {
    EXPECT_THAT(text, HasSubstr(line));
  }
}

TEST_F(VastProgram, readsStandardInputAndRefusesWhatItCannotRead) {
  const std::string tag = file("tag.xml", vast::document(vast::playable("a")));
  const auto piped =
      runProgram("/bin/sh", {"-c", "exec \"$0\" --reachability-host 127.0.0.1 --json - < \"$1\"", YMRVAST, tag});
  EXPECT_EQ(json::parse(piped.output)["source"], "-") << piped.errors;
  const std::pair<std::vector<std::string>, const char*> rows[] = {
      {{folder.string()}, "cannot be read"},
      {{"ftp://ads.test/tag"}, "only http and https"},
      {{tag, "--screen", "0x720"}, "WxH"},
      {{tag, "--screen", "1280x720p"}, "WxH"},
  };
  for (const auto& [arguments, complaint] : rows) {
    const auto refused = run(arguments);
    EXPECT_EQ(refused.exitStatus, 2) << complaint;
    EXPECT_EQ(refused.output, "") << complaint;
    EXPECT_THAT(refused.errors, HasSubstr(complaint));
  }
}

TEST_F(VastProgram, tellsPeopleWhatWasPickedAndWhyNotTheOthers) {
  const std::string files =
      vast::mediaFile("http://media.test/large.mp4", "type='video/mp4' width='1920' height='1080' bitrate='5000'") +
      vast::mediaFile("http://media.test/small.mp4", "type='video/mp4' width='640' height='360'") +
      vast::mediaFile("http://media.test/a.webm", "type='video/webm'");
  serve("/tag", vast::inLine("<AdTitle>Harbour\n &#x9b;31mat\tdawn</AdTitle>" +
                                 vast::linear(files, vast::tracking("mute", "http://t.test/m")),
                             "id='A' sequence='3'") +
                    vast::wrapper(server.url("/missing"), "id='B' sequence='4'", "<Error>http://t.test/b</Error>") +
                    vast::inLine("<Creatives><Creative/><Creative/></Creatives>", "id='C' sequence='5'"));
  const std::string shown = run({server.url("/tag")}).output;
  std::size_t at = 0;
  for (const std::string line :
       {"would show 1 ad.", "failed with error 6", "Ad 1 of 3: shown", "Harbour 31mat dawn",
        "http://media.test/large.mp4", "nearer to the screen's 1920x1080", "takes no video/webm", "mute, not asked",
        "Ad 2 of 3: not shown", "error, as 900   http://t.test/b", "because of multiple elements"}) {
    const auto found = shown.find(line, at);
    ASSERT_NE(found, std::string::npos) << "missing, or out of order: " << line << "\n" << shown;
    at = found + line.size();
  }
  EXPECT_THAT(run({HTTPServer::refusingURL()}).output,
              AllOf(HasSubstr("would show NO ad"), HasSubstr("Failed to connect")));
  EXPECT_THAT(run({file("broken.xml", "<VAST><Ad><InLine></Wrapper></VAST>")}).output,
              HasSubstr("the XML is broken in or after VAST > Ad > InLine"));
}
