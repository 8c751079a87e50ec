#include "platform/avfoundation/engine/RangeWatch.h"

#include <string_view>

#include "platform/avfoundation/engine/GstHandles.h"

namespace {

constexpr guint wholeContent = 200;
constexpr guint partOfContent = 206;

// Names of headers are in whatever case the server or its protocol prefers.
bool offersRanges(const GstStructure* headers) {
  for (gint i = 0; i < gst_structure_n_fields(headers); ++i) {
    const char* name = gst_structure_nth_field_name(headers, static_cast<guint>(i));
    if (g_ascii_strcasecmp(name, "accept-ranges") != 0) continue;
    const char* value = gst_structure_get_string(headers, name);
    return value && g_ascii_strcasecmp(value, "none") != 0;
  }
  return false;
}

}  // namespace

void RangeWatch::admit(GstElement* source) {
  if (factoryName(source) != "souphttpsrc") return;
  const GstPadRef pad(gst_element_get_static_pad(source, "src"));
  constexpr auto before = static_cast<GstPadProbeType>(GST_PAD_PROBE_TYPE_QUERY_UPSTREAM | GST_PAD_PROBE_TYPE_PUSH);
  constexpr auto after = static_cast<GstPadProbeType>(GST_PAD_PROBE_TYPE_QUERY_UPSTREAM | GST_PAD_PROBE_TYPE_PULL);
  gst_pad_add_probe(pad.get(), before, mayGoElsewhere, this, nullptr);
  gst_pad_add_probe(pad.get(), after, knowsLength, nullptr, nullptr);
}

void RangeWatch::noteAnswer(const GstStructure* message) {
  guint status = 0;
  gst_structure_get_uint(message, "http-status-code", &status);
  if (status == partOfContent) takesRanges_ = true;
  const GValue* value = gst_structure_get_value(message, "response-headers");
  if (status != wholeContent || !value || !GST_VALUE_HOLDS_STRUCTURE(value)) return;
  takesRanges_ = offersRanges(gst_value_get_structure(value));
}

GstPadProbeReturn RangeWatch::mayGoElsewhere(GstPad*, GstPadProbeInfo* info, gpointer self) {
  GstQuery* query = GST_PAD_PROBE_INFO_QUERY(info);
  if (GST_QUERY_TYPE(query) != GST_QUERY_SEEKING || static_cast<RangeWatch*>(self)->takesRanges_) {
    return GST_PAD_PROBE_OK;
  }
  GstFormat format = GST_FORMAT_UNDEFINED;
  gst_query_parse_seeking(query, &format, nullptr, nullptr, nullptr);
  if (format != GST_FORMAT_BYTES) return GST_PAD_PROBE_OK;
  gst_query_set_seeking(query, GST_FORMAT_BYTES, FALSE, 0, -1);
  return GST_PAD_PROBE_HANDLED;
}

GstPadProbeReturn RangeWatch::knowsLength(GstPad*, GstPadProbeInfo* info, gpointer) {
  GstQuery* query = GST_PAD_PROBE_INFO_QUERY(info);
  if (GST_QUERY_TYPE(query) != GST_QUERY_DURATION) return GST_PAD_PROBE_OK;
  gint64 length = -1;
  gst_query_parse_duration(query, nullptr, &length);
  return length < 0 ? GST_PAD_PROBE_DROP : GST_PAD_PROBE_OK;
}
