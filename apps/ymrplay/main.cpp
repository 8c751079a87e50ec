// Plays one programme, or one ad, the way a host application would; see Options for what it takes.
#include <QGuiApplication>
#include <algorithm>
#include <clocale>
#include <cstdio>
#include <memory>
#include <string>

#include "VAST/SKLogger.h"
#include "ads/core/SKVASTMediaFilePicker.h"
#include "apps/ymrplay/AdScreenHost.h"
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

std::unique_ptr<Host> makeHost(Options options) {
  const auto quit = [] { QCoreApplication::quit(); };
  if (options.adScreen) return std::make_unique<AdScreenHost>(std::move(options), quit);
  return std::make_unique<PlayHost>(std::move(options), quit);
}

}  // namespace

int main(int argc, char** argv) {
  int status = 0;
  auto options = parseOptions(argc, argv, status);
  if (!options) return status;

  if (options->headless) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    MediaEngineSettings::shared().audio = MediaEngineSettings::Audio::none;
  }
  logToStandardError(options->logLevel);
  if (!options->reachabilityHost.empty()) SKVASTMediaFilePicker::setProbeHost(options->reachabilityHost);
  qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString& message) {
    SKLogger::warning("Qt", message.toStdString());
  });
  char* noArguments[] = {argv[0], nullptr};
  int argumentCount = 1;
  const QGuiApplication application(argumentCount, noArguments);
  std::setlocale(LC_NUMERIC, "C");  // Qt takes the user's locale; numbers in JSON have a point

  const auto host = makeHost(std::move(*options));
  const TerminationSignals termination([&host] { host->dismiss(); });
  host->play();
  QCoreApplication::exec();
  return host->exitStatus();
}
