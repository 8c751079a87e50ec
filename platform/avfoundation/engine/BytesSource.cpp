#include "platform/avfoundation/engine/BytesSource.h"

#include <gst/base/gstbasesrc.h>

#include <utility>

namespace {

using Outcome = MediaBytes::Outcome;

// What is pushed at a time, if so much is here.
constexpr guint pushedBytes = 64 * 1024;

struct BytesSource {
  GstBaseSrc parent;
  std::shared_ptr<ReadAhead>* bytes;
};
struct BytesSourceClass {
  GstBaseSrcClass parent;
};

G_DEFINE_TYPE(BytesSource, ymr_bytes_source, GST_TYPE_BASE_SRC)

ReadAhead& bytesOf(gpointer source) {
  return **static_cast<BytesSource*>(source)->bytes;
}

gboolean isSeekable(GstBaseSrc* source) {
  const MediaBytes::Head& head = bytesOf(source).head();
  return head.isSeekable && head.length;
}

gboolean getSize(GstBaseSrc* source, guint64* size) {
  const auto length = bytesOf(source).head().length;
  *size = length.value_or(0);
  return length.has_value();
}

gboolean interrupt(GstBaseSrc* source) {
  bytesOf(source).setInterrupted(true);
  return TRUE;
}

gboolean goOn(GstBaseSrc* source) {
  bytesOf(source).setInterrupted(false);
  return TRUE;
}

// Whoever pulls gets all that he asked for, or what there is up to the end; what is pushed goes as soon as it is here.
Outcome read(GstBaseSrc* source, guint64 place, std::span<std::byte> target, std::size_t& count) {
  const bool isPulled = GST_PAD_MODE(source->srcpad) == GST_PAD_MODE_PULL;
  Outcome outcome = Outcome::done;
  do {
    std::size_t part = 0;
    outcome = bytesOf(source).read(place + count, target.subspan(count), part);
    count += outcome == Outcome::done ? part : 0;
  } while (isPulled && outcome == Outcome::done && count < target.size());
  return outcome == Outcome::ended && count > 0 ? Outcome::done : outcome;
}

GstFlowReturn fill(GstBaseSrc* source, guint64 place, guint size, GstBuffer* buffer) {
  GstMapInfo map;
  if (!gst_buffer_map(buffer, &map, GST_MAP_WRITE)) return GST_FLOW_ERROR;
  std::size_t count = 0;
  const Outcome outcome = read(source, place, {reinterpret_cast<std::byte*>(map.data), size}, count);
  gst_buffer_unmap(buffer, &map);
  switch (outcome) {
    case Outcome::done:
      break;
    case Outcome::ended:
      return GST_FLOW_EOS;
    case Outcome::interrupted:
      return GST_FLOW_FLUSHING;
    case Outcome::failed:
      GST_ELEMENT_ERROR(source, RESOURCE, READ, (nullptr), (nullptr));
      return GST_FLOW_ERROR;
  }
  gst_buffer_resize(buffer, 0, static_cast<gssize>(count));
  GST_BUFFER_OFFSET(buffer) = place;
  GST_BUFFER_OFFSET_END(buffer) = place + count;
  return GST_FLOW_OK;
}

// Playlists name their segments from where they lie. A length that is not told is no answer, so that the demuxer is
// asked, who may know the duration; the library's own would be that there is none.
gboolean answer(GstBaseSrc* source, GstQuery* query) {
  if (GST_QUERY_TYPE(query) == GST_QUERY_DURATION && !bytesOf(source).head().length) return FALSE;
  if (GST_QUERY_TYPE(query) != GST_QUERY_URI) {
    return GST_BASE_SRC_CLASS(ymr_bytes_source_parent_class)->query(source, query);
  }
  gst_query_set_uri(query, bytesOf(source).head().url.c_str());
  return TRUE;
}

void finalize(GObject* object) {
  delete reinterpret_cast<BytesSource*>(object)->bytes;
  G_OBJECT_CLASS(ymr_bytes_source_parent_class)->finalize(object);
}

void ymr_bytes_source_class_init(BytesSourceClass* type) {
  G_OBJECT_CLASS(type)->finalize = finalize;
  GstBaseSrcClass* source = GST_BASE_SRC_CLASS(type);
  source->is_seekable = isSeekable;
  source->get_size = getSize;
  source->unlock = interrupt;
  source->unlock_stop = goOn;
  source->fill = fill;
  source->query = answer;
  static GstStaticPadTemplate pad = GST_STATIC_PAD_TEMPLATE("src", GST_PAD_SRC, GST_PAD_ALWAYS, GST_STATIC_CAPS_ANY);
  gst_element_class_add_static_pad_template(GST_ELEMENT_CLASS(type), &pad);
  gst_element_class_set_static_metadata(GST_ELEMENT_CLASS(type), "Bytes", "Source", "Bytes that are brought by others",
                                        "YMR");
}

void ymr_bytes_source_init(BytesSource* source) {
  gst_base_src_set_format(&source->parent, GST_FORMAT_BYTES);
  gst_base_src_set_blocksize(&source->parent, pushedBytes);
}

}  // namespace

GstElement* makeBytesSource(std::shared_ptr<ReadAhead> bytes) {
  auto* source = static_cast<BytesSource*>(g_object_new(ymr_bytes_source_get_type(), nullptr));
  source->bytes = new std::shared_ptr<ReadAhead>(std::move(bytes));
  return GST_ELEMENT_CAST(source);
}

bool isBytesSource(GstObject* object) {
  return G_TYPE_CHECK_INSTANCE_TYPE(object, ymr_bytes_source_get_type());
}
