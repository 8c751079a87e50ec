#include <iostream>
#include <optional>
#include <utility>

#include "apps/shared/Printable.h"
#include "apps/shared/StandardStreams.h"
#include "apps/ymrsrt/JSONView.h"
#include "apps/ymrsrt/Options.h"
#include "apps/ymrsrt/TextView.h"
#include "platform/dispatch/PlainRunLoop.h"
#include "subtitles/core/ASBSubtitleList.h"
#include "subtitles/core/ASBSubtitleNotes.h"
#include "subtitles/core/ASBSubtitleReader.h"

namespace {

constexpr int showsACue = 0;
constexpr int showsNone = 1;
constexpr int unreadable = 2;
constexpr int unwritable = 2;
constexpr std::size_t mebibytesLimit = 16;  // as the player has it

ASBSubtitleText textOf(const Options& options) {
  if (options.url) {
    const PlainRunLoop loop;
    return readSubtitleText(*options.url);
  }
  Input input = readInput(options.source, mebibytesLimit);
  if (input.problem.empty()) return subtitleTextOfBytes(std::move(input.bytes));
  return {"", NSError{NSURLErrorDomain, NSURLErrorResourceUnavailable, "Standard input " + input.problem + "."}, false};
}

// nil when nothing is shown then.
std::optional<std::string> textAt(double seconds, const std::string& content) {
  const ASBSubtitleList list(subtitlesFromSRT(content));
  const ASBSubtitle* const subtitle = list.lastSubtitleAtTime(seconds);
  if (!subtitle || subtitle->text.empty()) return std::nullopt;
  return subtitle->text;
}

int run(const Options& options) {
  const ASBSubtitleText text = textOf(options);
  const ASBSubtitleNotes notes(text);
  const auto shown = options.at ? textAt(*options.at, text.content) : std::nullopt;
  if (options.json) {
    printJSON(options, text, notes, shown, std::cout);
  } else if (text.error) {
    std::cerr << "ymrsrt: " << printable(options.source) << ": " << printable(text.error->message) << '\n';
  } else if (options.at) {
    if (shown) std::cout << printableLines(*shown) << '\n';
  } else {
    printText(options.source, notes, std::cout);
  }
  if (text.error) return unreadable;
  return notes.shownCount() > 0 ? showsACue : showsNone;
}

}  // namespace

int main(int argc, char** argv) {
  prepareStandardStreams();
  int exitStatus = 0;
  if (const auto options = parseOptions(argc, argv, exitStatus)) exitStatus = run(*options);
  return flushStandardOutput("ymrsrt") ? exitStatus : unwritable;
}
