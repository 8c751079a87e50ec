#pragma once

#include <string>
#include <vector>

#include "tests/VAST/Parser/VASTTexts.h"

// VAST documents for tests of ad breaks. An ad is a name: its film is FILMS/NAME.mp4, its tracking URLs are
// TRACKERS/NAME/EVENT, EVENT being "impression", the tracking events' names, "click" and "error-CODE"; a click leads to
// TRACKERS/NAME/shop.

struct AdElement {
  std::string name;
  std::string type = "video/mp4";  // of its film; empty for no linear creative at all
  std::string sequence{};          // makes it one of a pod
  std::string skipOffset{};        // as written; empty for none
};

struct AdPlaces {
  std::string films = "http://media.example";
  std::string trackers = "http://track.example";
};

// Of the URLs that were requested, the tracking of one ad in order, "start", "error-402", …, or of all with their
// names.
inline std::vector<std::string> trackingAmong(const std::vector<std::string>& urls, const std::string& ad) {
  const std::string tracker = AdPlaces().trackers + "/" + ad + (ad.empty() ? "" : "/");
  std::vector<std::string> events;
  for (const auto& url : urls) {
    if (url.rfind(tracker, 0) == 0) events.push_back(url.substr(tracker.size()));
  }
  return events;
}

inline std::string adDocument(const std::vector<AdElement>& ads, const AdPlaces& places = {}) {
  std::string text;
  for (const auto& ad : ads) {
    const std::string tracker = places.trackers + "/" + ad.name + "/";
    std::string events;
    for (const auto* event : {"start", "creativeView", "firstQuartile", "midpoint", "thirdQuartile", "complete",
                              "pause", "resume", "close"}) {
      events += vast::tracking(event, tracker + event);
    }
    const auto film =
        vast::mediaFile(places.films + "/" + ad.name + ".mp4", "type='" + ad.type + "' width='640' height='360'");
    const std::string clicks =
        "<ClickThrough>" + tracker + "shop</ClickThrough><ClickTracking>" + tracker + "click</ClickTracking>";
    const std::string skip = ad.skipOffset.empty() ? "" : " skipoffset='" + ad.skipOffset + "'";
    text += vast::inLine(
        "<AdTitle>Title of " + ad.name + "</AdTitle><Description>About " + ad.name + "</Description><Error>" + tracker +
            "error-[ERRORCODE]</Error><Impression>" + tracker + "impression</Impression>" +
            (ad.type.empty() ? "<Creatives><Creative/></Creatives>" : vast::linear(film, events, clicks, skip)),
        "id='" + ad.name + "'" + (ad.sequence.empty() ? "" : " sequence='" + ad.sequence + "'"));
  }
  return vast::document(text, "3.0");
}
