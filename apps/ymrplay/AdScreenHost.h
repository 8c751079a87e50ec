#pragma once

#include <functional>
#include <memory>

#include "apps/ymrplay/EventPrinter.h"
#include "apps/ymrplay/Host.h"
#include "apps/ymrplay/HostWindow.h"
#include "apps/ymrplay/Options.h"
#include "vastscreen/SKVASTViewController.h"

// The host of one ad on the stand-alone screen: loads what --ad-screen names, plays it as soon as it is ready, and is
// over a turn after its dismissal, or after an error that came without a presentation.
class AdScreenHost final : public Host {
 public:
  // `finished` is called once, when it is over.
  AdScreenHost(Options options, std::function<void()> finished);

  void play() override;
  void dismiss() override;
  void fail(const std::string& why) override;
  int exitStatus() override { return window_.exitStatus(); }

 private:
  void answerCallbacks();
  void finishLater();

  const Options options_;
  std::function<void()> finished_;  // empty once it was called, or will be
  bool isPresented_ = false;
  HostWindow window_;
  EventPrinter printer_;
  std::shared_ptr<SKVASTViewControllerDelegate> delegate_;
  std::shared_ptr<SKVASTViewController> screen_;
};
