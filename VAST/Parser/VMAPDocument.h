#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "VAST/Parser/VASTDocument.h"
#include "platform/Export.h"
#include "platform/foundation/NSURL.h"

// One ad break that a schedule document (VMAP 1.0) lists. A plain value.
struct YMR_API VMAPBreak {
  enum class Place { beforeProgramme, inProgramme, afterProgramme };

  std::string identifier;  // `breakId`; may be empty
  std::string timeOffset;  // as written
  std::size_t number = 0;  // its place in the document, from 0
  Place place = Place::beforeProgramme;
  // In the programme, one of the two: whole seconds, a fraction counts as the next one; or hundredths of its length.
  std::optional<std::uint64_t> second;
  std::optional<double> percent;

  // Its ads, one of the two.
  std::optional<NSURL> tag;
  std::optional<VASTDocument> document;
  bool allowsMultipleAds = true;
  bool followsRedirects = true;

  // "breakStart", "breakEnd" and "error".
  std::map<std::string, std::vector<NSURL>> trackingEvents;

  // Why it is left, for people; empty for one that is played. What is set of the other members was read before.
  std::string refusal;
};

// A schedule document as it was fetched: its breaks in their order, and what is odd about it. Elements count by their
// names, whatever stands before these for their namespaces. Bounded and linear, as reading a document of ads is.
struct YMR_API VMAPDocument {
  // Without a value it is none, and `problem` says why, for people.
  static std::optional<VMAPDocument> read(std::span<const std::byte> bytes, std::string& problem);
  // Whether the document is meant as one.
  static bool isVMAP(const VASTDocument& document);

  std::string version;
  std::vector<VMAPBreak> breaks;
  std::vector<std::string> notes;  // what is left of a break that is played, for people
};
