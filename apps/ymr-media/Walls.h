#pragma once

#include <vector>

// What this process may not do, whatever the bytes that it reads make of it. It says why where the system can't build a
// wall that it ought to; what the kernel does not know is left out without a word.

// No new privileges, no core file, bounded memory and descriptors, and no life after the host's main thread. At the
// start.
void raiseLimits();
// When the libraries are loaded, before the first byte is read and before the first thread is made: no programs, no
// processes, no look into others; no files but those of the system's libraries, of sound and of video devices, and the
// given ones; and no network unless that is let out, with what the library needs for names and certificates. Where no
// sound is wanted, no sockets at all: those of a sound server lie beside those of other services.
void raiseWalls(const std::vector<int>& files, bool isNetworkAllowed, bool isSoundWanted);
