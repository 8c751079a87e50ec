#include "tests/player/AdDocument.h"

#include "tests/VAST/Parser/VASTTexts.h"

std::string adDocument(const std::vector<AdElement>& ads, const AdPlaces& places) {
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
    text += vast::inLine(
        "<AdTitle>Title of " + ad.name + "</AdTitle><Description>About " + ad.name + "</Description><Error>" + tracker +
            "error-[ERRORCODE]</Error><Impression>" + tracker + "impression</Impression>" +
            (ad.type.empty() ? "<Creatives><Creative/></Creatives>" : vast::linear(film, events, clicks)),
        "id='" + ad.name + "'" + (ad.sequence.empty() ? "" : " sequence='" + ad.sequence + "'"));
  }
  return vast::document(text, "3.0");
}
