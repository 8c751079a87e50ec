#pragma once

#include <string>

// A host application in small: it shows something, and is over when that is. Main thread.
class Host {
 public:
  virtual ~Host() = default;
  virtual void play() = 0;
  // Ends the presentation, as the viewer's Menu does.
  virtual void dismiss() = 0;
  // Says why the presentation can't go on, and ends it; the exit status is 1 then.
  virtual void fail(const std::string& why) = 0;
  // The program's. When it is over.
  virtual int exitStatus() = 0;
};
