#pragma once

#include <memory>
#include <optional>

#include "platform/Export.h"
#include "platform/avfoundation/bytes/ByteStore.h"
#include "platform/foundation/NSURL.h"

class FetchThread;

// Fetches a resource of a web server for an engine that reads it somewhere, perhaps in another process: opens it, says
// what it is, and keeps what lies ahead of the reader ready, within a bound of memory. Once it
// has been opened it is asked again as long as the fetcher lives when a connection is lost, stays silent, or the server
// can't answer now; meanwhile what is here can be read. Only a reader that waits for bytes hears of a failure, and only
// of one that is there to stay.
//
// open() on the main thread, the rest on any. All fetching is done by one other thread. Letting go of it ends the
// fetching; its readers keep what is there, and wait in vain for the rest until they are interrupted.
class YMR_API ByteFetcher {
 public:
  // With what an engine parses of them, 64 and 16 MiB.
  static constexpr std::size_t programmeBytesLimit = 48 * 1024 * 1024;
  static constexpr std::size_t adBytesLimit = 12 * 1024 * 1024;

  // Begins to fetch an http or https URL and holds at most `bytesLimit` of it. nil when the machine has no memory or
  // no descriptors left.
  static std::unique_ptr<ByteFetcher> open(const NSURL& url, std::size_t bytesLimit);
  ByteFetcher(const ByteFetcher&) = delete;
  ByteFetcher& operator=(const ByteFetcher&) = delete;
  ~ByteFetcher();

  // For ByteStoreReader::adopt() in another process, as duplicates. Open as long as the fetcher lives.
  ByteStoreDescriptors descriptors() const { return store_->descriptors(); }
  // A reader in this process; nil when there are no descriptors left. Only one reader at a time reads.
  std::shared_ptr<MediaBytes> makeReader() const { return store_->makeReader(); }
  // What the reader was told; nil while it can be read. Any thread.
  std::optional<NSError> failure() const { return store_->failure(); }

 private:
  ByteFetcher(const NSURL& url, std::shared_ptr<ByteStore> store);

  const std::shared_ptr<ByteStore> store_;
  const std::shared_ptr<FetchThread> thread_;
  const std::uint64_t number_;
};
