#pragma once

#include <gst/gst.h>

#include <string>
#include <vector>

#include "platform/avfoundation/engine/MediaEngine.h"

// What a collection of GStreamer's streams offers, as tracks: video, then audio, then legible ones that can be shown as
// text (pictures of text are left out). Any thread.
std::vector<MediaTrack> tracksFromCollection(GstStreamCollection* collection);

// The extended language tag for what a container says: "eng", "en" and "en-GB" become "en", "en" and "en-GB"; an
// unknown or undetermined language becomes "".
std::string languageTagFromCode(const std::string& code);

// For people: "H.264", or the media type. Empty without caps.
std::string codecDescription(const GstCaps* caps);
