#pragma once

#include <gst/gst.h>

#include <memory>

#include "platform/avfoundation/engine/ReadAhead.h"

// A pipeline's source over bytes that somebody else brings. Where any place can be read and the length is known,
// demuxers pull; else the bytes are pushed from the first to the last. Reads are interrupted while the pipeline flushes
// or stops; a failure is an error of the element, and its words are the reader's.
//
// `bytes` have been opened. Floats.
GstElement* makeBytesSource(std::shared_ptr<ReadAhead> bytes);

// True for the element that makeBytesSource() makes. Any thread.
bool isBytesSource(GstObject* object);
