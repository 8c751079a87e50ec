#pragma once

#include "platform/Export.h"

// The process's settings of ad media. Any thread.
class YMR_API VASTSettings {
 public:
  // Seconds that the stand-alone ad screen gives its film to load. 10 at first, and never less.
  static double vastVideoLoadTimeout();
  static void setVastVideoLoadTimeout(double seconds);

  // Whether the film of the next ad is made ready while one plays, which takes a media process of some 40 MiB and up to
  // 12 MiB for its bytes; true at first. False is for machines with little memory: the viewer then waits between two
  // ads.
  static bool preparesNextFilm();
  static void setPreparesNextFilm(bool prepares);
};
