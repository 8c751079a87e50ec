#include <fstream>
#include <iostream>
#include <optional>
#include <string>

#include "ads/core/SKVASTMediaFilePicker.h"
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
constexpr std::size_t maximumBytes = 64 * 1024 * 1024;

// Nothing, with the reason on standard error, when it cannot be read.
std::optional<std::string> contents(const Options& options) {
  std::ifstream file;
  if (!options.readsStandardInput()) file.open(options.source, std::ios::binary);
  std::istream& in = options.readsStandardInput() ? std::cin : file;
  std::string text;
  char block[64 * 1024];
  while (in.read(block, sizeof block), in.gcount() > 0) {
    text.append(block, static_cast<std::size_t>(in.gcount()));
    if (text.size() > maximumBytes) {
      std::cerr << "ymrvast: " << options.source << " is longer than 64 MiB\n";
      return std::nullopt;
    }
  }
  if (!in.eof()) {
    std::cerr << "ymrvast: " << options.source << " cannot be read\n";
    return std::nullopt;
  }
  return text;
}

}  // namespace

int main(int argc, char** argv) {
  int exitStatus = 0;
  const auto options = parseOptions(argc, argv, exitStatus);
  if (!options) return exitStatus;
  std::optional<VASTDocument> document;
  if (!options->url) {
    const auto text = contents(*options);
    if (!text) return unreadable;
    document.emplace(*text);
  }

  PlainRunLoop loop;
  logToStandardError(options->logLevel);
  UIScreen::mainScreen().setSize({options->screenWidth * 1.0, options->screenHeight * 1.0});
  if (!options->reachabilityHost.empty()) SKVASTMediaFilePicker::setProbeHost(options->reachabilityHost);
  const Inspection inspection = inspect(*options, document, loop);
  (options->json ? printJSON : printText)(inspection, std::cout);
  std::cout.flush();
  return inspection.shownCount > 0 ? showsAnAd : showsNone;
}
