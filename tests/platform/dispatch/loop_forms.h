#pragma once

#include <gmock/gmock.h>

#include "platform/dispatch/PlainRunLoop.h"
#include "platform/dispatch/VirtualRunLoop.h"

// Runs the same cases on both forms of the run loop that need no screen.
template <typename Loop>
struct OnEveryLoop : testing::Test {
  using Milliseconds = std::chrono::milliseconds;

  // Runs the loop until `done`; a failure of the test when that does not come about.
  template <typename Done>
  void runUntil(Done done) {
    const std::chrono::seconds bound(10);
    bool came;
    if constexpr (std::is_same_v<Loop, VirtualRunLoop>) {
      came = loop.advanceUntil(done, bound);
    } else {
      came = loop.runUntil(done, bound);
    }
    EXPECT_TRUE(came) << "the bound passed";
  }

  Loop loop;
};

using LoopForms = testing::Types<PlainRunLoop, VirtualRunLoop>;
TYPED_TEST_SUITE(OnEveryLoop, LoopForms);
