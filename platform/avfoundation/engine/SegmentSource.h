#pragma once

#include <gst/gst.h>

#include <memory>

#include "platform/avfoundation/bytes/MediaBytes.h"

// A pipeline's source for media in segments (SegmentRecord.h): reads the row that `bytes` brings, takes the segments
// apart and has a pad for pictures, one for sound, and one for each of the texts. It behaves as a demuxer for adaptive
// streams does: it posts its streams before their pads, takes seeks and tells what can be gone to, and fetches only
// those texts that it is told to by a select-streams event. A failure is an error of the element before there is
// anything to play, and afterwards its end; its words are the reader's.
//
// Floats.
GstElement* makeSegmentSource(std::shared_ptr<MediaBytes> bytes);

// True for the element that makeSegmentSource() makes. Any thread.
bool isSegmentSource(GstObject* object);
