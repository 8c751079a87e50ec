#pragma once

// Keeps the screen saver away while something on a screen plays. There may be several of them, also at once: one screen
// comes while another fades out. Main thread.
class UIWakefulness {
 public:
  UIWakefulness() = default;
  UIWakefulness(const UIWakefulness&) = delete;
  UIWakefulness& operator=(const UIWakefulness&) = delete;
  ~UIWakefulness() { setAwake(false); }

  // False, as it starts.
  void setAwake(bool awake);

 private:
  bool isAwake_ = false;
};
