#pragma once

#include <array>
#include <functional>
#include <optional>
#include <string_view>

#include "platform/Export.h"

enum SKLogLevel : int {
  SKLogLevelNone = 0,
  SKLogLevelError = 1,
  SKLogLevelWarning = 2,
  SKLogLevelInfo = 3,
  SKLogLevelDebug = 4,
};

// Where the framework's components write tagged messages. Silent until a host installs a sink. Any thread.
class YMR_API SKLogger {
 public:
  // Receives one message at a time of a thread, several threads' at once. Messages quote what servers sent, control
  // characters included, and can be as long as a document. What it throws is dropped, as is what it logs itself.
  using Sink = std::function<void(int level, std::string_view tag, std::string_view message)>;

  // By level number: "none", "error", "warning", "info", "debug".
  static const std::array<std::string_view, 5>& levelNames();
  // nil for a name that is none of these.
  static std::optional<int> levelNamed(std::string_view name);

  // Checks that the level exists (NSRangeException for one outside 0 to 4) and keeps nothing: the players set it, while
  // what a host hears is decided by its sink's own level.
  static void setLogLevel(int level);

  // Replaces the sink. It gets the messages of levels 1 to `level`; level 0 or an empty function makes the logger
  // silent again. A message already on its way on another thread may still reach the old sink.
  static void installSink(int level, Sink sink);
  // Whether a message of this level would reach a sink: for callers whose message is costly to build.
  static bool reachesSink(int level);

  // While one lives, what its thread logs is dropped: for looking ahead at what is logged when its turn comes.
  class YMR_API Silence {
   public:
    Silence();
    Silence(const Silence&) = delete;
    Silence& operator=(const Silence&) = delete;
    ~Silence();

   private:
    const bool wasSilent_;
  };

  static void error(std::string_view tag, std::string_view message);
  static void warning(std::string_view tag, std::string_view message);
  static void info(std::string_view tag, std::string_view message);
  static void debug(std::string_view tag, std::string_view message);
};
