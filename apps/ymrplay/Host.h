#pragma once

// A host application in small: it shows something, and is over when that is. Main thread.
class Host {
 public:
  virtual ~Host() = default;
  virtual void play() = 0;
  // Ends the presentation, as the viewer's Menu does.
  virtual void dismiss() = 0;
  // The program's. When it is over.
  virtual int exitStatus() const = 0;
};
