// Before any test of a program that this is linked into: media are played in processes of the program just built.
#include "platform/avfoundation/process/MediaProcesses.h"

namespace {
[[maybe_unused]] const bool isSet = (MediaProcesses::setProgram(YMR_MEDIA_PROGRAM), true);
}
