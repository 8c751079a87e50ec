#include "platform/avfoundation/bytes/ByteStoreLayout.h"

#include <linux/futex.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <climits>

namespace {

long futex(std::atomic<std::uint32_t>& word, int operation, std::uint32_t value) {
  return ::syscall(SYS_futex, &word, operation, value, nullptr, nullptr, 0);
}

}  // namespace

// The thread checker does not follow fences; what they order lies in two mappings, which it takes for different memory.
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic ignored "-Wtsan"
#endif
void ByteStoreLayout::fence() {
  std::atomic_thread_fence(std::memory_order_seq_cst);
}

void ByteStoreLayout::sleepOn(std::atomic<std::uint32_t>& word, std::uint32_t value) {
  futex(word, FUTEX_WAIT, value);
}

void ByteStoreLayout::signal(std::atomic<std::uint32_t>& word) {
  word.fetch_add(1);
  futex(word, FUTEX_WAKE, INT_MAX);
}
