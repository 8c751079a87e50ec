#pragma once

#include <memory>

#include "platform/avfoundation/engine/MediaEngine.h"
#include "platform/avfoundation/fetch/ByteFetcher.h"
#include "platform/avfoundation/hls/HLSFetcher.h"

// How sources come by their bytes where an engine does not open them itself: those of a web server are fetched by this
// process, with the bounds of the source's purpose, and so are a pipe's read, which nothing may wait for unbounded.

// Begins to fetch; null for a source that is none of a web server's, and when the machine has no memory left. Main
// thread.
std::shared_ptr<ByteFetcher> fetcherOf(const MediaSource& source);
// Begins to fetch what a playlist names; null when the machine has no memory left. Main thread.
std::shared_ptr<HLSFetcher> segmentFetcher(const NSURL& url, const std::string& text, MediaPurpose purpose);
// The text of a playlist on the disk that is read here; nil for any other file.
std::optional<std::string> localPlaylist(const MediaSource& source);
// The source with its segments, for an engine in this process; they keep the fetcher.
MediaSource withSegments(MediaSource source, std::shared_ptr<HLSFetcher> fetcher);
// The source with its bytes, for an engine in this process; they keep the fetcher. As it was where it needs none, or
// when there are no descriptors left. Any thread.
MediaSource withBytes(MediaSource source, std::shared_ptr<ByteFetcher> fetcher);
