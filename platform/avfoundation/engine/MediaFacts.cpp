#include "platform/avfoundation/engine/MediaFacts.h"

#include <algorithm>

#include "platform/avfoundation/engine/GstHandles.h"
#include "platform/avfoundation/engine/StreamTracks.h"

MediaFacts factsOf(GstElement* pipeline, GstStreamCollection* streams) {
  MediaFacts facts;
  gint64 duration = -1;
  if (gst_element_query_duration(pipeline, GST_FORMAT_TIME, &duration) && duration >= 0) facts.duration = duration;
  const GstQueryRef seeking(gst_query_new_seeking(GST_FORMAT_TIME));
  if (gst_element_query(pipeline, seeking.get())) {
    gboolean isSeekable = TRUE;
    gint64 start = 0, end = -1;
    gst_query_parse_seeking(seeking.get(), nullptr, &isSeekable, &start, &end);
    facts.isSeekable = isSeekable;
    facts.seekableStart = std::max<gint64>(start, 0);
    if (end >= 0) facts.seekableEnd = end;
  }
  if (streams) facts.tracks = tracksFromCollection(streams);
  return facts;
}
