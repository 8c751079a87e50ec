#pragma once

#include <gst/video/video.h>

#include <cstddef>
#include <optional>

#include "platform/avfoundation/process/Wire.h"

// How a picture's description goes over the wire, and whether it is one: the rules that both sides go by.

// The format, size and planes of `picture`, whose pixels begin at `slot`; the other members are left.
void describePixels(const GstVideoFrame& picture, const std::byte* slot, wire::Picture& description);

// The picture that is described, with its pixels in the `slotSize` bytes at `slot`; its buffer is null. nil when it is
// of no format that can be drawn, of no size, or when any part of it would lie outside of the slot.
std::optional<GstVideoFrame> picturePixels(const wire::Picture& description, std::byte* slot, std::size_t slotSize);
