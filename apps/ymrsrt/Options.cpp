#include "apps/ymrsrt/Options.h"

#include "apps/shared/CommandLine.h"
#include "apps/shared/Numbers.h"

namespace {

const char* const description =
    "Shows what the player makes of a file of subtitles (SRT): the cues with their times,\n"
    "and for each what is odd about it, why it does not show, and what to do.";
const char* const footer =
    "Exit status: 0 at least one cue shows, 1 none does, 2 wrong usage, or a file that can't be\n"
    "read or is not UTF-8.\n\n"
    "Examples:\n"
    "  ymrsrt harbour.srt\n"
    "  ymrsrt --at 61.5 harbour.srt\n"
    "  curl -s https://films.example/harbour.srt | ymrsrt --json - | jq '.cues[] | select(.notes != [])'";

void parseSource(Options& options) {
  if (options.source.empty()) throw CLI::ValidationError("SOURCE", "is empty");
  if (options.source == "-") return;
  options.url = NSURL::URLFromUserInput(options.source);
  if (!options.url) throw CLI::ValidationError("SOURCE", "'" + options.source + "' is not a URL");
  if (!options.url->isHTTP() && !options.url->isFileURL()) {
    throw CLI::ValidationError("SOURCE", "'" + options.source + "': only files, http and https are read");
  }
}

}  // namespace

std::optional<Options> parseOptions(int argc, char** argv, int& exitStatus) {
  CLI::App app(description, "ymrsrt");
  app.footer(footer);
  app.get_formatter()->column_width(26);
  app.set_version_flag("--version", std::string("ymrsrt ") + YMR_VERSION);

  Options options;
  std::optional<std::string> at;
  app.add_option("SOURCE", options.source, "File, URL (http, https), or - for standard input")->required();
  app.add_flag("--json", options.json, "Print one JSON object for scripts");
  app.add_option("--at", at, "Print the text that shows at that time, if any, and nothing else")->type_name("SECONDS");
  const bool isUsable = parsed(app, argc, argv, exitStatus, [&] {
    parseSource(options);
    if (at) options.at = plainSeconds(*at);
    if (at && !options.at) {
      throw CLI::ValidationError("--at", "'" + *at + "' is not a number of seconds, as 90 or 61.5 is");
    }
  });
  if (!isUsable) return std::nullopt;
  return options;
}
