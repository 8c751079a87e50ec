#pragma once

#include <string>
#include <vector>

// VAST documents for tests of ad breaks. An ad is a name: its film is FILMS/NAME.mp4, its tracking URLs are
// TRACKERS/NAME/EVENT, EVENT being "impression", the tracking events' names, "click" and "error-CODE"; a click leads to
// TRACKERS/NAME/shop.

struct AdElement {
  std::string name;
  std::string type = "video/mp4";  // of its film; empty for no linear creative at all
  std::string sequence{};          // makes it one of a pod
};

struct AdPlaces {
  std::string films = "http://media.example";
  std::string trackers = "http://track.example";
};

std::string adDocument(const std::vector<AdElement>& ads, const AdPlaces& places = {});
