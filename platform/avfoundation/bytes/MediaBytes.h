#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "platform/foundation/NSError.h"

// The bytes of one resource as an engine reads them: at any place, waiting for those that are not here yet. Who brings
// them (a server's answers, a pipe) and how often it has to ask again is not the reader's matter.
//
// Any thread; reads by one thread at a time. Whoever waits can be interrupted, and nothing waits for ever after that.
class MediaBytes {
 public:
  // What is known when the resource has answered.
  struct Head {
    std::optional<std::uint64_t> length;  // in bytes; nil when it is not told
    bool isSeekable = false;              // any place can be read; else it costs everything before it once more
    std::string contentType;              // as it was told, lower case, without parameters; may be empty
    std::string url;                      // where the bytes come from, after redirects
  };
  enum class Outcome {
    done,
    ended,        // there is nothing at this place or behind it
    interrupted,  // see setInterrupted()
    failed,       // see failure()
  };

  virtual ~MediaBytes() = default;

  // Waits for the resource's answer.
  virtual Outcome head(Head& head) = 0;
  // Waits until there are bytes at `place`, and copies as many of those in a row as are here and as `target` has room
  // for; `count` says how many. At least one when it is done.
  virtual Outcome read(std::uint64_t place, std::span<std::byte> target, std::size_t& count) = 0;
  // While it is set, every wait ends at once, and none begins.
  virtual void setInterrupted(bool interrupted) = 0;

  // How many bytes in a row are here from `place` on.
  virtual std::uint64_t ahead(std::uint64_t place) const = 0;
  // There is no room for more ahead of the reader, or there is no more to come.
  virtual bool isFull() const = 0;
  // How many bytes to keep ready ahead of the reader; less where there is no room for so many.
  virtual void setAheadLimit(std::uint64_t bytes) = 0;
  // A word to whoever brings the bytes, where the two have agreed on its meaning; told before what is read next.
  virtual void setWish(std::uint64_t) {}
  // Why it can't be read; nil while it can.
  virtual std::optional<NSError> failure() const = 0;
};
