// The demo's ad server, and what the framework makes of its tags.
#include <gmock/gmock.h>
#include <signal.h>

#include "tests/apps/ymrplay/ProgramRun.h"

using testing::ElementsAre;
using testing::HasSubstr;

namespace {

ProgramRun serve(std::vector<std::string> command, const std::function<void(const std::string&, int)>& onLine = {}) {
  command.insert(command.begin(), {TAGS, TAGS});
  return runProgram(AD_SERVER, command, onLine);
}

// Titles of the ads that the player would show for a tag, in play order.
std::vector<std::string> shown(const char* list, const nlohmann::json& inspection) {
  std::vector<std::string> titles;
  for (const auto& ad : inspection[list]) {
    if (!ad["picked"].is_null()) titles.push_back(ad["title"]);
  }
  return titles;
}

}  // namespace

TEST(DemoAdServer, servesTagsThatTheFrameworkShowsAsTheDemoSays) {
  const auto inspect = [](const std::string& tag) {
    const auto run = serve({YMRVAST, "--json", "--reachability-host", "127.0.0.1", "http://ad-server/tags/" + tag});
    EXPECT_EQ(run.exitStatus, 0) << tag << run.errors;
    EXPECT_THAT(run.errors, HasSubstr("GET /tags/" + tag));
    return nlohmann::json::parse(run.output);
  };
  EXPECT_THAT(shown("ads", inspect("pre-roll.xml")), ElementsAre("Lumen", "Northern Nights"));
  const auto within = inspect("mid-roll.xml");
  EXPECT_THAT(shown("ads", within), ElementsAre("Pip"));
  EXPECT_EQ(within["hops"].size(), 3u);
  const auto after = inspect("post-roll.xml");
  EXPECT_THAT(shown("ads", after), ElementsAre("Moss & Co"));
  EXPECT_THAT(shown("standalone", after), ElementsAre("Tide Line"));
}

TEST(DemoAdServer, livesAsLongAsItsCommandAndEndsAsItDid) {
  EXPECT_EQ(serve({"sh", "-c", "exit 7"}).exitStatus, 7);
  EXPECT_EQ(serve({"nothing-of-that-name"}).exitStatus, 2);
  const auto terminated = serve({"sh", "-c", "echo ready; exec sleep 50"},
                                [](const std::string&, int process) { ::kill(process, SIGTERM); });
  EXPECT_EQ(terminated.exitStatus, 128 + SIGTERM);
}
