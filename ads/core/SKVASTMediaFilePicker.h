#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "VAST/SKVASTMediaFile.h"
#include "platform/Export.h"

// networkType().
enum SKNetworkType : std::int32_t {
  SKNetworkTypeCellular = 0,
  SKNetworkTypeNone = 1,
  SKNetworkTypeWiFi = 2,
};

// Chooses the file of an ad to play. Any thread.
class YMR_API SKVASTMediaFilePicker {
 public:
  using Files = std::vector<std::shared_ptr<SKVASTMediaFile>>;

  // The file of a compatible type whose area is nearest to the main screen's in points, the smaller of two that are
  // equally near; bitrates do not matter. nil without such a file, and without a network.
  static std::shared_ptr<SKVASTMediaFile> pick(const Files& files);
  // Over which network the probe's host would be reached at this moment; may wait for a name's look-up, within a bound.
  static SKNetworkType networkType();
  // Whether the type names MP4, M4V, QuickTime or 3GPP in any case.
  static bool isMIMETypeCompatible(const SKVASTMediaFile& file);

  // The host whose route tells whether there is a network; nothing is sent to it. A device whose ads come from a local
  // server sets that one's. An empty name means that there is no network.
  static std::string probeHost();
  static void setProbeHost(std::string host);
};
