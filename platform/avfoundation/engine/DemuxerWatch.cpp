#include "platform/avfoundation/engine/DemuxerWatch.h"

#include <algorithm>
#include <utility>

void DemuxerWatch::admit(GstElement* element) {
  GstElementFactory* factory = gst_element_get_factory(element);
  if (!factory || !gst_element_factory_list_is_type(factory, GST_ELEMENT_FACTORY_TYPE_DEMUXER)) return;
  GstPadRef pad = adoptObject(gst_element_get_static_pad(element, "sink"));
  if (!pad) return;
  std::lock_guard lock(mutex_);
  pads_.push_back(std::move(pad));
}

bool DemuxerWatch::hasGivenUp() const {
  std::lock_guard lock(mutex_);
  return std::ranges::any_of(pads_, [](const GstPadRef& pad) {
    GST_OBJECT_LOCK(pad.get());
    const bool reads = GST_PAD_MODE(pad.get()) == GST_PAD_MODE_PULL;
    const GstObjectRef<GstTask> task = shareObject(reads ? GST_PAD_TASK(pad.get()) : nullptr);
    GST_OBJECT_UNLOCK(pad.get());
    return task && gst_task_get_state(task.get()) == GST_TASK_PAUSED;
  });
}
