// What reading subtitles costs, and looking one up.
//
//   bench_subtitles write FILE CUES     writes an SRT file of that many cues of two lines
//   bench_subtitles read FILE...        reads each as the player does, file and cues, and prints how many there are
//   bench_subtitles grow FILE...        prints, of each, the CPU milliseconds that reading its cues takes, the median
//                                       of five
//   bench_subtitles tick FILE           prints the microseconds that a look-up takes, at the end of the file (the first
//                                       cue looked at is it), at its start and where nothing shows; medians of a
//                                       thousand
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <iterator>
#include <string>

#include "platform/dispatch/PlainRunLoop.h"
#include "subtitles/core/ASBSubtitleList.h"
#include "subtitles/core/ASBSubtitleNotes.h"
#include "subtitles/core/ASBSubtitleReader.h"
#include "subtitles/core/ASBSubtitleText.h"

namespace {

constexpr double interval = 2, shown = 1.8;  // seconds

void write(const std::string& path, int cues) {
  std::ofstream file(path, std::ios::binary);
  for (int i = 0; i < cues; ++i) {
    // No empty line after the last one, which would be one cue more.
    file << (i > 0 ? "\n" : "") << i + 1 << '\n'
         << timeStampOfSeconds(i * interval) << " --> " << timeStampOfSeconds(i * interval + shown)
         << "\nThis is what number " << i + 1 << " says,\nand <i>this</i> is its second line.\n";
  }
}

ASBSubtitleList read(const std::string& path) {
  const ASBSubtitleText text = readSubtitleText(NSURL::fileURLWithPath(path));
  if (text.error) {
    std::fprintf(stderr, "%s\n", text.error->message.c_str());
    std::exit(1);
  }
  return ASBSubtitleList(subtitlesFromSRT(text.content));
}

template <class Measure>
double median(int rounds, Measure measure) {
  std::vector<double> values;
  for (int i = 0; i < rounds; ++i) values.push_back(measure());
  std::sort(values.begin(), values.end());
  return values[values.size() / 2];
}

// Not through the loader, whose limit is for smaller files.
void grow(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  const std::string content(std::istreambuf_iterator<char>(file), {});
  std::size_t cues = 0;
  const double milliseconds = median(5, [&] {
    const std::clock_t began = std::clock();
    cues = ASBSubtitleList(subtitlesFromSRT(content)).subtitles().size();
    return static_cast<double>(std::clock() - began) * 1000 / CLOCKS_PER_SEC;
  });
  std::printf("%zu %zu %.2f\n", cues, content.size(), milliseconds);
}

void tick(const std::string& path) {
  const ASBSubtitleList list = read(path);
  const double end = static_cast<double>(list.subtitles().size()) * interval;
  for (const double time : {end - interval, 0.0, shown + 0.1}) {
    const double microseconds = median(1000, [&] {
      const auto began = std::chrono::steady_clock::now();
      const volatile bool found = list.lastSubtitleAtTime(time) != nullptr;
      static_cast<void>(found);
      return std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - began).count();
    });
    std::printf("%.2f ", microseconds);
  }
  std::printf("\n");
}

}  // namespace

int main(int argc, char** argv) {
  const std::string mode = argc > 2 ? argv[1] : "";
  const PlainRunLoop loop;
  if (mode == "write" && argc == 4) {
    write(argv[2], std::atoi(argv[3]));
  } else if (mode == "read") {
    for (int i = 2; i < argc; ++i) std::printf("%zu\n", read(argv[i]).subtitles().size());
  } else if (mode == "grow") {
    for (int i = 2; i < argc; ++i) grow(argv[i]);
  } else if (mode == "tick") {
    tick(argv[2]);
  } else {
    std::fputs("usage: bench_subtitles write FILE CUES | read FILE... | grow FILE... | tick FILE\n", stderr);
    return 2;
  }
  return 0;
}
