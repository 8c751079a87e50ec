#pragma once

#include <functional>
#include <nlohmann/json.hpp>
#include <string_view>

#include "ads/core/SKVASTViewControllerDelegate.h"
#include "player/YMRVideoPlayerDelegate.h"

// Turns callbacks of the framework into lines of JSON: time, event, and what the callback carries. Main thread.
class EventPrinter {
 public:
  using Write = std::function<void(const std::string& line)>;

  // `elapsed` gives the seconds for `t`; `write` gets each line without its line feed, when the framework calls.
  EventPrinter(std::function<double()> elapsed, Write write);

  // Delegates that answer every callback by printing it. They refer to this printer, which must outlive them.
  YMRVideoPlayerDelegate delegate();
  SKVASTViewControllerDelegate adScreenDelegate();

 private:
  using Json = nlohmann::ordered_json;

  void print(std::string_view event, const Json& values = Json::object());
  void printAd(std::string_view event, const std::shared_ptr<YMRAd>& ad, const Json& values = Json::object());
  void addProgrammeCallbacks(YMRVideoPlayerDelegate& delegate);
  void addAdCallbacks(YMRVideoPlayerDelegate& delegate);

  std::function<double()> elapsed_;
  Write write_;
};
