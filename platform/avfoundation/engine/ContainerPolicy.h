#pragma once

#include <gst/gst.h>

#include <string>

#include "platform/avfoundation/engine/MediaEngine.h"

// What may be opened of what a source turns out to be, whatever its name or its server say. Never what is no film;
// playlists only where they come from a web server, since segments are fetched over HTTP only; and for an advertisement
// the containers alone that its picker accepts. Any thread.

// `typeName` is a media type as the type finder names it.
bool mayOpenContainer(const MediaSource& source, const std::string& typeName);
// A list of segments to fetch.
bool isPlaylistType(const std::string& typeName);
// Lets no other container be opened inside one. Before `parsebin` runs.
void restrictContainers(GstElement* parsebin, MediaPurpose purpose);
