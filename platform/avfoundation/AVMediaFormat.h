#pragma once

// Names by which media are told apart.

inline constexpr const char* AVMediaTypeVideo = "vide";
inline constexpr const char* AVMediaTypeAudio = "soun";
inline constexpr const char* AVMediaTypeSubtitle = "sbtl";
inline constexpr const char* AVMediaTypeClosedCaption = "clcp";

// What can be read: subtitles and closed captions.
inline constexpr const char* AVMediaCharacteristicLegible = "AVMediaCharacteristicLegible";
