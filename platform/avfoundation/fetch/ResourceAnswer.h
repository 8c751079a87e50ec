#pragma once

#include <optional>
#include <string>
#include <variant>

#include "platform/avfoundation/bytes/MediaBytes.h"
#include "platform/foundation/HTTPStream.h"

// What a resource's first answer told of it.
struct ResourceFacts {
  std::optional<std::uint64_t> length;
  bool servesRanges = false;
  std::string eTag;
  std::string lastModified;
};

// What an answer to a request for the bytes from a place on means. A plain value.
struct ResourceAnswer {
  // A body with bytes of the resource.
  struct Body {
    std::uint64_t first = 0;              // the place of its first byte; never behind the place asked for
    std::optional<std::uint64_t> behind;  // the place behind its last one; nil when that is not told
    bool isWhole = false;                 // all of the resource, whatever was asked for
  };
  // There is nothing at the place: the resource ends there or before it.
  struct End {
    std::uint64_t length = 0;
  };
  // No bytes now: the server is busy, or out of order.
  struct Later {
    NSError error;
    std::optional<std::chrono::seconds> after;  // it asks for patience, so long at least
  };
  // No bytes, for a reason that rarely goes away.
  struct Refusal {
    NSError error;
  };
  // Another resource than before.
  struct Changed {};
  // The server can't answer to a range at all.
  struct Unranged {};
  using Meaning = std::variant<Body, End, Later, Refusal, Changed, Unranged>;

  // `known`: nil for the first answer, to a request for everything from 0 on.
  static Meaning meaning(const HTTPAnswer& answer, std::uint64_t place, const ResourceFacts* known, const NSURL& url);
  static ResourceFacts facts(const HTTPAnswer& answer, const Body& body);
  static MediaBytes::Head head(const HTTPAnswer& answer, const ResourceFacts& facts);
};
