#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "VAST/SKVASTError.h"
#include "VAST/SKVASTMediaFile.h"
#include "VAST/YMRTagProfile.h"
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
  // The same by a profile's rules: YMRTagRules::takes() and choose().
  static std::shared_ptr<SKVASTMediaFile> pick(const Files& files, YMRTagProfile profile);
  // The same by what the connection had shown that it carries, ConnectionRate::kilobits(), at an earlier moment.
  static std::shared_ptr<SKVASTMediaFile> pick(const Files& files, YMRTagProfile profile,
                                               const std::optional<double>& kilobits);
  // What pick() is to be reported as when it has just given nil: SKVASTErrorNoInternet without a network, else
  // SKVASTErrorMediaFileNotCompatible.
  static SKVASTError errorOfNone();
  // Over which network the probe's host would be reached at this moment, by the machine's routes; never waits for a
  // name's look-up. Where no route leads to it there still is a network when an ad server or a tracker has answered
  // within the last minute, of whichever kind; it counts as Wi-Fi.
  static SKNetworkType networkType();
  // Whether the type names MP4, M4V, QuickTime or 3GPP in any case.
  static bool isMIMETypeCompatible(const SKVASTMediaFile& file);

  // The host whose route tells whether there is a network; nothing is sent to it. A device whose ads come from a local
  // server only sets it for SKVASTViewController, which looks before it asks anybody. An empty name means that there is
  // no network, whoever answers.
  static std::string probeHost();
  static void setProbeHost(std::string host);
};
