#pragma once

#include <functional>
#include <string_view>

#include "platform/Export.h"
#include "platform/dispatch/RunLoop.h"

// Delayed performs on the main queue, by target and selector. Main thread. `target` only serves as a name: the block
// must hold it weakly, or the target must cancel before it goes.

YMR_API void performSelectorAfterDelay(const void* target, std::string_view selector, RunLoop::Duration delay,
                                       std::function<void()> block);
// Takes back every perform of the target, or of one of its selectors, that has not run yet.
YMR_API void cancelPreviousPerformRequestsWithTarget(const void* target);
YMR_API void cancelPreviousPerformRequestsWithTarget(const void* target, std::string_view selector);
