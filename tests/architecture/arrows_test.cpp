// The house has floors. A folder may include what stands on a floor below its own, and never a folder beside or above
// it.
#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <regex>

namespace fs = std::filesystem;

namespace {

// Folders by floor, the top one first.
const std::vector<std::vector<std::string>> floors{
    // clang-format off
    {"apps"}, {"vastscreen"}, {"player"}, {"player/states"}, {"subtitles"},
    {"ads"}, {"ads/core"}, {"VAST/Parser"}, {"ads/records"}, {"VAST"},
    {"net", "xml", "ui"},
    {"platform/avkit"}, {"platform/avfoundation/layer"}, {"platform/avfoundation"}, {"platform/avfoundation/engine"},
    {"platform/uikit"}, {"platform/uikit/values"}, {"platform/systemconfiguration"},
    {"platform/foundation"}, {"platform/dispatch"}, {"platform/coremedia"}, {"platform"},
    // clang-format on
};

// The rooms of the ad-tag library, in which neither Qt nor GStreamer exists.
constexpr std::string_view vastRooms =
    " ads/core VAST/Parser ads/records VAST net xml platform/systemconfiguration platform/foundation "
    "platform/dispatch platform/coremedia platform/uikit/values ";

struct Place {
  std::string folder;
  std::size_t floor;
};

// The deepest named folder that holds `path`.
std::optional<Place> placeOf(const std::string& path) {
  std::optional<Place> best;
  for (std::size_t floor = 0; floor < floors.size(); ++floor) {
    for (const auto& folder : floors[floor]) {
      if (path.rfind(folder + "/", 0) == 0 && (!best || folder.size() > best->folder.size())) best = {folder, floor};
    }
  }
  return best;
}

using Included = std::vector<std::pair<std::string, std::string>>;  // file, what it includes (with its bracket)

Included readTree(const fs::path& root) {
  static const std::regex include(R"re(^\s*#\s*include\s*(["<][^">]+)[">])re");
  Included result;
  for (const auto& entry : fs::recursive_directory_iterator(root)) {
    const auto path = fs::relative(entry.path(), root).string();
    if (!std::regex_search(path, std::regex(R"(\.(h|cpp)$)")) || !placeOf(path)) continue;
    std::ifstream stream(entry.path());
    std::smatch match;
    for (std::string line; std::getline(stream, line);) {
      if (std::regex_search(line, match, include)) result.emplace_back(path, match[1]);
    }
  }
  return result;
}

std::vector<std::string> arrowsUpwards(const Included& tree) {
  std::vector<std::string> wrong;
  for (const auto& [file, included] : tree) {
    if (included[0] != '"') continue;
    const auto from = placeOf(file);
    const auto to = placeOf(included.substr(1));
    const bool pointsDown = to && (to->folder == from->folder || to->floor > from->floor);
    if (!pointsDown) wrong.push_back(file + " includes " + included.substr(1));
  }
  return wrong;
}

std::vector<std::string> strangersBelow(const Included& tree) {
  static const std::regex stranger(R"(^<(Q[A-Z]|Qt|gst/|glib))");
  std::vector<std::string> wrong;
  for (const auto& [file, included] : tree) {
    const bool isVastRoom = vastRooms.find(" " + placeOf(file)->folder + " ") != vastRooms.npos;
    if (isVastRoom && std::regex_search(included, stranger)) wrong.push_back(file + " includes " + included.substr(1));
  }
  return wrong;
}

}  // namespace

TEST(Architecture, includesOnlyPointDownAndTheAdTagLibraryKnowsNeitherQtNorGStreamer) {
  const auto tree = readTree(PROJECT_ROOT);
  ASSERT_GT(tree.size(), 100u);
  EXPECT_THAT(arrowsUpwards(tree), testing::IsEmpty());
  EXPECT_THAT(strangersBelow(tree), testing::IsEmpty());
}

TEST(Architecture, theCheckItselfFindsWrongArrows) {
  EXPECT_THAT(arrowsUpwards({{"platform/coremedia/a.h", "\"platform/dispatch/b.h"},
                             {"net/a.h", "\"xml/b.h"},
                             {"player/states/a.h", "\"player/b.h"},
                             {"VAST/a.h", "\"nowhere/b.h"},
                             {"player/a.h", "\"player/states/b.h"},
                             {"apps/a/a.h", "\"platform/avkit/b.h"},
                             {"net/a.h", "<vector"}}),
              testing::ElementsAre("platform/coremedia/a.h includes platform/dispatch/b.h", "net/a.h includes xml/b.h",
                                   "player/states/a.h includes player/b.h", "VAST/a.h includes nowhere/b.h"));
  EXPECT_THAT(strangersBelow({{"xml/a.h", "<QString"}, {"xml/a.h", "<queue"}, {"player/a.h", "<QString"}}),
              testing::ElementsAre("xml/a.h includes QString"));
}
