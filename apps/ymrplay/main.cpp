// Plays one programme, or one ad, the way a host application would; see Options for what it takes.
#include <QGuiApplication>
#include <algorithm>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>
#include <string>
#include <utility>

#include "VAST/SKLogger.h"
#include "ads/core/SKVASTMediaFilePicker.h"
#include "apps/shared/StandardStreams.h"
#include "apps/ymrplay/AdScreenHost.h"
#include "apps/ymrplay/LibraryWords.h"
#include "apps/ymrplay/Options.h"
#include "apps/ymrplay/PlayHost.h"
#include "apps/ymrplay/TerminationSignals.h"
#include "platform/avfoundation/engine/MediaEngine.h"

namespace {

// Messages quote what servers sent: a terminal must not obey it.
void logToStandardError(int level) {
  SKLogger::installSink(level, [](int, std::string_view tag, std::string_view message) {
    std::string line = std::string(tag) + ": " + std::string(message);
    std::replace_if(
        line.begin(), line.end(), [](unsigned char c) { return c < 0x20 || c == 0x7f; }, ' ');
    std::fprintf(stderr, "%s\n", line.c_str());
  });
}

std::unique_ptr<Host> makeHost(Options options, const std::function<void()>& finished) {
  if (options.adScreen) return std::make_unique<AdScreenHost>(std::move(options), finished);
  return std::make_unique<PlayHost>(std::move(options), finished);
}

// Qt ends the process by std::exit() when the display dies. What is to be done then; empty while no event loop runs.
std::function<void()>& atDeathOfDisplay() {
  static std::function<void()> block;
  return block;
}

void runUntilOver(Host& host, const bool& isOver) {
  atDeathOfDisplay() = [&host] {
    host.fail("the display is gone");
    std::_Exit(host.exitStatus());
  };
  std::atexit([] {
    if (const auto block = std::exchange(atDeathOfDisplay(), nullptr)) block();
  });
  if (!isOver) QCoreApplication::exec();
  atDeathOfDisplay() = nullptr;
  if (!isOver) host.fail("the display is gone");
}

}  // namespace

int main(int argc, char** argv) {
  prepareStandardStreams();
  TerminationSignals termination;
  int status = 0;
  auto options = parseOptions(argc, argv, status);
  if (!options) return status;

  if (options->headless) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    MediaEngineSettings::shared().audio = MediaEngineSettings::Audio::none;
  }
  if (options->isEngineInHost) MediaEngineSettings::shared().process = MediaEngineSettings::Process::host;
  logToStandardError(options->logLevel);
  logWordsOfLibraries();
  if (!options->reachabilityHost.empty()) SKVASTMediaFilePicker::setProbeHost(options->reachabilityHost);
  char* noArguments[] = {argv[0], nullptr};
  int argumentCount = 1;
  const QGuiApplication application(argumentCount, noArguments);
  std::setlocale(LC_NUMERIC, "C");  // Qt takes the user's locale; numbers in JSON have a point

  bool isOver = false;
  const auto host = makeHost(std::move(*options), [&isOver] {
    isOver = true;
    QCoreApplication::quit();
  });
  termination.listen([&host] { host->dismiss(); });
  host->play();
  runUntilOver(*host, isOver);
  return host->exitStatus();
}
