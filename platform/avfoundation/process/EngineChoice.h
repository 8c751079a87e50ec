#pragma once

#include <memory>

#include "platform/Export.h"
#include "platform/avfoundation/engine/MediaEngine.h"

// A new engine for `source`: in a process of its own or in the host's, as MediaEngineSettings::process says and the
// machine allows; or what MediaEngine::setFactory() has put in its place. What a web server has is fetched here from
// now on, for as long as the engine lives. Main thread.
YMR_API std::unique_ptr<MediaEngine> makeMediaEngine(const MediaSource& source);
// Says that one will be wanted soon: what can be loaded before its source is known is loaded meanwhile. Main thread.
void prepareMediaEngine();
