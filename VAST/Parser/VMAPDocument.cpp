#include "VAST/Parser/VMAPDocument.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <string_view>
#include <utility>

#include "VAST/Parser/VASTOffset.h"
#include "VAST/Parser/YMRTagRules.h"
#include "platform/foundation/NSCharacterSet.h"
#include "platform/foundation/NSString.h"
#include "xml/Parser.h"

namespace {

using Element = XML::Element;

const YMRTagRules& names() {
  return YMRTagRules::of(YMRTagProfileBroad);
}

std::string attribute(const Element& element, std::string_view name) {
  const auto found = element.attributes.find(name);
  if (found == element.attributes.end()) return "";
  return std::string(
      stringByTrimmingCharactersInSet(found->second, NSCharacterSet::whitespaceAndNewlineCharacterSet()));
}

std::string lowered(std::string text) {
  std::ranges::transform(text, text.begin(), lowercaseASCII);
  return text;
}

bool allows(const Element& element, std::string_view name) {
  const std::string value = lowered(attribute(element, name));
  return value != "false" && value != "0";
}

void writeEscaped(std::string_view text, std::string& out) {
  for (const char c : text) {
    switch (c) {
      case '<':
        out += "&lt;";
        break;
      case '>':
        out += "&gt;";
        break;
      case '&':
        out += "&amp;";
        break;
      case '"':
        out += "&quot;";
        break;
      default:
        out += c;
    }
  }
}

// As a document of its own; what declares the prefixes of its names may stay behind.
void write(const Element& element, std::string& out) {
  out += '<' + element.name;
  for (const auto& [name, value] : element.attributes) {
    out += ' ' + name + "=\"";
    writeEscaped(value, out);
    out += '"';
  }
  out += '>';
  if (element.text) writeEscaped(*element.text, out);
  for (const auto& child : element.childElements) write(*child, out);
  out += "</" + element.name + '>';
}

bool isLinear(const std::string& breakType) {
  std::string_view rest = breakType;
  for (;;) {
    const auto comma = rest.find(',');
    const auto kind =
        stringByTrimmingCharactersInSet(rest.substr(0, comma), NSCharacterSet::whitespaceAndNewlineCharacterSet());
    if (lowered(std::string(kind)) == "linear") return true;
    if (comma == rest.npos) return false;
    rest.remove_prefix(comma + 1);
  }
}

// When it is due; what is wrong with that, or empty.
std::string readTime(VMAPBreak& of) {
  const std::string& text = of.timeOffset;
  if (text == "start") return "";
  if (text == "end") {
    of.place = VMAPBreak::Place::afterProgramme;
    return "";
  }
  if (text.starts_with('#')) return "'" + text + "' is a position among breaks that only the programme would know";
  const auto offset = VASTOffset::from(text);
  if (!offset) return "'" + text + "' is no time";
  if (offset->value == 0) return "";
  if (offset->isPercent && offset->value == 100) {
    of.place = VMAPBreak::Place::afterProgramme;
    return "";
  }
  of.place = VMAPBreak::Place::inProgramme;
  if (offset->isPercent) {
    of.percent = offset->value;
    return "";
  }
  const double second = std::ceil(offset->value);
  if (second > std::numeric_limits<std::int32_t>::max()) return "no programme is as long as '" + text + "'";
  of.second = static_cast<std::uint64_t>(second);
  return "";
}

// Whether a tag of that kind brings a document of ads.
bool isVASTTemplate(const std::string& templateType) {
  const std::string kind = lowered(templateType);
  return kind.empty() || (kind.starts_with("vast") && kind != "vast1");
}

// Where its ads are; what is wrong with that, or empty.
std::string readSource(const Element* source, VMAPBreak& of) {
  if (!source) return "it names no ads";
  of.allowsMultipleAds = allows(*source, "allowMultipleAds");
  of.followsRedirects = allows(*source, "followRedirects");
  const auto* data = names().child(source, "VASTAdData");
  if (!data) data = names().child(source, "VASTData");
  if (data) {
    std::string text;
    if (const auto* vast = names().child(data, "VAST")) {
      write(*vast, text);
    } else {
      text = data->text.value_or("");
    }
    of.document.emplace(text);
    return "";
  }
  if (const auto* tag = names().child(source, "AdTagURI")) {
    const std::string kind = attribute(*tag, "templateType");
    if (!isVASTTemplate(kind)) return "ads of the kind '" + kind + "' are not known";
    const auto url = tag->text ? names().urlOf(*tag->text) : std::nullopt;
    if (!url || !url->isHTTP()) return "its tag can't be asked for";
    of.tag = url;
    return "";
  }
  if (const auto* custom = names().child(source, "CustomAdData")) {
    return "ads of the kind '" + attribute(*custom, "templateType") + "' are not known";
  }
  return "it names no ads";
}

void readTracking(const Element* events, VMAPBreak& of) {
  if (!events) return;
  for (const auto& tracking : events->childElements) {
    if (!names().isNamed(*tracking, "Tracking") || !tracking->text) continue;
    const auto url = names().urlOf(*tracking->text);
    if (url && url->isHTTP()) of.trackingEvents[attribute(*tracking, "event")].push_back(*url);
  }
}

VMAPBreak readBreak(const Element& element, std::size_t number, std::vector<std::string>& notes) {
  VMAPBreak read;
  read.number = number;
  read.identifier = attribute(element, "breakId");
  read.timeOffset = attribute(element, "timeOffset");
  readTracking(names().child(&element, "TrackingEvents"), read);
  const std::string kind = attribute(element, "breakType");
  const std::string ofTime = readTime(read), ofSource = readSource(names().child(&element, "AdSource"), read);
  read.refusal = !isLinear(kind) ? "its kind is '" + kind + "', not linear" : !ofTime.empty() ? ofTime : ofSource;
  const std::string repeat = attribute(element, "repeatAfter");
  if (read.refusal.empty() && !repeat.empty()) {
    notes.push_back("break " + std::to_string(number + 1) + " is not repeated after " + repeat);
  }
  return read;
}

}  // namespace

std::optional<VMAPDocument> VMAPDocument::read(std::span<const std::byte> bytes, std::string& problem) {
  XML::Parser parser;
  if (!parser.parse(bytes.subspan(names().blanksBefore(bytes)))) {
    problem = "This is no XML, or breaks off.";
    return std::nullopt;
  }
  const Element& root = *parser.documentRoot()->childElements.front();
  if (!names().isNamed(root, "VMAP")) {
    problem = "This is no schedule of ad breaks, but " + root.name.substr(0, 64) + ".";
    return std::nullopt;
  }
  VMAPDocument document;
  document.version = attribute(root, "version");
  if (!document.version.empty() && intValue(document.version) != 1) {
    problem = "Version " + document.version.substr(0, 64) + " of schedules is not known.";
    return std::nullopt;
  }
  for (const auto& element : root.childElements) {
    if (!names().isNamed(*element, "AdBreak")) continue;
    document.breaks.push_back(readBreak(*element, document.breaks.size(), document.notes));
  }
  return document;
}

bool VMAPDocument::isVMAP(const VASTDocument& document) {
  return document.root() && names().isNamed(*document.root(), "VMAP");
}
