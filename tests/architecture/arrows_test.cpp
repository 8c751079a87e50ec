// The house has floors, listed in cmake/floors.txt. A folder may include what stands on a floor below its own, and
// never a folder beside or above it.
#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
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

// Whether `file` must not include what it does, given with its bracket.
bool isWrong(const std::string& file, const std::string& included) {
  static const std::regex stranger(R"(^<(Q[A-Z]|Qt|gst/|glib))");
  const auto libraryOf = [](const Place& place) { return floors[place.floor].library; };
  const Place from = *placeOf(file);
  const bool isOfTheAdTags = libraryOf(from) == "ymrvast";
  if (included[0] == '<') {
    return (isOfTheAdTags || libraryOf(from) == "bare") && std::regex_search(included, stranger);
  }
  const auto to = placeOf(included.substr(1));
  if (!to || (to->folder != from.folder && to->floor <= from.floor)) return true;
  return isOfTheAdTags && libraryOf(*to) != "ymrvast" && to->folder != "platform";
}

}  // namespace

TEST(Architecture, includesOnlyPointDownAndTheAdTagLibraryKnowsNeitherQtNorGStreamer) {
  static const std::regex source(R"(\.(h|cpp)$)"), include(R"re(^\s*#\s*include\s*(["<][^">]+)[">])re");
  int files = 0;
  for (const auto& entry : fs::recursive_directory_iterator(PROJECT_ROOT)) {
    const auto path = fs::relative(entry.path(), PROJECT_ROOT).string();
    if (!std::regex_search(path, source) || !placeOf(path)) continue;
    ++files;
    std::ifstream stream(entry.path());
    std::smatch match;
    for (std::string line; std::getline(stream, line);) {
      if (!std::regex_search(line, match, include)) continue;
      EXPECT_FALSE(isWrong(path, match[1])) << path << " includes " << match[1];
    }
  }
  EXPECT_GT(files, 100);
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
  const std::tuple<const char*, const char*, bool> rows[] = {
      {"platform/coremedia/a.h", "\"platform/dispatch/b.h", true},
      {"net/a.h", "\"xml/b.h", true},
      {"net/a.h", "\"ui/b.h", true},
      {"player/states/a.h", "\"player/b.h", true},
      {"VAST/a.h", "\"nowhere/b.h", true},
      {"xml/a.h", "<QString", true},
      {"player/a.h", "\"player/states/b.h", false},
      {"apps/a/a.h", "\"platform/avkit/b.h", false},
      {"xml/a.h", "<queue", false},
      {"player/a.h", "<QString", false},
  };
  for (const auto& [file, included, wrong] : rows) EXPECT_EQ(isWrong(file, included), wrong) << file << included;
}
