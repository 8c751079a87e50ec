#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/Export.h"
#include "platform/avfoundation/process/MediaProcess.h"

// The media processes of this host: one for each item, and one more that stands ready, its libraries loaded, so that
// the next item starts at once. Main thread.
class YMR_API MediaProcesses {
 public:
  // One for an item, which is the caller's to end(); null when the program can't be started. One line says why;
  // nobody tries again, unless one has run before: then it is a shortage that may pass. Another one is made ready soon
  // after.
  static std::shared_ptr<MediaPeer> take();
  // Takes note that one went before its first word: the program is there and does not run.
  static void noteFailure(const std::string& reason);
  // Takes note that one has said its first word.
  static void noteSuccess();
  // False when it is known that none can be started, and nobody tries.
  static bool areAvailable();
  // Starts the one that stands ready when there is none. For a host that knows that it is about to play its first item.
  static void prepareSpare();
  // Ends it. For a host that will play nothing for long; the next item starts one of its own.
  static void endSpare();
  // The program, where the library that has this code finds it: beside itself, in "ymr/", or in the build's tree.
  static std::string program();
  // Another one. For tests.
  static void setProgram(std::optional<std::string> program);
};
