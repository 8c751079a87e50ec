#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>

// What lies in the two pieces of memory that a ByteStore and its reader share. Both are built together, so nothing here
// has to stay as it is.
namespace ByteStoreLayout {

inline constexpr std::size_t lanes = 2;
inline constexpr std::size_t chunkBytes = 64 * 1024;
inline constexpr std::size_t chunksLimit = 1024;  // 64 MiB
inline constexpr std::size_t urlBytesLimit = 16 * 1024;
inline constexpr std::size_t textBytesLimit = 2048;
inline constexpr std::uint64_t nowhere = UINT64_MAX;

static_assert(std::atomic<std::uint64_t>::is_always_lock_free && std::atomic<std::uint32_t>::is_always_lock_free);

// A window [begin, end) of the resource. The bytes at a place lie in the chunk that the table names for the place's
// number of chunk, modulo the table's length.
struct Lane {
  std::atomic<std::uint32_t> moves;  // odd while the lane is being moved
  std::atomic<std::uint32_t> isFull;
  std::atomic<std::uint64_t> begin;
  std::atomic<std::uint64_t> end;
  std::atomic<std::uint32_t> chunks[chunksLimit];
};

// Written by the store, read by the reader; the chunks follow it.
struct Board {
  std::atomic<std::uint32_t> hasHead;  // what follows is written before this
  std::uint32_t isSeekable;
  std::uint32_t hasLength;
  std::uint64_t length;
  char contentType[textBytesLimit];
  char url[urlBytesLimit];

  std::atomic<std::uint32_t> hasFailed;  // what follows is written before this
  std::int32_t code;
  char domain[textBytesLimit];
  char message[textBytesLimit];

  std::uint32_t chunkCount;
  std::atomic<std::uint64_t> resourceEnd;  // nowhere until it is known
  Lane lane[lanes];
};
inline constexpr std::size_t boardBytes = (sizeof(Board) + chunkBytes - 1) / chunkBytes * chunkBytes;

// Written by both; what the store reads here may be anything.
struct Control {
  std::atomic<std::uint32_t> signal;  // counts what the reader may wait for; it sleeps on this word
  std::atomic<std::uint32_t> isWaiting;
  std::atomic<std::uint32_t> readers;  // counts those that came
  std::atomic<std::uint64_t> place;    // that is waited for, or behind what was read last
  std::atomic<std::uint64_t> aheadLimit;
  std::atomic<std::uint64_t> wish;  // any number
  struct {
    std::atomic<std::uint64_t> place;  // behind what was read last here
    std::atomic<std::uint64_t> uses;   // a number that grows with every read, whatever its lane
  } lane[lanes];
};

// Everything before it is done, and seen by whoever looks, before anything after it.
void fence();
// Sleeps while `word` is `value`, however many processes see it; may wake for no reason.
void sleepOn(std::atomic<std::uint32_t>& word, std::uint32_t value);
// Changes `word`, and wakes who sleeps on it.
void signal(std::atomic<std::uint32_t>& word);

}  // namespace ByteStoreLayout
