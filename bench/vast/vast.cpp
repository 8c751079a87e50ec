// Reads every document of a folder again and again: as the framework does, parse and all queries, and, in turns, with a
// bare SAX pass of libxml2's; and as either profile reads them.
//
//   bench_vast rates FOLDER [SECONDS]    prints documents a second of both, and what one pass over the folder found
//   bench_vast profiles FOLDER [SECONDS] prints documents a second read exactly and read broadly, in turns
//   bench_vast large FOLDER              prints name, bytes and the framework's CPU milliseconds, the median of five,
//                                        of each
#include <libxml/SAX2.h>
#include <libxml/parser.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "VAST/Parser/YMRVastModel.h"

namespace {

struct Found {
  std::size_t ads = 0;
  std::size_t mediaFiles = 0;
  std::size_t urls = 0;  // of impressions, errors and tracking events
};

struct Document {
  std::string name;
  std::string text;
};

std::vector<Document> documents(const std::string& folder) {
  std::vector<Document> list;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    std::ifstream file(entry.path(), std::ios::binary);
    list.push_back({entry.path().stem().string(), std::string(std::istreambuf_iterator<char>(file), {})});
  }
  std::sort(list.begin(), list.end(), [](const auto& left, const auto& right) { return left.name < right.name; });
  return list;
}

void ask(const YMRVastModel& model, Found& found) {
  ++found.ads;
  model.redirectUrl();
  model.adTitle();
  model.adDescription();
  found.mediaFiles += model.mediaFiles().size();
  found.urls += model.impressions().size() + model.errors().size();
  for (const auto& [event, urls] : model.trackingEvents()) found.urls += urls.size();
}

void readAsFramework(const VASTDocument& document, Found& found, YMRTagProfile profile) {
  if (!document.isWellFormed()) std::abort();
  const auto model = std::make_shared<YMRVastModel>(profile);
  model->addVASTDocument(document);
  model->vastVersion();
  const auto standalone = model->standaloneAdModels();
  const auto sequenced = model->sequencedAdModels();
  if (standalone.empty() || sequenced.front() != model) {
    for (const auto& ad : sequenced) ask(*ad, found);
  }
  for (const auto& ad : standalone) ask(*ad, found);
}

void readAsSAX(const std::string& text) {
  static xmlSAXHandler handler = [] {
    xmlSAXHandler empty{};
    empty.initialized = XML_SAX2_MAGIC;
    empty.startElementNs = [](void*, const xmlChar*, const xmlChar*, const xmlChar*, int, const xmlChar**, int, int,
                              const xmlChar**) {};
    empty.endElementNs = [](void*, const xmlChar*, const xmlChar*, const xmlChar*) {};
    empty.characters = empty.ignorableWhitespace = empty.cdataBlock = [](void*, const xmlChar*, int) {};
    return empty;
  }();
  if (xmlSAXUserParseMemory(&handler, nullptr, text.data(), static_cast<int>(text.size())) != 0) std::abort();
}

struct WallTime {
  double milliseconds() const {
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - started).count();
  }
  std::chrono::steady_clock::time_point started = std::chrono::steady_clock::now();
};

// For what takes long enough to be interrupted by whatever else the machine does.
struct CPUTime {
  double milliseconds() const { return static_cast<double>(std::clock() - started) * 1000 / CLOCKS_PER_SEC; }
  std::clock_t started = std::clock();
};

// Making the documents, which a fetch does by handing its buffer over, is not counted; taking all down is.
template <class Stopwatch>
double millisecondsAsFramework(const std::vector<Document>& list, Found& found,
                               YMRTagProfile profile = YMRTagProfileExact) {
  std::vector<VASTDocument> fetched;
  for (const auto& document : list) fetched.emplace_back(document.text);
  std::reverse(fetched.begin(), fetched.end());
  const Stopwatch stopwatch;
  for (; !fetched.empty(); fetched.pop_back()) readAsFramework(fetched.back(), found, profile);
  return stopwatch.milliseconds();
}

double millisecondsAsSAX(const std::vector<Document>& list) {
  const WallTime stopwatch;
  for (const auto& document : list) readAsSAX(document.text);
  return stopwatch.milliseconds();
}

// Both in turns, pass by pass, so that whatever else the machine does hits both.
void measureRates(const std::vector<Document>& list, double seconds) {
  Found found, ignored;
  millisecondsAsFramework<WallTime>(list, found);
  std::size_t passes = 0;
  double framework = 0, sax = 0;
  for (; framework + sax < seconds * 1000; ++passes) {
    sax += millisecondsAsSAX(list);
    framework += millisecondsAsFramework<WallTime>(list, ignored);
  }
  const auto count = static_cast<double>(passes * list.size() * 1000);
  std::printf("%.1f %.1f %zu ads, %zu media files, %zu tracking URLs\n", count / framework, count / sax, found.ads,
              found.mediaFiles, found.urls);
}

void measureProfiles(const std::vector<Document>& list, double seconds) {
  Found exact, broad, ignored;
  millisecondsAsFramework<WallTime>(list, exact, YMRTagProfileExact);
  millisecondsAsFramework<WallTime>(list, broad, YMRTagProfileBroad);
  std::size_t passes = 0;
  double exactly = 0, broadly = 0;
  for (; exactly + broadly < seconds * 1000; ++passes) {
    exactly += millisecondsAsFramework<WallTime>(list, ignored, YMRTagProfileExact);
    broadly += millisecondsAsFramework<WallTime>(list, ignored, YMRTagProfileBroad);
  }
  const auto count = static_cast<double>(passes * list.size() * 1000);
  std::printf("exact %.1f/s (%zu ads, %zu media files)\nbroad %.1f/s (%zu ads, %zu media files), %.3f x exact's time\n",
              count / exactly, exact.ads, exact.mediaFiles, count / broadly, broad.ads, broad.mediaFiles,
              broadly / exactly);
}

void measureLarge(const std::vector<Document>& list) {
  for (const auto& document : list) {
    std::vector<double> rounds;
    for (int round = 0; round < 5; ++round) {
      Found ignored;
      rounds.push_back(millisecondsAsFramework<CPUTime>({document}, ignored));
    }
    std::sort(rounds.begin(), rounds.end());
    std::printf("%s %zu %.1f\n", document.name.c_str(), document.text.size(), rounds[2]);
  }
}

}  // namespace

int main(int argc, char** argv) {
  const std::string mode = argc > 2 ? argv[1] : "";
  if (mode != "rates" && mode != "profiles" && mode != "large") {
    std::fputs("usage: bench_vast rates|profiles|large FOLDER [SECONDS]\n", stderr);
    return 2;
  }
  const auto list = documents(argv[2]);
  const double seconds = argc > 3 ? std::atof(argv[3]) : 2.0;
  if (mode == "large") {
    measureLarge(list);
  } else if (mode == "profiles") {
    measureProfiles(list, seconds);
  } else {
    measureRates(list, seconds);
  }
  return 0;
}
