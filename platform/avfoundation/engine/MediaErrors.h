#pragma once

#include <gst/gst.h>

#include <optional>
#include <string>

#include "platform/foundation/NSError.h"
#include "platform/foundation/NSURL.h"

// The one place that turns what GStreamer says into the errors that a host reads. The codes are NSError.h's; messages
// are for people and name the media (nameOfMedia()). Any thread.

// What an error message of the pipeline means for the media at `url`. `missingCodec` is what was seen before that
// nothing here decodes, for people; or empty.
NSError mediaErrorFromMessage(GstMessage* error, const NSURL& url, const std::string& missingCodec);

// Its bytes can't be read, or no further.
NSError readingError(const NSURL& url);
NSError unsupportedSchemeError(const NSURL& url);
// The bytes are of no container or not of one that may be opened; `typeName` is the media type found, or empty.
NSError unrecognizedFormatError(const NSURL& url, const std::string& typeName);
// A list of segments, in a file: they are fetched over HTTP only.
NSError localPlaylistError(const NSURL& url);
// What is there was read and can't be made sense of.
NSError damagedMediaError(const NSURL& url);
// Streams were found and no decoder takes one of them; `codec` is for people, or empty.
NSError missingDecoderError(const NSURL& url, const std::string& codec);
NSError silenceError(const NSURL& url, double seconds);
// An ad takes longer than it may.
NSError overtimeError(const NSURL& url);
// A file could not be opened, for the reason that errno had.
NSError fileError(const NSURL& url, int reason);
// What can be told of a file before it is read, by its descriptor or, when that is nil, by its path: that it is not
// there, a folder, empty, or out of reach of the library, which opens descriptors under /proc. nil when nothing is.
std::optional<NSError> fileFault(const NSURL& url, std::optional<int> descriptor);
// What played it has crashed or hung, and does so each time.
NSError crashError(const NSURL& url);
NSError missingLibraryError(const std::string& what);
