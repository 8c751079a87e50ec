// The house has floors, listed in cmake/floors.txt. A folder may include what stands on a floor below its own, and
// never a folder beside or above it.
#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <sstream>

namespace fs = std::filesystem;

namespace {

struct Floor {
  std::string library;
  std::vector<std::string> folders;
};

// The top one first.
const std::vector<Floor> floors = [] {
  std::vector<Floor> result;
  std::ifstream list(PROJECT_ROOT "/cmake/floors.txt");
  for (std::string line; std::getline(list, line);) {
    if (line.empty() || line[0] == '#') continue;
    std::istringstream words(line);
    auto& floor = result.emplace_back();
    words >> floor.library;
    for (std::string folder; words >> folder;) floor.folders.push_back(folder);
  }
  return result;
}();

struct Place {
  std::string folder;
  std::size_t floor;
};

// The deepest named folder that holds `path`.
std::optional<Place> placeOf(const std::string& path) {
  std::optional<Place> best;
  for (std::size_t floor = 0; floor < floors.size(); ++floor) {
    for (const auto& folder : floors[floor].folders) {
      if (path.rfind(folder + "/", 0) == 0 && (!best || folder.size() > best->folder.size())) best = {folder, floor};
    }
  }
  return best;
}

bool isOfTheAdTags(const Place& place) {
  return floors[place.floor].library == "ymrvast";
}

// Whether neither Qt nor GStreamer exists there.
bool isBare(const Place& place) {
  return isOfTheAdTags(place) || floors[place.floor].library == "bare";
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
    const bool leavesTheAdTags = to && isOfTheAdTags(*from) && !isOfTheAdTags(*to) && to->folder != "platform";
    if (!pointsDown || leavesTheAdTags) wrong.push_back(file + " includes " + included.substr(1));
  }
  return wrong;
}

std::vector<std::string> strangersBelow(const Included& tree) {
  static const std::regex stranger(R"(^<(Q[A-Z]|Qt|gst/|glib))");
  std::vector<std::string> wrong;
  for (const auto& [file, included] : tree) {
    if (isBare(*placeOf(file)) && std::regex_search(included, stranger))
      wrong.push_back(file + " includes " + included.substr(1));
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

TEST(Architecture, theTextHasTheSameFloors) {
  std::vector<std::string> listed, described;
  for (const auto& floor : floors) listed.insert(listed.end(), floor.folders.begin(), floor.folders.end());
  std::ifstream text(PROJECT_ROOT "/docs/architecture.md");
  static const std::regex row(R"(^\|((?: `[\w/]+/`,?)+) \|)"), folder("`([^`]+)/`");
  std::smatch match;
  for (std::string line; std::getline(text, line);) {
    if (!std::regex_search(line, match, row)) continue;
    const auto cell = match[1].str();
    for (std::sregex_iterator name(cell.begin(), cell.end(), folder), end; name != end; ++name) {
      described.push_back((*name)[1]);
    }
  }
  EXPECT_EQ(described, listed);
}

TEST(Architecture, theCheckItselfFindsWrongArrows) {
  EXPECT_THAT(arrowsUpwards({{"platform/coremedia/a.h", "\"platform/dispatch/b.h"},
                             {"net/a.h", "\"xml/b.h"},
                             {"net/a.h", "\"ui/b.h"},
                             {"player/states/a.h", "\"player/b.h"},
                             {"VAST/a.h", "\"nowhere/b.h"},
                             {"player/a.h", "\"player/states/b.h"},
                             {"apps/a/a.h", "\"platform/avkit/b.h"},
                             {"net/a.h", "<vector"}}),
              testing::ElementsAre("platform/coremedia/a.h includes platform/dispatch/b.h", "net/a.h includes xml/b.h",
                                   "net/a.h includes ui/b.h", "player/states/a.h includes player/b.h",
                                   "VAST/a.h includes nowhere/b.h"));
  EXPECT_THAT(strangersBelow({{"xml/a.h", "<QString"}, {"xml/a.h", "<queue"}, {"player/a.h", "<QString"}}),
              testing::ElementsAre("xml/a.h includes QString"));
}
