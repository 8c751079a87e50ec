#pragma once

#include <gmock/gmock.h>

#include "platform/dispatch/PlainRunLoop.h"
#include "platform/dispatch/VirtualRunLoop.h"
#ifdef QT_GUI_LIB
#include "platform/uikit/QtRunLoop.h"
#include "tests/support/ScreenTest.h"
#endif

// Runs the same cases on the forms of the run loop that need no screen, or, in a program that has Qt, on the one that
// goes under a screen.
template <typename Loop>
struct OnEveryLoop : testing::Test {
  // Runs the loop until `done`; a failure of the test when that does not come about.
  template <typename Done>
  void runUntil(Done done) {
    const std::chrono::seconds bound(10);
    bool came;
    if constexpr (std::is_same_v<Loop, VirtualRunLoop>) {
      came = loop.advanceUntil(done, bound);
    } else if constexpr (std::is_same_v<Loop, PlainRunLoop>) {
      came = loop.runUntil(done, bound);
    } else {
      came = runEventsUntil(done);
    }
    EXPECT_TRUE(came) << "the bound passed";
  }

#ifdef QT_GUI_LIB
  QGuiApplication& application = screenApplication();
#endif
  Loop loop;
};

#ifdef QT_GUI_LIB
using LoopForms = testing::Types<QtRunLoop>;
#else
using LoopForms = testing::Types<PlainRunLoop, VirtualRunLoop>;
#endif
TYPED_TEST_SUITE(OnEveryLoop, LoopForms);
