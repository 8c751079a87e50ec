#include "player/YMRDelegateSend.h"

#include <string>

#include "VAST/SKLogger.h"

void logThrownByHost(const char* message) {
  SKLogger::error("YMRVideoPlayer", std::string("A callback of the host's threw: ") + message);
}
