#include "apps/ymrvast/JSONView.h"

#include <nlohmann/json.hpp>

#include <map>

#include "ads/core/YMRPlayerErrorHandler.h"

namespace {

using Json = nlohmann::ordered_json;

template <class Value>
Json orNull(const std::optional<Value>& value) {
  return value ? Json(*value) : Json(nullptr);
}

Json orNull(const std::optional<NSURL>& url) {
  return url ? Json(url->absoluteString()) : Json(nullptr);
}

Json urls(const std::vector<SKVASTUrlWithId>& list) {
  Json array = Json::array();
  for (const auto& each : list) array.push_back({{"id", orNull(each.id_())}, {"url", orNull(each.url())}});
  return array;
}

Json tracking(const std::map<std::string, std::vector<NSURL>>& events) {
  Json object = Json::object();
  for (const auto& [event, list] : events) {
    Json& array = object[event] = Json::array();
    for (const NSURL& url : list) array.push_back(url.absoluteString());
  }
  return object;
}

Json mediaFiles(const std::vector<Inspection::MediaFile>& files) {
  Json array = Json::array();
  for (const auto& [file, verdict] : files) {
    array.push_back({{"id", orNull(file->id_())},
                     {"delivery", orNull(file->delivery())},
                     {"type", orNull(file->type())},
                     {"bitrate", file->bitrate()},
                     {"width", file->width()},
                     {"height", file->height()},
                     {"scalable", file->scalable()},
                     {"maintainAspectRatio", file->maintainAspectRatio()},
                     {"apiFramework", orNull(file->apiFramework())},
                     {"url", orNull(file->url())}});
  }
  return array;
}

Json other(const Inspection::Other& other) {
  return {{"profile", YMRTagProfileNames[other.profile]},
          {"picked", orNull(other.picked)},
          {"why", other.why.empty() ? Json(nullptr) : Json(other.why)}};
}

// The model's error, which is set, for people.
std::string messageOf(const YMRVastModel& model) {
  return YMRPlayerErrorHandler::messageOf(model.getVastError(), model.vastErrorReason());
}

// Who wants to hear of it is told with the ad's impressions.
Json notRun(const YMRPreparedAd& ad) {
  Json array = Json::array();
  for (const auto& each : ad.notRun) {
    array.push_back({{"what", each.what}, {"told", Json::array()}});
    if (ad.failure) continue;
    for (const NSURL& url : each.tellAt) array.back()["told"].push_back(url.absoluteString());
  }
  return array;
}

Json ads(const std::vector<Inspection::Ad>& list) {
  Json array = Json::array();
  for (const auto& ad : list) {
    const YMRVastModel& model = *ad.model;
    const YMRPreparedAd& prepared = ad.prepared;
    const auto& error = model.vastError();
    array.push_back({{"id", model.adID()},
                     {"title", orNull(model.adTitle())},
                     {"description", orNull(model.adDescription())},
                     {"error", orNull(error)},
                     {"message", error ? messageOf(model) : "never resolved"},
                     {"documents", model.vastDocumentArray().size()},
                     {"impressions", urls(prepared.impressions)},
                     {"errors", urls(prepared.errors)},
                     {"tracking", tracking(prepared.trackingEvents)},
                     {"mediaFiles", mediaFiles(ad.files)},
                     {"picked", orNull(ad.picked())},
                     {"other", other(ad.other)}});
    // Only where the profile knows of them.
    if (prepared.code) array.back()["code"] = *prepared.code;
    if (!prepared.notRun.empty()) array.back()["notRun"] = notRun(prepared);
  }
  return array;
}

Json hops(const std::vector<Inspection::Hop>& list) {
  Json array = Json::array();
  for (const auto& hop : list) {
    array.push_back({{"url", hop.url},
                     {"depth", hop.depth},
                     {"status", hop.status},
                     {"bytes", hop.bytes},
                     {"milliseconds", hop.elapsed.count()},
                     {"error", orNull(hop.error)}});
  }
  return array;
}

Json breaks(const std::vector<Inspection::Break>& list) {
  Json array = Json::array();
  for (const auto& each : list) {
    const VMAPBreak& listed = each.listed;
    const bool isFirst = listed.refusal.empty() && listed.place == VMAPBreak::Place::beforeProgramme;
    array.push_back({{"id", listed.identifier},
                     {"timeOffset", listed.timeOffset},
                     {"second", isFirst ? Json(0) : orNull(listed.second)},
                     {"why", listed.refusal.empty() ? Json(nullptr) : Json(listed.refusal)},
                     {"ads", ads(each.ads)}});
  }
  return array;
}

void print(const Json& json, std::ostream& out) {
  out << json.dump(2, ' ', false, Json::error_handler_t::replace) << '\n';
}

}  // namespace

void printJSON(const Inspection& inspection, std::ostream& out) {
  if (inspection.isSchedule()) {
    const std::string& problem = inspection.scheduleProblem;
    return print({{"source", inspection.source},
                  {"error", problem.empty() ? Json(nullptr) : Json(problem)},
                  {"breaks", breaks(inspection.breaks)}},
                 out);
  }
  const SKVASTError error = inspection.model->getVastError();
  Json all{{"source", inspection.source},
           {"version", orNull(inspection.model->vastVersion())},
           {"error", error},
           {"message", messageOf(*inspection.model)},
           {"hops", hops(inspection.hops)},
           {"ads", ads(inspection.ads)},
           {"standalone", ads(inspection.standalone)}};
  if (inspection.validation) {
    all["valid"] = inspection.validation->isValid;
    all["validation"] = inspection.validation->messages;
  }
  print(all, out);
}
