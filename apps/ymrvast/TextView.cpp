#include "apps/ymrvast/TextView.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <iomanip>
#include <sstream>
#include <string_view>

#include "ads/core/YMRPlayerErrorHandler.h"
#include "apps/shared/Printable.h"

namespace {

// What the player asks for, in the order of an ad's life; other events of a document are never asked for.
constexpr std::array<std::string_view, 8> askedEvents{"start",         "creativeView", "firstQuartile", "midpoint",
                                                      "thirdQuartile", "complete",     "pause",         "resume"};

std::string counted(std::size_t count, const char* what) {
  return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

std::string describe(SKVASTError error, const std::string& reason, const std::string& code) {
  return "error " + std::to_string(error) + ": " + YMRPlayerErrorHandler::messageOf(error, reason) + " (VAST code " +
         code + ")";
}

std::string describe(SKVASTError error, const std::string& reason) {
  return describe(error, reason, YMRPlayerErrorHandler::VASTErrorToErrorCode(error));
}

std::string describe(const VASTOffset& offset) {
  std::ostringstream text;
  text << offset.value << (offset.isPercent ? " %" : " s");
  return text.str();
}

void printRow(std::ostream& out, std::string_view label, std::string_view value) {
  out << "  " << std::left << std::setw(16) << label << (label.size() < 16 ? "" : "  ") << printable(value) << '\n';
}

void printShownCount(const Inspection& inspection, std::ostream& out) {
  out << "The player would show " << counted(inspection.shownCount, "ad") << ".\n";
}

void printHeading(const Inspection& inspection, std::ostream& out) {
  const auto version = inspection.model->vastVersion();
  out << printable(inspection.source) << '\n';
  if (version) out << "VAST " << printable(*version) << '\n';
  if (!inspection.fault.empty()) out << printable(inspection.fault) << '\n';
  if (inspection.shownCount > 0) {
    printShownCount(inspection, out);
  } else {
    const SKVASTError error = inspection.model->getVastError();
    // What a profile knows better than by its error it knows of the ad.
    const bool isOfAd = inspection.ads.size() == 1 && inspection.ads[0].failure() == error;
    const auto code =
        isOfAd ? inspection.ads[0].prepared.errorCode() : YMRPlayerErrorHandler::VASTErrorToErrorCode(error);
    out << "The player would show NO ad. The tag's outcome is "
        << printable(describe(error, inspection.model->vastErrorReason(), code)) << ".\n";
  }
}

void printHops(const std::vector<Inspection::Hop>& hops, std::ostream& out) {
  if (hops.empty()) return;
  out << "\nFetched\n  depth  status      time       bytes  URL\n";
  for (const auto& hop : hops) {
    out << std::right << std::setw(7) << std::to_string(hop.depth) << std::setw(8)
        << (hop.status ? std::to_string(hop.status) : "-") << std::setw(7) << std::to_string(hop.elapsed.count())
        << " ms" << std::setw(12) << std::to_string(hop.bytes) << "  " << printable(hop.url) << '\n';
    if (hop.error) {
      out << "         failed with " << printable(describe(*hop.error, hop.reason)) << '\n';
    } else if (!hop.reason.empty()) {
      out << "         " << printable(hop.reason) << '\n';
    }
  }
}

void printFiles(const Inspection::Ad& ad, std::ostream& out) {
  for (const auto& [file, verdict] : ad.files) {
    std::string text = std::to_string(file->width()) + "x" + std::to_string(file->height()) + " " +
                       file->type().value_or("without type");
    if (file->bitrate() > 0) text += " " + std::to_string(file->bitrate()) + " kbit/s";
    if (file->url()) text += "  " + file->url()->absoluteString();
    printRow(out, verdict.empty() ? "picked" : "not picked", text);
    if (!verdict.empty()) printRow(out, "", verdict);
  }
}

void printURLs(const Inspection::Ad& ad, std::ostream& out) {
  const bool plays = !ad.prepared.failure;
  auto events = ad.prepared.trackingEvents;
  const auto print = [&](std::string_view label, const std::vector<NSURL>& urls) {
    for (const NSURL& url : urls) printRow(out, label, url.absoluteString());
  };
  if (ad.prepared.rules().knowsOffsets()) {
    for (const auto& each : ad.prepared.progress) {
      printRow(out, "at " + describe(each.offset), each.url.absoluteString());
    }
    events.erase("progress");
    const auto skip = events.extract("skip");
    if (plays && skip) print("skip", skip.mapped());
  }
  if (plays) {
    for (const auto& each : ad.prepared.impressions) printRow(out, "impression", each.url()->absoluteString());
    for (const auto& each : ad.prepared.notRun) print("not executed", each.tellAt);
  }
  for (const auto event : askedEvents) {
    const auto found = events.extract(std::string(event));
    if (plays && found) print(event, found.mapped());
  }
  const auto failure = ad.failure();
  for (const auto& each : ad.prepared.errors) {
    printRow(out, failure ? "error, as " + ad.prepared.errorCode() : "if it fails", each.url()->absoluteString());
  }
  if (!plays) return;
  for (const auto& [event, urls] : events) print(event + ", not asked", urls);
}

// What the other profile makes of it, and why that is something else.
void printOther(const Inspection::Other& other, std::ostream& out) {
  const std::string_view name = YMRTagProfileNames[other.profile];
  if (other.why.empty()) return printRow(out, name, "the same");
  if (other.picked) return printRow(out, name, "shows " + other.picked->absoluteString() + ": " + other.why);
  printRow(out, name, other.why.substr(other.why.starts_with(name) ? name.size() + 1 : 0));
}

void printAds(const std::vector<Inspection::Ad>& ads, const char* kind, std::ostream& out) {
  for (std::size_t i = 0; i < ads.size(); ++i) {
    const auto& ad = ads[i];
    const YMRVastModel& model = *ad.model;
    out << '\n'
        << kind << " " << std::to_string(i + 1) << " of " << std::to_string(ads.size())
        << (ad.isShown ? ": shown" : ": not shown") << '\n';
    if (const auto title = model.adTitle()) printRow(out, "title", *title);
    if (!model.adID().empty()) printRow(out, "id", model.adID());
    if (model.adSequence()) printRow(out, "sequence", *model.adSequence());
    printRow(out, "chain", counted(model.vastDocumentArray().size(), "document"));
    if (const auto failure = ad.failure()) {
      printRow(out, "failed", describe(*failure, ad.prepared.reason, ad.prepared.errorCode()));
    }
    if (!ad.reason.empty()) printRow(out, "", ad.reason);
    if (!model.vastError()) printRow(out, "", "never resolved: stand-alone ads are looked at only beside a pod");
    for (const auto& each : ad.prepared.notRun) printRow(out, "not run", each.what);
    if (ad.prepared.skipOffset) printRow(out, "may be skipped", "from " + describe(*ad.prepared.skipOffset) + " on");
    printOther(ad.other, out);
    printFiles(ad, out);
    printURLs(ad, out);
  }
}

std::string placeOf(const VMAPBreak& listed) {
  if (listed.place == VMAPBreak::Place::beforeProgramme) return "before the programme";
  if (listed.place == VMAPBreak::Place::afterProgramme) return "after the programme";
  if (listed.second) return "at " + std::to_string(*listed.second) + " s";
  return "at " + listed.timeOffset + " of the programme";
}

void printSchedule(const Inspection& inspection, std::ostream& out) {
  out << printable(inspection.source) << '\n';
  if (!inspection.scheduleProblem.empty()) {
    out << printable(inspection.scheduleProblem) << '\n';
    return;
  }
  out << "VMAP " << printable(inspection.schedule->version) << ", " << counted(inspection.breaks.size(), "break")
      << '\n';
  printShownCount(inspection, out);
  for (const auto& note : inspection.schedule->notes) out << printable(note) << '\n';
  for (const auto& [listed, ads] : inspection.breaks) {
    out << "\nBreak " << std::to_string(listed.number + 1) << " "
        << (listed.identifier.empty() ? "" : "'" + printable(listed.identifier) + "' ")
        << (listed.refusal.empty() ? placeOf(listed) : "left out: " + printable(listed.refusal)) << '\n';
    if (listed.tag) printRow(out, "tag", listed.tag->absoluteString());
    printAds(ads, "Ad", out);
  }
}

}  // namespace

void printText(const Inspection& inspection, std::ostream& out) {
  if (inspection.isSchedule()) return printSchedule(inspection, out);
  printHeading(inspection, out);
  printHops(inspection.hops, out);
  printAds(inspection.ads, "Ad", out);
  printAds(inspection.standalone, "Stand-alone ad", out);
  if (!inspection.validation) return;
  out << "\nVAST 2.0.1 schema: " << (inspection.validation->isValid ? "valid" : "NOT valid") << '\n';
  for (const auto& message : inspection.validation->messages) out << "  " << printable(message) << '\n';
}
