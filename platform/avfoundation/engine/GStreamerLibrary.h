#pragma once

#include <optional>
#include <string>

// Loads GStreamer into the process, once; later calls are free. The first may read the machine's plugins, which takes
// long when they have changed: not for the main thread. Returns the name of what is missing, or nil.
std::optional<std::string> loadGStreamer();
