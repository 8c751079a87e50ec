#pragma once

#include <functional>
#include <memory>
#include <string>

#include "platform/Export.h"
#include "platform/dispatch/RunLoop.h"

// Queues and groups over the installed RunLoop. All functions may be called from any thread.
//
// Kept from the platform: blocks of a serial queue (the main queue is one) run one at a time in the order in which they
// were handed over; blocks of the global queue run side by side; a group counts who is inside. Left out:
// priorities, barriers, delays (a RunLoop has them), synchronous dispatch, targets.

class DispatchQueue;
class DispatchGroup;
using dispatch_queue_t = std::shared_ptr<DispatchQueue>;
using dispatch_group_t = std::shared_ptr<DispatchGroup>;
using dispatch_block_t = std::function<void()>;

// The queue of the run loop's thread.
YMR_API dispatch_queue_t dispatch_get_main_queue();
// The concurrent queue of default priority.
YMR_API dispatch_queue_t dispatch_get_global_queue();
// A new serial queue. It lives as long as somebody holds it or a block waits on it; blocks that wait go with the loop.
YMR_API dispatch_queue_t dispatch_queue_create(std::string label);

YMR_API void dispatch_async(const dispatch_queue_t& queue, dispatch_block_t block);

YMR_API dispatch_group_t dispatch_group_create();
YMR_API void dispatch_group_enter(const dispatch_group_t& group);
// Throws std::logic_error when it was not entered.
YMR_API void dispatch_group_leave(const dispatch_group_t& group);
// Returns when everything that entered has left; for the main thread only where nothing of that needs the main queue.
// In virtual form it runs the loop.
YMR_API void dispatch_group_wait(const dispatch_group_t& group);
