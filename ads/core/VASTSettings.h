#pragma once

#include "platform/Export.h"

// The process's settings of ad media. Any thread.
class YMR_API VASTSettings {
 public:
  // Seconds that the stand-alone ad screen gives its film to load. 10 at first, and never less.
  static double vastVideoLoadTimeout();
  static void setVastVideoLoadTimeout(double seconds);
};
