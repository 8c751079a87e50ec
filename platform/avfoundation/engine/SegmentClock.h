#pragma once

#include <gst/gst.h>

#include <cstdint>
#include <map>
#include <mutex>
#include <optional>

#include "platform/avfoundation/segments/SegmentRecord.h"

// What the times within segments mean on the programme's time line. Segments of one discontinuity count alike, whatever
// track they are of; the first one that is seen tells how, and one that is far from where it ought to be tells anew.
// Raw times are nanoseconds, and begin again every 26 hours. Any thread.
class SegmentClock {
 public:
  // A segment whose first time is `raw`; `isFirst` when none of its track came right before it. The main track's word
  // goes before that of others, whose first sound may begin a little before its pictures.
  void note(const SegmentRecord& segment, std::int64_t raw, bool isFirst);
  // nil when no segment of the discontinuity was noted. Of several times that it may mean the one nearest to `near`.
  std::optional<std::int64_t> time(std::uint64_t discontinuity, std::int64_t raw, std::int64_t near) const;

  // Ticks of 1/90,000 s as nanoseconds.
  static std::int64_t ofTicks(std::uint64_t ticks) {
    return static_cast<std::int64_t>(gst_util_uint64_scale(ticks, GST_SECOND, 90'000));
  }

 private:
  static constexpr std::size_t discontinuitiesLimit = 1000;
  mutable std::mutex mutex_;
  struct Offset {
    std::int64_t value = 0;  // from raw time to the time line
    bool isOfMain = false;
  };
  std::map<std::uint64_t, Offset> offsets_;
};
