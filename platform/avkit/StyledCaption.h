#pragma once

#include <QString>

#include "platform/avfoundation/engine/MediaCaption.h"

// The caption as the styled text that Qt Quick's Text draws: italics, bold, underline and colours where its markup asks
// for them, every other character as itself. Cut where no screen could hold more. Main thread.
QString styledText(const MediaCaption& caption);
