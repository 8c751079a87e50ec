#pragma once

#include "platform/avfoundation/engine/GstHandles.h"

// Memory for decoded pictures that is shared where GStreamer would copy it.
//
// A decoder goes on reading a picture that later ones refer to while that picture is already on its way to the screen.
// GStreamer makes a copy for the way, of every such picture; here both have the same pages. That is sound because
// nobody writes to a picture that has been decoded: a buffer that comes back to its pool while its pages are still
// looked at gets others. Whoever else maps such memory for writing gets a copy of its own.
//
// What is not needed goes back to the system at once; the heap would keep it.

// Takes part in an ALLOCATION query: offers a pool of such memory, whose rows may be of any length.
void offerPictureMemory(GstQuery* allocation);
