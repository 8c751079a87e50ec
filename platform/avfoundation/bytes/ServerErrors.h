#pragma once

#include <string>

#include "platform/Export.h"
#include "platform/foundation/NSError.h"
#include "platform/foundation/NSURL.h"

// Why media's bytes don't come, for a host to read: the codes are NSError.h's, the messages name the media and say what
// is wrong with them. Any thread.

// What a person calls the media: the file's name, or the URL (nameForMessage()).
YMR_API std::string nameOfMedia(const NSURL& url);
// A status that is not what was asked for.
YMR_API NSError statusError(long status, const NSURL& url);
// A request that ended without an answer; `error` is the loader's own.
YMR_API NSError unansweredError(const NSError& error, const NSURL& url);
YMR_API NSError lostConnectionError(const NSURL& url);
// An answer that is no answer to what was asked.
YMR_API NSError senselessAnswerError(const NSURL& url, const std::string& what);
// It is not the same any more as when its first bytes came.
YMR_API NSError changedMediaError(const NSURL& url);
// There is not one byte in it.
YMR_API NSError emptyMediaError(const NSURL& url);

// Media that consist of several resources can't be played for want of some: `missing` says of which, as in "none of its
// streams can be had", and `why` is the last one's own error. A key that is missing is told by its code
// (AVErrorContentIsNotAuthorized), which `why` has then; everything else is AVErrorContentIsUnavailable.
YMR_API NSError missingPartError(const NSURL& media, const std::string& missing, const NSError& why);
