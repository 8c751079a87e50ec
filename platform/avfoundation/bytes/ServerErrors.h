#pragma once

#include <string>

#include "platform/Export.h"
#include "platform/foundation/NSError.h"
#include "platform/foundation/NSURL.h"

// Why a server's bytes don't come, for a host to read: one sentence, which names the server. Any thread.

// What a person calls the media: the file's name, or the server.
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
