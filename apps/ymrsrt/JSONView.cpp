#include "apps/ymrsrt/JSONView.h"

#include <nlohmann/json.hpp>

#include <utility>

namespace {

using Json = nlohmann::ordered_json;

// The source's name need not be UTF-8.
std::string written(const Json& value) {
  return value.dump(-1, ' ', false, Json::error_handler_t::replace);
}

std::string cueOf(const ASBNotedSubtitle& cue) {
  const ASBSubtitle& subtitle = cue.subtitle;
  Json notes = Json::array();
  for (const auto& note : cue.notes) notes.push_back(note.text);
  return written({{"index", subtitle.index},
                  {"start", subtitle.startTime},
                  {"stop", subtitle.stopTime},
                  {"text", subtitle.text},
                  {"markup", subtitle.text.find('<') != std::string::npos},
                  {"notes", notes}});
}

}  // namespace

// The cues are written one by one, since there may be a million of them.
void printJSON(const Options& options, const ASBSubtitleText& text, const ASBSubtitleNotes& notes,
               const std::optional<std::string>& shown, std::ostream& out) {
  out << "{\n  \"source\": " << written(options.source)
      << ",\n  \"error\": " << written(text.error ? Json(text.error->message) : Json(nullptr)) << ",\n  \"cues\": [";
  const char* separator = "\n    ";
  ASBNoteSummary summary;
  notes.forEach([&](const ASBNotedSubtitle& cue) {
    summary.add(cue.line, cue.notes);
    out << separator << cueOf(cue);
    separator = ",\n    ";
  });
  auto onFile = notes.notesOnFile();
  for (auto& sentence : summary.sentences()) onFile.push_back(std::move(sentence));
  out << (notes.count() ? "\n  ]" : "]") << ",\n  \"notes\": " << written(onFile);
  if (options.at) out << ",\n  \"shown\": " << written(shown ? Json(*shown) : Json(nullptr));
  out << "\n}\n";
}
