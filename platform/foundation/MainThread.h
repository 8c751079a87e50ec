#pragma once

#include <cstdio>
#include <cstdlib>

#include "platform/dispatch/RunLoop.h"

// Stops the process when the caller is not on the main thread. Objects without locks check it at every entry point, in
// release builds too: a race found in the field costs more than the comparison.
#define YMR_ASSERT_MAIN_THREAD()                                                        \
  do {                                                                                  \
    if (RunLoop* loop_ = RunLoop::mainIfInstalled(); loop_ && !loop_->isCurrent()) {    \
      std::fprintf(stderr, "%s was called off the main thread\n", __PRETTY_FUNCTION__); \
      std::abort();                                                                     \
    }                                                                                   \
  } while (false)
