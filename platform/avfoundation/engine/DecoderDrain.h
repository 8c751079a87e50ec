#pragma once

#include <gst/gst.h>

// Lets video decoders give their last pictures when the pictures end before the sound does.
//
// decodebin3 holds a stream's end back until every stream has come to its own, so a decoder that reorders pictures sits
// on the last few: they come too late while playing, and a seek to one of them would wait for ever, since the paused
// sound keeps the demuxer from going on. A second announcement of the same stream makes the decoder drain; a gap after
// it lets a sink be ready that has been given no picture at all, as after a seek beyond the last one.
//
// To be called once for a playbin, before it runs.
void drainDecodersEarly(GstElement* playbin);
