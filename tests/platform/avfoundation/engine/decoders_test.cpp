// Decoders that are missing or give up: what the registry of this process says counts, so only here.
#include "platform/avfoundation/engine/GstHandles.h"
#include "tests/platform/avfoundation/engine/EngineTest.h"

namespace {

using testing::HasSubstr;

class Decoders : public EngineTest {};

// Takes the decoders of a media type away while it lives.
class WithoutDecoders {
 public:
  explicit WithoutDecoders(const char* type) {
    const GstCapsRef caps(gst_caps_from_string(type));
    GList* all = gst_element_factory_list_get_elements(GST_ELEMENT_FACTORY_TYPE_DECODER, GST_RANK_MARGINAL);
    GList* fitting = gst_element_factory_list_filter(all, caps.get(), GST_PAD_SINK, FALSE);
    for (GList* entry = fitting; entry; entry = entry->next) {
      auto* feature = GST_PLUGIN_FEATURE(entry->data);
      ranks_.emplace_back(shareObject(feature), gst_plugin_feature_get_rank(feature));
      gst_plugin_feature_set_rank(feature, GST_RANK_NONE);
    }
    gst_plugin_feature_list_free(fitting);
    gst_plugin_feature_list_free(all);
  }
  ~WithoutDecoders() {
    for (const auto& [feature, rank] : ranks_) gst_plugin_feature_set_rank(feature.get(), rank);
  }

 private:
  std::vector<std::pair<GstObjectRef<GstPluginFeature>, guint>> ranks_;
};

TEST_F(Decoders, picturesThatNothingDecodesAreAnErrorAndSoundIsNot) {
  ASSERT_TRUE(open("half.mp4"));  // loads the library
  {
    const WithoutDecoders gone("video/x-h264");
    EXPECT_FALSE(open("clip.mp4"));
    ASSERT_EQ(told.failures.size(), 1u);
    EXPECT_EQ(told.failures[0].code, AVErrorDecoderNotFound);
    EXPECT_THAT(told.failures[0].message, HasSubstr("H.264"));
  }
  {
    const WithoutDecoders gone("audio/mpeg,mpegversion=4");
    ASSERT_TRUE(open("clip.mp4"));
    EXPECT_TRUE(playTo(0.3));
    EXPECT_GT(frames->lastNumber(), 3);
  }
}

// A decoder that the machine prefers to all others, and that gives up before anything has come out of it.
struct BrokenDecoder : GstElement {
  static inline int takes = 0;  // so many buffers; fewer than none: it does not even open its device

  static GstFlowReturn chain(GstPad*, GstObject* parent, GstBuffer* buffer) {
    gst_buffer_unref(buffer);
    if (--takes >= 0) return GST_FLOW_OK;
    GST_ELEMENT_ERROR(parent, STREAM, DECODE, (nullptr), (nullptr));
    return GST_FLOW_ERROR;
  }
  static gboolean event(GstPad*, GstObject*, GstEvent* event) {
    gst_event_unref(event);
    return TRUE;
  }
  static GstStateChangeReturn changeState(GstElement* element, GstStateChange change) {
    if (takes < 0 && change == GST_STATE_CHANGE_NULL_TO_READY) return GST_STATE_CHANGE_FAILURE;
    return GST_ELEMENT_CLASS(g_type_class_peek_parent(GST_ELEMENT_GET_CLASS(element)))->change_state(element, change);
  }
  static void prepare(gpointer type, gpointer) {
    auto* element = GST_ELEMENT_CLASS(type);
    element->change_state = changeState;
    const GstCapsRef taken(gst_caps_from_string("video/x-h264")), given(gst_caps_from_string("video/x-raw"));
    gst_element_class_add_pad_template(element,
                                       gst_pad_template_new("sink", GST_PAD_SINK, GST_PAD_ALWAYS, taken.get()));
    gst_element_class_add_pad_template(element, gst_pad_template_new("src", GST_PAD_SRC, GST_PAD_ALWAYS, given.get()));
    gst_element_class_set_metadata(element, "Broken", "Codec/Decoder/Video", "Gives up", "Tests");
  }
  static void make(GTypeInstance* instance, gpointer type) {
    for (const char* name : {"sink", "src"}) {
      GstPad* pad = gst_pad_new_from_template(gst_element_class_get_pad_template(GST_ELEMENT_CLASS(type), name), name);
      if (GST_PAD_IS_SINK(pad)) {
        gst_pad_set_chain_function(pad, chain);
        gst_pad_set_event_function(pad, event);
      }
      gst_element_add_pad(GST_ELEMENT_CAST(instance), pad);
    }
  }
};

TEST_F(Decoders, aDecoderThatFailsIsReplacedByTheNextBest) {
  ASSERT_TRUE(open("half.mp4"));  // loads the library
  const GType type = g_type_register_static_simple(
      GST_TYPE_ELEMENT, "BrokenDecoder", sizeof(GstElementClass),
      [](gpointer made, gpointer data) { BrokenDecoder::prepare(made, data); }, sizeof(BrokenDecoder),
      BrokenDecoder::make, GTypeFlags{});
  gst_element_register(nullptr, "brokendecoder", GST_RANK_PRIMARY + 1000, type);
  for (const int takes : {-1, 0, 5}) {
    SCOPED_TRACE(takes);
    BrokenDecoder::takes = takes;
    EXPECT_TRUE(open("clip.mp4"));
    EXPECT_EQ(frames->lastNumber(), 0) << "nothing is lost";
    EXPECT_TRUE(playTo(0.3));
  }
  const GstObjectRef<GstElementFactory> factory(gst_element_factory_find("brokendecoder"));
  gst_registry_remove_feature(gst_registry_get(), GST_PLUGIN_FEATURE(factory.get()));
}

}  // namespace
