#include "apps/ymrvast/Options.h"

#include <tuple>
#include <vector>

#include "VAST/SKLogger.h"
#include "apps/shared/CommandLine.h"
#include "apps/shared/Numbers.h"
#include "apps/shared/ProfileOption.h"

namespace {

const char* const description =
    "Shows what the player would make of an ad tag: the chain of wrappers, each ad,\n"
    "which media file it picks and why, and which URLs it would ask. Of a schedule\n"
    "document (VMAP) it shows the breaks, and what the tag of each comes to.";
const char* const footer =
    "Exit status: 0 the player would show at least one ad, 1 it would show none,\n"
    "2 wrong usage or unreadable file.\n\n"
    "Examples:\n"
    "  ymrvast https://ads.example/tag\n"
    "  ymrvast --profile broad https://ads.example/schedule\n"
    "  ymrvast --validate --screen 1280x720 saved.xml\n"
    "  curl -s https://ads.example/tag | ymrvast --json - | jq .ads";

void parseSource(Options& options) {
  if (options.source.empty()) throw CLI::ValidationError("SOURCE", "is empty");
  if (options.source.find("://") == std::string::npos) return;
  options.url = NSURL::URLWithString(options.source);
  if (!options.url) throw CLI::ValidationError("SOURCE", "'" + options.source + "' is not a URL");
  if (!options.url->isHTTP()) {
    throw CLI::ValidationError("SOURCE", "'" + options.source + "': only http and https are fetched");
  }
}

void parseScreen(const std::string& text, Options& options) {
  const auto sides = plainSize(text, 1, 9999);
  if (!sides) throw CLI::ValidationError("--screen", "'" + text + "' is not WxH with sides from 1 to 9999");
  std::tie(options.screenWidth, options.screenHeight) = *sides;
}

}  // namespace

std::optional<Options> parseOptions(int argc, char** argv, int& exitStatus) {
  CLI::App app(description, "ymrvast");
  app.footer(footer);
  app.get_formatter()->column_width(26);
  app.set_version_flag("--version", std::string("ymrvast ") + YMR_VERSION);

  Options options;
  std::string screen, logLevel = "error";
  const auto& names = SKLogger::levelNames();
  app.add_option("SOURCE", options.source, "URL (http, https), file, or - for standard input")->required();
  app.add_flag("--json", options.json, "Print one JSON object for scripts");
  app.add_flag("--validate", options.validate, "Also check documents against the VAST 2.0.1 schema");
  addProfileOption(app, options.profile);
  app.add_option("--screen", screen, "Screen size to pick media files for (1920x1080)")->type_name("WxH");
  app.add_option("--reachability-host", options.reachabilityHost, "Its route tells whether there is a network")
      ->type_name("HOST");
  app.add_option("--log", logLevel, "Log: none, error (the default), warning, info, debug")
      ->type_name("LEVEL")
      ->check(CLI::IsMember(std::vector<std::string>(names.begin(), names.end())).description(""));

  const bool isUsable = parsed(app, argc, argv, exitStatus, [&] {
    parseSource(options);
    if (!screen.empty()) parseScreen(screen, options);
  });
  if (!isUsable) return std::nullopt;
  options.logLevel = *SKLogger::levelNamed(logLevel);
  return options;
}
