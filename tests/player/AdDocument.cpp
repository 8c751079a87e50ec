#include "tests/player/AdDocument.h"

namespace {

std::string cdata(const std::string& url) {
  return "<![CDATA[" + url + "]]>";
}

std::string element(const AdElement& ad, const AdPlaces& places) {
  const auto tracker = [&](const std::string& event) { return cdata(places.trackers + "/" + ad.name + "/" + event); };
  std::string text = "<Ad id=\"" + ad.name + "\"";
  if (!ad.sequence.empty()) text += " sequence=\"" + ad.sequence + "\"";
  text += "><InLine><AdTitle>Title of " + ad.name + "</AdTitle><Error>" + tracker("error-[ERRORCODE]") +
          "</Error><Impression>" + tracker("impression") + "</Impression><Creatives><Creative>";
  if (!ad.type.empty()) {
    text += "<Linear><Duration>00:00:08</Duration><TrackingEvents>";
    for (const auto* event :
         {"start", "creativeView", "firstQuartile", "midpoint", "thirdQuartile", "complete", "pause", "resume"}) {
      text += std::string("<Tracking event=\"") + event + "\">" + tracker(event) + "</Tracking>";
    }
    text += "</TrackingEvents><MediaFiles><MediaFile type=\"" + ad.type + "\" width=\"640\" height=\"360\">" +
            cdata(places.films + "/" + ad.name + ".mp4") + "</MediaFile></MediaFiles></Linear>";
  }
  return text + "</Creative></Creatives></InLine></Ad>";
}

}  // namespace

std::string adDocument(const std::vector<AdElement>& ads, const AdPlaces& places) {
  std::string text = "<VAST version=\"3.0\">";
  for (const auto& ad : ads) text += element(ad, places);
  return text + "</VAST>";
}
