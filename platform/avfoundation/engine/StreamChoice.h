#pragma once

#include <gst/gst.h>

#include <string>

// Which of the media's streams of one type (pictures or sound) is played: the one that the media prefer, else the
// first. Its identifier; empty when there is none.
std::string chosenStream(GstStreamCollection* collection, GstStreamType type);

// There is a stream of one of these types.
bool offers(GstStreamCollection* collection, int types);
