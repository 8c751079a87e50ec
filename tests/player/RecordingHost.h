#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "player/states/YMRVideoPlayerDelegate.h"

using Lines = std::vector<std::string>;

// A host that answers every callback and writes each down as text: "videoOnPause 12", "videoOnError -11800",
// "videoAdOnStart:Midroll", "videoAdOnTime 8 3", "videoAdOnErrorDesc 10".
class RecordingHost {
 public:
  RecordingHost();

  // What was heard of these callbacks only.
  Lines heardOf(const std::vector<std::string>& callbacks) const;
  int count(const std::string& callback) const;

  std::shared_ptr<YMRVideoPlayerDelegate> delegate = std::make_shared<YMRVideoPlayerDelegate>();
  Lines callbacks;  // the names of all
  Lines heard;
  // Runs inside the callback of this name, after it has been written down.
  std::map<std::string, std::function<void()>> inside;

 private:
  template <typename... Values>
  void listen(std::function<void(Values...)>& slot, const std::string& name);
  void hear(const std::string& callback, const std::string& values);
};
