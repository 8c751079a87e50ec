#include "apps/ymr-media/Readiness.h"

#include <gst/gst.h>
#include <link.h>
#include <malloc.h>
#include <sys/mman.h>
#include <unistd.h>

#include <bit>
#include <cstdint>

#include "platform/avfoundation/engine/GStreamerLibrary.h"
#include "platform/avfoundation/engine/GstHandles.h"

namespace {

void loadPlugins() {
  for (const char* name : {"coreelements", "typefindfunctions", "playback", "app", "isomp4", "matroska", "mpegtsdemux",
                           "videoparsersbad", "audioparsers", "libav", "audioconvert", "audioresample", "volume",
                           "videoconvertscale", "videofilter", "deinterlace", "autodetect"}) {
    if (GstPlugin* plugin = gst_plugin_load_by_name(name)) gst_object_unref(plugin);
  }
}

// Classes are made with their first object, and what decoders take is parsed when the first one is looked for.
void useOnce() {
  for (const char* name : {"typefind", "parsebin", "multiqueue", "qtdemux", "h264parse", "aacparse", "avdec_h264",
                           "avdec_aac", "deinterlace", "queue", "audioconvert", "audioresample", "volume", "appsink"}) {
    const GstElementRef element = shareObject(gst_element_factory_make(name, nullptr));
    if (!element) continue;
    gst_element_set_state(element.get(), GST_STATE_READY);
    gst_element_set_state(element.get(), GST_STATE_NULL);
  }
  const GstCapsRef caps(gst_caps_new_empty_simple("video/x-h264"));
  GList* all = gst_element_factory_list_get_elements(GST_ELEMENT_FACTORY_TYPE_DECODABLE, GST_RANK_MARGINAL);
  gst_plugin_feature_list_free(gst_element_factory_list_filter(all, caps.get(), GST_PAD_SINK, FALSE));
  gst_plugin_feature_list_free(all);
}

// The pages of libraries that were read to link them come back from their files when they are used.
int forgetPages(dl_phdr_info* library, std::size_t, void*) {
  const auto pageMask = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE)) - 1;
  for (int i = 0; i < library->dlpi_phnum; ++i) {
    const auto& segment = library->dlpi_phdr[i];
    if (segment.p_type != PT_LOAD || (segment.p_flags & PF_W) != 0) continue;
    const std::uintptr_t begin = library->dlpi_addr + segment.p_vaddr, page = begin & ~pageMask;
    madvise(std::bit_cast<void*>(page), begin + segment.p_memsz - page, MADV_DONTNEED);
  }
  return 0;
}

}  // namespace

void getReady() {
  if (loadGStreamer()) return;
  loadPlugins();
  dl_iterate_phdr(forgetPages, nullptr);
  useOnce();  // what of the pages is needed comes back now
  malloc_trim(0);
}
