#include <iostream>
#include <optional>

#include "ads/core/SKVASTMediaFilePicker.h"
#include "apps/shared/StandardStreams.h"
#include "apps/ymrvast/Inspection.h"
#include "apps/ymrvast/JSONView.h"
#include "apps/ymrvast/Log.h"
#include "apps/ymrvast/Options.h"
#include "apps/ymrvast/TextView.h"
#include "platform/dispatch/PlainRunLoop.h"
#include "platform/uikit/values/UIScreen.h"

namespace {

constexpr int showsAnAd = 0;
constexpr int showsNone = 1;
constexpr int unreadable = 2;
constexpr int unwritable = 2;
constexpr std::size_t mebibytesLimit = 64;

}  // namespace

int main(int argc, char** argv) {
  prepareStandardStreams();
  int exitStatus = 0;
  const auto options = parseOptions(argc, argv, exitStatus);
  if (!options) return flushStandardOutput("ymrvast") ? exitStatus : unwritable;
  std::optional<VASTDocument> document;
  if (!options->url) {
    const Input input = readInput(options->source, mebibytesLimit);
    if (!input.problem.empty()) {
      std::cerr << "ymrvast: " << options->source << ' ' << input.problem << '\n';
      return unreadable;
    }
    document.emplace(input.bytes);
  }

  PlainRunLoop loop;
  logToStandardError(options->logLevel);
  UIScreen::mainScreen().setSize({options->screenWidth * 1.0, options->screenHeight * 1.0});
  if (!options->reachabilityHost.empty()) SKVASTMediaFilePicker::setProbeHost(options->reachabilityHost);
  const Inspection inspection = inspect(*options, document, loop);
  (options->json ? printJSON : printText)(inspection, std::cout);
  if (!flushStandardOutput("ymrvast")) return unwritable;
  return inspection.shownCount > 0 ? showsAnAd : showsNone;
}
