// Threads that stand still in a decoder, and others that have a reason to wait.
#include <gst/gst.h>

#include <atomic>

#include "platform/avfoundation/engine/GStreamerEngine.h"
#include "tests/platform/avfoundation/engine/EngineTest.h"
#include "tests/support/MemoryBytes.h"

namespace {

std::atomic<bool> holds;  // what a decoder of the machine's best rank is given

GstFlowReturn hold(GstPad*, GstObject*, GstBuffer* buffer) {
  holds.wait(true);
  gst_buffer_unref(buffer);
  return GST_FLOW_OK;
}

void makeDecoderClass(gpointer type, gpointer) {
  gst_element_class_set_static_metadata(GST_ELEMENT_CLASS(type), "Holder", "Decoder/Video", "Holds", "YMR");
  for (const auto& [name, direction, caps] :
       {std::tuple("sink", GST_PAD_SINK, "video/x-h264"), std::tuple("src", GST_PAD_SRC, "video/x-raw")}) {
    const GstCapsRef owned(gst_caps_from_string(caps));
    gst_element_class_add_pad_template(GST_ELEMENT_CLASS(type),
                                       gst_pad_template_new(name, direction, GST_PAD_ALWAYS, owned.get()));
  }
}

void makeDecoder(GTypeInstance* instance, gpointer type) {
  for (const char* name : {"sink", "src"}) {
    GstPad* pad = gst_pad_new_from_template(gst_element_class_get_pad_template(GST_ELEMENT_CLASS(type), name), name);
    if (name[1] == 'i') gst_pad_set_chain_function(pad, hold);
    gst_element_add_pad(GST_ELEMENT(instance), pad);
  }
}

TEST_F(EngineTest, tellsAThreadThatStandsInADecoderFromOneThatWaitsOrIsSlow) {
  const auto bytes = std::make_shared<MemoryBytes>(sample("minute.mp4"));
  const auto begin = [&](std::size_t parts) {
    bytes->comeTo(bytes->size() / parts);
    auto made = std::make_unique<GStreamerEngine>(MediaSource{urlOf("@minute.mp4"), MediaPurpose::programme, bytes});
    made->setFrameSink(frames);
    made->load(kCMTimeZero);
    made->setRate(1);
    return made;
  };
  const auto standsStill = [this](GStreamerEngine& asked) {
    asked.hasMoved();
    runFor(400ms);
    return !asked.hasMoved();
  };
  auto waiting = begin(1);
  waiting->setRate(0);
  ASSERT_TRUE(runUntil([&] { return frames->lastNumber() >= 0; }));
  EXPECT_FALSE(standsStill(*waiting)) << "it waits to be played";
  waiting = begin(50);
  ASSERT_TRUE(runUntil([&] { return waiting->isBufferEmpty() && frames->lastNumber() >= 0; }));
  runFor(100ms);
  EXPECT_FALSE(standsStill(*waiting)) << "the bytes do not come";
  waiting.reset();

  static const GType type = g_type_register_static_simple(GST_TYPE_ELEMENT, "YmrHolder", sizeof(GstElementClass),
                                                          makeDecoderClass, sizeof(GstElement), makeDecoder, {});
  ASSERT_TRUE(gst_element_register(nullptr, "ymrholder", GST_RANK_PRIMARY + 1000, type));
  holds = true;
  auto standing = begin(1);
  EXPECT_TRUE(runUntil([&] { return standsStill(*standing); }));
  EXPECT_TRUE(standsStill(*standing)) << "for good";
  holds = false;
  holds.notify_all();
  EXPECT_TRUE(runUntil([&] { return standing->hasMoved(); })) << "it was slow";
  const GstObjectRef<GstPluginFeature> holder(gst_registry_lookup_feature(gst_registry_get(), "ymrholder"));
  gst_plugin_feature_set_rank(holder.get(), GST_RANK_NONE);
}

}  // namespace
