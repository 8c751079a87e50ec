#pragma once

#include <memory>
#include <optional>

#include "platform/avfoundation/hls/HLSTimeline.h"
#include "platform/avfoundation/hls/HLSTransfer.h"

// The playlist of one variant or rendition: fetched, and fetched again at its pace as long as it grows. What can't be
// fetched or read any more is asked for less and less often, and stays as it was.
//
// The thread that drives the streams.
class HLSStream {
 public:
  using Time = HLSTransfer::Time;

  HLSStream(HTTPStreams& streams, NSURL url, bool isSide) : streams_(streams), url_(std::move(url)), isSide_(isSide) {}

  // Takes a text that is here already.
  void adopt(const std::string& text, const NSURL& url, Time now);
  // Does what is due; returns when the next turn is needed at the latest. For `reference` see HLSTimeline.
  std::optional<Time> turn(Time now, const HLSTimeline* reference);

  bool isReady() const { return isReady_; }
  const HLSMediaPlaylist& list() const { return list_; }
  const HLSTimeline& timeline() const { return timeline_; }
  // How many lists there have been.
  int version() const { return version_; }
  // How many lists in a row had nothing new.
  int unchanged() const { return unchanged_; }
  // Forgets how often it could not be had, and asks at once.
  void startOver();
  // What the list means by an address of its own; nil for what can't be one or must not be opened from there.
  std::optional<NSURL> address(const std::string& reference) const;

  // Why there is no list, or none any more.
  const std::optional<NSError>& failure() const { return failure_; }
  // How often in a row it could not be had; and how often of those not because the line was down.
  int failures() const { return failures_; }
  int refusals() const { return refusals_; }

 private:
  void take(const std::string& text, const NSURL& url, Time now, const HLSTimeline* reference);
  void fail(NSError error, Time now, bool isRefused);
  bool isStale(const HLSMediaPlaylist& list);

  HTTPStreams& streams_;
  const NSURL url_;
  const bool isSide_;
  std::unique_ptr<HLSDocument> document_;
  Time askAt_{0}, askedAt_{0};
  bool isReady_ = false;
  HLSMediaPlaylist list_;
  HLSTimeline timeline_;
  NSURL base_ = url_;
  int version_ = 0, failures_ = 0, refusals_ = 0, stale_ = 0, unchanged_ = 0;
  std::optional<NSError> failure_;
};

// What a document at `base` means by an address: of a web server another web server's, of a file one in its folder or
// below. nil for anything else.
std::optional<NSURL> hlsAddress(const std::string& reference, const NSURL& base);
// Why a text is no playlist, for a host to read.
NSError hlsFaultError(const HLSFault& fault, const NSURL& url);
