#include "platform/avfoundation/engine/StreamChoice.h"

std::string chosenStream(GstStreamCollection* collection, GstStreamType type) {
  GstStream* best = nullptr;
  for (guint i = 0; i < gst_stream_collection_get_size(collection); ++i) {
    GstStream* stream = gst_stream_collection_get_stream(collection, i);
    if (!(gst_stream_get_stream_type(stream) & type)) continue;
    const auto isPreferred = [](GstStream* one) { return gst_stream_get_stream_flags(one) & GST_STREAM_FLAG_SELECT; };
    if (!best || (isPreferred(stream) && !isPreferred(best))) best = stream;
  }
  return best ? gst_stream_get_stream_id(best) : "";
}

bool offers(GstStreamCollection* collection, int types) {
  for (guint i = 0; i < gst_stream_collection_get_size(collection); ++i) {
    if (gst_stream_get_stream_type(gst_stream_collection_get_stream(collection, i)) & types) return true;
  }
  return false;
}
