#include <algorithm>
#include <array>
#include <charconv>
#include <cstdlib>
#include <limits>
#include <tuple>
#include <utility>

#include "VAST/Parser/VASTXMLUtil.h"
#include "VAST/Parser/YMRProfiles.h"
#include "platform/foundation/NSCharacterSet.h"
#include "platform/foundation/NSString.h"

namespace {

using Element = XML::Element;

// What is assumed of a connection that has shown nothing yet, in kilobits a second.
constexpr double unshownKilobits = 4000;

const std::string* attribute(const Element& element, std::string_view name) {
  const auto found = element.attributes.find(name);
  return found == element.attributes.end() ? nullptr : &found->second;
}

bool containsAny(const std::string* text, std::initializer_list<std::string_view> words) {
  if (!text) return false;
  const auto matches = [](char given, char wanted) { return lowercaseASCII(given) == wanted; };
  return std::ranges::any_of(words, [&](std::string_view word) {
    return std::search(text->begin(), text->end(), word.begin(), word.end(), matches) != text->end();
  });
}

const std::string* orNull(const std::optional<std::string>& text) {
  return text ? &*text : nullptr;
}

// A whole number of 0 and more; what is none comes after all that are.
std::uint64_t orderOf(const Element& element) {
  constexpr auto last = std::numeric_limits<std::uint64_t>::max();
  const auto* text = attribute(element, "sequence");
  if (!text) return last;
  const auto digits = stringByTrimmingCharactersInSet(*text, NSCharacterSet::whitespaceAndNewlineCharacterSet());
  std::uint64_t number = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
  return error == std::errc() && end == digits.data() + digits.size() ? number : last;
}

bool isFalse(const Element& element, std::string_view name) {
  const auto* text = attribute(element, name);
  if (!text) return false;
  const auto value = stringByTrimmingCharactersInSet(*text, NSCharacterSet::whitespaceAndNewlineCharacterSet());
  return value == "0" || (value.size() == 5 && containsAny(text, {"false"}));
}

// Of a kind that the engine surely plays, or of none that is named.
bool isUsual(const SKVASTMediaFile& file) {
  const auto* type = orNull(file.type());
  return !type || type->empty() ||
         containsAny(type,
                     {"mp4", "m4v", "quicktime", "3gpp", "webm", "matroska", "mkv", "mpegurl", "dash+xml", "mp2t"});
}

std::int64_t area(const SKVASTMediaFile& file) {
  return std::int64_t{std::max(file.width(), 0)} * std::max(file.height(), 0);
}

}  // namespace

YMRTagRules::Answer YMRBroadRules::answerOf(const URLResponse& response) const {
  if (response.error || response.status < 200 || response.status > 299) return Answer::nothing;
  return response.body.empty() || response.status == 204 ? Answer::noAd : Answer::document;
}

// A byte order mark stays, unless there are blanks behind it.
std::size_t YMRBroadRules::blanksBefore(std::span<const std::byte> document) const {
  const std::string_view text(reinterpret_cast<const char*>(document.data()), document.size());
  const std::size_t mark = text.starts_with("\xEF\xBB\xBF") ? 3 : 0;
  const auto first = std::min(text.find_first_not_of(" \t\r\n", mark), text.size());
  return first == mark ? 0 : first;
}

// Spaces in an address are what browsers make of them.
std::optional<NSURL> YMRBroadRules::urlOf(std::string_view text) const {
  text = stringByTrimmingCharactersInSet(text, NSCharacterSet::whitespaceAndNewlineCharacterSet());
  if (text.find(' ') == text.npos) return urlWithCleanString(text);
  return urlWithCleanString(stringByReplacingOccurrencesOfString(text, " ", "%20"));
}

NSURL YMRBroadRules::withMacros(const NSURL& url, const VASTMacroValues& values) const {
  const std::string& text = url.absoluteString();
  if (!mayHoldVASTMacros(text)) return url;
  // Whoever is asked stays who it is.
  const auto path = std::min(text.find('/', text.find("://") + 3), text.size());
  return NSURL::URLWithString(text.substr(0, path) + expandVASTMacros(std::string_view(text).substr(path), values))
      .value_or(url);
}

YMRTagRules::Allowance YMRBroadRules::allowanceOf(const Element* wrapper) const {
  if (!wrapper) return {};
  return {.wrappers = !isFalse(*wrapper, "followAdditionalWrappers"),
          .severalAds = !isFalse(*wrapper, "allowMultipleAds"),
          .fallBacks = !isFalse(*wrapper, "fallbackOnNoAd")};
}

// Without a pod the first of the others is what is played, and the rest take its place one after another.
YMRTagRules::Split YMRBroadRules::split(const VASTDocument& document) const {
  Split split;
  const auto ads = document.adElements();
  if (ads.size() < 2) return split;
  split.isSplit = true;
  for (std::size_t i = 0; i < ads.size(); ++i) {
    (attribute(*ads[i], "sequence") ? split.pod : split.standalone).push_back({ads[i].get(), i});
  }
  std::stable_sort(split.pod.begin(), split.pod.end(),
                   [](const Child& left, const Child& right) { return orderOf(*left.ad) < orderOf(*right.ad); });
  if (split.pod.empty()) {
    split.pod.push_back(split.standalone.front());
    split.standalone.erase(split.standalone.begin());
  }
  return split;
}

const Element* YMRBroadRules::adIn(const VASTDocument& document, std::string_view, std::size_t position) const {
  const auto ads = document.adElements();
  return position < ads.size() ? ads[position].get() : nullptr;
}

const Element* YMRBroadRules::vastOf(const VASTDocument& document) const {
  const auto* root = document.root();
  return root && isNamed(*root, "VAST") ? root : nullptr;
}

const Element* YMRBroadRules::emptyVastOf(const VASTDocument& document) const {
  return document.adElements().empty() ? vastOf(document) : nullptr;
}

bool YMRBroadRules::isNamed(const Element& element, std::string_view name) const {
  const std::string_view given = element.name;
  return given == name || (given.ends_with(name) && given[given.size() - name.size() - 1] == ':');
}

const Element* YMRBroadRules::child(const Element* parent, std::string_view name) const {
  if (!parent) return nullptr;
  for (const auto& child : parent->childElements) {
    if (isNamed(*child, name)) return child.get();
  }
  return nullptr;
}

const Element* YMRBroadRules::contentOf(const Element* ad) const {
  const auto* inLine = child(ad, "InLine");
  return inLine ? inLine : child(ad, "Wrapper");
}

std::vector<const Element*> YMRBroadRules::at(const Element* content, Path path) const {
  std::vector<const Element*> found;
  if (!content) return found;
  found.push_back(content);
  for (const auto name : path) {
    if (name == "Linear" && isNamed(*content, "InLine")) {
      const auto* played = playedOf(std::move(found));
      found.clear();
      if (played) found.push_back(played);
      continue;
    }
    std::vector<const Element*> next;
    for (const auto* parent : found) {
      for (const auto& child : parent->childElements) {
        if (isNamed(*child, name)) next.push_back(child.get());
      }
    }
    found = std::move(next);
  }
  return found;
}

bool YMRBroadRules::isFilm(const Element& mediaFile) const {
  const auto text = [&](std::string_view name) {
    const auto* value = attribute(mediaFile, name);
    return value ? std::optional(*value) : std::nullopt;
  };
  const auto url = mediaFile.text ? urlOf(*mediaFile.text) : std::nullopt;
  return url && url->isHTTP() &&
         takes({{}, {}, text("type"), {}, {}, {}, {}, {}, text("apiFramework"), url->absoluteString()});
}

const Element* YMRBroadRules::playedOf(std::vector<const Element*> creatives) const {
  std::stable_sort(creatives.begin(), creatives.end(),
                   [](const auto* left, const auto* right) { return orderOf(*left) < orderOf(*right); });
  std::vector<const Element*> linears;
  for (const auto* creative : creatives) {
    for (const auto& each : creative->childElements) {
      if (isNamed(*each, "Linear")) linears.push_back(each.get());
    }
  }
  if (linears.size() < 2) return linears.empty() ? nullptr : linears.front();
  static constexpr std::array<std::string_view, 2> toFilms{"MediaFiles", "MediaFile"};
  const auto found = std::ranges::find_if(linears, [this](const auto* linear) {
    return std::ranges::any_of(at(linear, toFilms), [this](const auto* file) { return isFilm(*file); });
  });
  return found == linears.end() ? linears.front() : *found;
}

std::vector<VASTNotRun> YMRBroadRules::notRunOf(const std::vector<const Element*>& chain) const {
  static constexpr std::array<std::string_view, 4> toFilms{"Creatives", "Creative", "Linear", "MediaFiles"};
  static constexpr std::array<std::string_view, 2> toVerifications{"AdVerifications", "Verification"};
  static constexpr std::array<std::string_view, 4> toExtended{"Extensions", "Extension", "AdVerifications",
                                                              "Verification"};
  static constexpr std::array<std::string_view, 2> toTrackers{"TrackingEvents", "Tracking"};
  std::vector<VASTNotRun> notRun;
  for (const auto* content : chain) {
    for (const auto* files : at(content, toFilms)) {
      for (const auto& file : files->childElements) {
        const auto* framework = attribute(*file, "apiFramework");
        const bool isFile = isNamed(*file, "MediaFile") || isNamed(*file, "InteractiveCreativeFile");
        if (isFile && containsAny(framework, {"vpaid"})) notRun.push_back({"a VPAID program", 901, {}});
        if (isFile && containsAny(framework, {"simid"})) notRun.push_back({"a SIMID creative", 409, {}});
      }
    }
    for (const YMRTagRules::Path path : {YMRTagRules::Path(toVerifications), YMRTagRules::Path(toExtended)}) {
      for (const auto* verification : at(content, path)) {
        const auto* vendor = attribute(*verification, "vendor");
        VASTNotRun entry{"a verification script" + (vendor ? " of " + *vendor : ""), 410, {}};
        for (const auto* tracking : at(verification, toTrackers)) {
          const auto* event = attribute(*tracking, "event");
          if (!event || *event != "verificationNotExecuted" || !tracking->text) continue;
          const auto url = urlOf(*tracking->text);
          if (url && url->isHTTP()) entry.tellAt.push_back(*url);
        }
        notRun.push_back(std::move(entry));
      }
    }
  }
  return notRun;
}

// Never what wants to be run. Whether a kind of video that is seldom met can be played only its player knows.
bool YMRBroadRules::takes(const SKVASTMediaFile& file) const {
  if (containsAny(orNull(file.apiFramework()), {"vpaid", "simid"})) return false;
  const auto* type = orNull(file.type());
  const bool saysNothing = !type || type->empty() || containsAny(type, {"octet-stream"});
  if (!saysNothing) return isUsual(file) || containsAny(type, {"video/"});
  const std::string path = file.url() ? file.url()->path() : "";
  constexpr std::array<std::string_view, 4> programs{".js", ".swf", ".html", ".htm"};
  return std::ranges::none_of(programs, [&](auto ending) { return path.ends_with(ending); });
}

std::shared_ptr<SKVASTMediaFile> YMRBroadRules::choose(Files files, std::int64_t wanted,
                                                       std::optional<double> kilobits) const {
  const double carried = kilobits.value_or(unshownKilobits);
  // The smaller the better; of what the connection does not carry the least.
  const auto rank = [&](const SKVASTMediaFile& file) {
    const bool isCarried = file.bitrate() <= carried;
    return std::tuple(!isUsual(file), std::abs(wanted - area(file)), area(file), !isCarried,
                      isCarried ? -std::int64_t{file.bitrate()} : std::int64_t{file.bitrate()});
  };
  return *std::ranges::min_element(files,
                                   [&](const auto& left, const auto& right) { return rank(*left) < rank(*right); });
}
