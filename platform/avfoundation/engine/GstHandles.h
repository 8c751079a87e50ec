#pragma once

#include <gst/gst.h>

#include <memory>
#include <string>

// Owning handles of GStreamer's and GLib's things, one reference each. adopt…() takes over the caller's reference,
// share…() takes one of its own; a floating reference is sunk by either.

struct GstObjectRelease {
  void operator()(gpointer object) const { gst_object_unref(object); }
};
template <class Object>
using GstObjectRef = std::unique_ptr<Object, GstObjectRelease>;
using GstElementRef = GstObjectRef<GstElement>;
using GstPadRef = GstObjectRef<GstPad>;
using GstBusRef = GstObjectRef<GstBus>;

template <class Object>
GstObjectRef<Object> shareObject(Object* object) {
  return GstObjectRef<Object>(object ? static_cast<Object*>(gst_object_ref_sink(object)) : nullptr);
}
template <class Object>
GstObjectRef<Object> adoptObject(Object* object) {
  if (object && g_object_is_floating(object)) gst_object_ref_sink(object);
  return GstObjectRef<Object>(object);
}

struct GstMiniObjectRelease {
  template <class Object>
  void operator()(Object* object) const {
    gst_mini_object_unref(GST_MINI_OBJECT_CAST(object));
  }
};
template <class Object>
using GstMiniObjectRef = std::unique_ptr<Object, GstMiniObjectRelease>;
using GstCapsRef = GstMiniObjectRef<GstCaps>;
using GstSampleRef = GstMiniObjectRef<GstSample>;
using GstEventRef = GstMiniObjectRef<GstEvent>;
using GstQueryRef = GstMiniObjectRef<GstQuery>;
using GstTagListRef = GstMiniObjectRef<GstTagList>;

struct GErrorRelease {
  void operator()(GError* error) const { g_error_free(error); }
};
using GErrorRef = std::unique_ptr<GError, GErrorRelease>;

struct GFreeRelease {
  void operator()(gchar* text) const { g_free(text); }
};
using GTextRef = std::unique_ptr<gchar, GFreeRelease>;

// The name of the factory that made `element`; empty for one without.
inline std::string factoryName(GstElement* element) {
  GstElementFactory* factory = element ? gst_element_get_factory(element) : nullptr;
  return factory ? GST_OBJECT_NAME(factory) : "";
}
