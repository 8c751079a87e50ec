#include "platform/avfoundation/engine/SegmentSource.h"

#include <algorithm>
#include <condition_variable>
#include <map>
#include <mutex>
#include <utility>

#include "platform/avfoundation/engine/SegmentReader.h"

namespace {

constexpr std::size_t mainBytesLimit = 1024 * 1024;
constexpr std::size_t audioBytesLimit = 16 * 1024 * 1024;  // it comes ahead of the pictures
constexpr guint levelOfPictures = 1, levelOfSound = 2;
constexpr const char* textCaps = "text/x-raw, format=(string)pango-markup";

struct SegmentSource;

// What the element is made of.
class Core {
 public:
  Core(GstElement* element, std::shared_ptr<MediaBytes> bytes);

  void start();
  // Before the element's pads are let go of, and after.
  void interrupt();
  void stop();
  bool handle(GstEvent* event);
  bool answer(GstPad* pad, GstQuery* query);
  std::uint64_t timeAhead() const { return reader_.timeAhead(); }

 private:
  SegmentTrack::Hooks hooksOf(std::size_t track);
  std::optional<SegmentOutlet*> outlet(GstStreamType type);
  std::vector<SegmentOutlet*> outlets(std::size_t track);
  void declare(int types);
  SegmentOutlet* add(GstStreamType type, const std::string& name, GstTagList* tags);
  void factsChanged();
  void textFound(std::size_t track, std::int64_t start, std::int64_t end, const std::string& text);
  bool seek(GstEvent* event);
  void select(GstEvent* event);
  void fail();
  void failDamaged() { GST_ELEMENT_ERROR(element_, STREAM, DEMUX, (nullptr), (nullptr)); }

  GstElement* const element_;
  SegmentClock clock_;
  SegmentTrack main_, audio_;
  SegmentReader reader_;
  bool hasBegun_ = false;
  std::atomic<bool> isLive_{false};

  std::mutex mutex_;  // guards what follows
  std::condition_variable declared_;
  bool isStopping_ = false;
  bool isDeclared_ = false;
  std::int64_t origin_ = 0;
  std::map<GstStreamType, std::unique_ptr<SegmentOutlet>> outlets_;
  std::vector<std::unique_ptr<SegmentOutlet>> texts_;
};

struct SegmentSource {
  GstElement parent;
  Core* core;
};
struct SegmentSourceClass {
  GstElementClass parent;
};

G_DEFINE_TYPE(SegmentSource, ymr_segment_source, GST_TYPE_ELEMENT)

Core& coreOf(gpointer source) {
  return *static_cast<SegmentSource*>(source)->core;
}

std::string idOf(GstStreamType type) {
  return type == GST_STREAM_TYPE_VIDEO ? "pictures" : "sound";
}

std::string textId(std::size_t index) {
  return "text/" + std::to_string(index);
}

Core::Core(GstElement* element, std::shared_ptr<MediaBytes> bytes)
    : element_(element),
      main_(clock_, mainBytesLimit, hooksOf(SegmentRecord::mainTrack)),
      audio_(clock_, audioBytesLimit, hooksOf(SegmentRecord::audioTrack)),
      reader_(std::move(bytes), clock_, {&main_, &audio_},
              {[this] { factsChanged(); }, [this] { fail(); },
               [this](std::size_t track, std::int64_t start, std::int64_t end, const std::string& text) {
                 textFound(track, start, end, text);
               }}) {}

SegmentTrack::Hooks Core::hooksOf(std::size_t track) {
  SegmentTrack::Hooks hooks;
  hooks.outlet = [this, track](GstStreamType type, int types) -> std::optional<SegmentOutlet*> {
    const bool hasAudioTrack = reader_.facts().hasAudioTrack;
    const bool isOwn = track == SegmentRecord::audioTrack ? type == GST_STREAM_TYPE_AUDIO
                                                          : !hasAudioTrack || type != GST_STREAM_TYPE_AUDIO;
    if (!isOwn) return nullptr;  // that of the other track counts
    if (track == SegmentRecord::mainTrack) declare(types | (hasAudioTrack ? GST_STREAM_TYPE_AUDIO : 0));
    return outlet(type);
  };
  hooks.outlets = [this, track] { return outlets(track); };
  hooks.message = [this](GstMessage* message) { gst_element_post_message(element_, gst_message_ref(message)); };
  hooks.undecodable = [this, track] {
    if (track == SegmentRecord::mainTrack) failDamaged();
  };
  return hooks;
}

void Core::start() {
  main_.start();
  audio_.start();
  reader_.start(std::exchange(hasBegun_, true) ? std::optional(origin_) : std::nullopt);
}

void Core::interrupt() {
  std::lock_guard lock(mutex_);
  isStopping_ = true;
  declared_.notify_all();
}

void Core::stop() {
  interrupt();
  reader_.stop();
  main_.stop();
  audio_.stop();
  std::lock_guard lock(mutex_);
  isStopping_ = false;
}

std::optional<SegmentOutlet*> Core::outlet(GstStreamType type) {
  std::unique_lock lock(mutex_);
  declared_.wait(lock, [this] { return isDeclared_ || isStopping_; });
  const auto found = outlets_.find(type);
  if (isStopping_) return std::nullopt;
  return found == outlets_.end() ? nullptr : found->second.get();
}

// Those that a track brings, as far as there are any.
std::vector<SegmentOutlet*> Core::outlets(std::size_t track) {
  const bool hasAudioTrack = reader_.facts().hasAudioTrack;
  std::unique_lock lock(mutex_);
  // Sound whose track ends before the pictures have come: nobody knows of it yet.
  if (track == SegmentRecord::audioTrack && hasAudioTrack) {
    declared_.wait(lock, [this] { return isDeclared_ || isStopping_; });
  }
  std::vector<SegmentOutlet*> result;
  for (const auto& [type, each] : outlets_) {
    const bool isOfAudioTrack = hasAudioTrack && type == GST_STREAM_TYPE_AUDIO;
    if (isOfAudioTrack == (track == SegmentRecord::audioTrack)) result.push_back(each.get());
  }
  return result;
}

// Tells of the streams, then has pads for those that are new.
void Core::declare(int types) {
  std::vector<GstStreamType> fresh;
  {
    std::lock_guard lock(mutex_);
    for (const auto type : {GST_STREAM_TYPE_VIDEO, GST_STREAM_TYPE_AUDIO}) {
      if ((types & type) && !outlets_.contains(type)) fresh.push_back(type);
    }
  }
  if (fresh.empty()) return;
  const SegmentFacts facts = reader_.facts();
  const auto tagsOf = [](const std::string& language, const std::string& name) {
    GstTagList* tags = gst_tag_list_new_empty();
    if (!language.empty())
      gst_tag_list_add(tags, GST_TAG_MERGE_REPLACE, GST_TAG_LANGUAGE_CODE, language.c_str(), nullptr);
    if (!name.empty()) gst_tag_list_add(tags, GST_TAG_MERGE_REPLACE, GST_TAG_TITLE, name.c_str(), nullptr);
    return GstTagListRef(tags);
  };
  GstStreamCollection* collection = gst_stream_collection_new(nullptr);
  std::vector<GstObjectRef<GstStream>> streams;
  const auto addStream = [&](const std::string& id, GstStreamType type, GstCaps* caps, const GstTagListRef& tags) {
    streams.push_back(shareObject(gst_stream_new(id.c_str(), caps, type, GST_STREAM_FLAG_NONE)));
    if (tags) gst_stream_set_tags(streams.back().get(), tags.get());
    gst_stream_collection_add_stream(collection, shareObject(streams.back().get()).release());
  };
  for (const auto type : fresh) {
    const bool isSound = type == GST_STREAM_TYPE_AUDIO;
    addStream(idOf(type), type, nullptr, isSound ? tagsOf(facts.audioLanguage, "") : nullptr);
  }
  const std::size_t freshCount = streams.size();
  std::unique_lock lock(mutex_);
  for (const auto& [type, each] : outlets_)
    gst_stream_collection_add_stream(collection, shareObject(each->stream()).release());
  const bool isFirst = texts_.empty() && !isDeclared_;
  const GstCapsRef caps(gst_caps_from_string(textCaps));
  if (isFirst) {
    for (std::size_t i = 0; i < facts.texts.size(); ++i) {
      addStream(textId(i), GST_STREAM_TYPE_TEXT, caps.get(), tagsOf(facts.texts[i].language, facts.texts[i].name));
    }
  } else {
    for (const auto& each : texts_) gst_stream_collection_add_stream(collection, shareObject(each->stream()).release());
  }
  lock.unlock();
  const GstObjectRef<GstStreamCollection> owned(collection);
  gst_element_post_message(element_, gst_message_new_stream_collection(GST_OBJECT(element_), collection));
  GstMessage* selected = gst_message_new_streams_selected(GST_OBJECT(element_), collection);
  for (std::size_t i = 0; i < freshCount; ++i) gst_message_streams_selected_add(selected, streams[i].get());
  gst_element_post_message(element_, selected);

  std::vector<std::unique_ptr<SegmentOutlet>> made;
  for (std::size_t i = 0; i < streams.size(); ++i) {
    GstPad* pad = gst_pad_new(gst_stream_get_stream_id(streams[i].get()), GST_PAD_SRC);
    gst_pad_set_event_function(
        pad, [](GstPad*, GstObject* parent, GstEvent* event) -> gboolean { return coreOf(parent).handle(event); });
    gst_pad_set_query_function(pad, [](GstPad* of, GstObject* parent, GstQuery* query) -> gboolean {
      return coreOf(parent).answer(of, query);
    });
    made.push_back(std::make_unique<SegmentOutlet>(element_, streams[i].get(), pad));
    made.back()->restart(i < freshCount ? origin_ : 0);
  }
  lock.lock();
  for (std::size_t i = 0; i < made.size(); ++i) {
    if (i < freshCount) {
      outlets_[fresh[i]] = std::move(made[i]);
    } else {
      texts_.push_back(std::move(made[i]));
    }
  }
  isDeclared_ = true;
  declared_.notify_all();
}

void Core::factsChanged() {
  const auto window = reader_.window();
  {
    std::lock_guard lock(mutex_);
    // Of a live programme the first row begins near its end.
    if (!isDeclared_ && window->isLive) origin_ = window->end;
  }
  isLive_ = window->isLive;
  gst_element_post_message(element_, gst_message_new_duration_changed(GST_OBJECT(element_)));
}

// What is here is played before it shows: the pipeline comes to its end, and whoever hears of that looks why.
void Core::fail() {
  for (SegmentTrack* track : {&main_, &audio_}) {
    SegmentTrack::Item last{{.kind = SegmentRecord::Kind::over}, nullptr};
    track->put(last);
  }
}

void Core::textFound(std::size_t track, std::int64_t start, std::int64_t end, const std::string& text) {
  SegmentOutlet* outlet = nullptr;
  {
    std::lock_guard lock(mutex_);
    if (track < texts_.size()) outlet = texts_[track].get();
  }
  if (!outlet) return;
  GstMiniObjectRef<GstBuffer> buffer(gst_buffer_new_memdup(text.data(), text.size()));
  GST_BUFFER_PTS(buffer.get()) = static_cast<GstClockTime>(std::max<std::int64_t>(start, 0));
  GST_BUFFER_DURATION(buffer.get()) = static_cast<GstClockTime>(end - std::max<std::int64_t>(start, 0));
  const GstCapsRef caps(gst_caps_from_string(textCaps));
  outlet->push(caps.get(), std::move(buffer));
}

bool Core::handle(GstEvent* event) {
  const GstEventRef owned(event);
  switch (GST_EVENT_TYPE(event)) {
    case GST_EVENT_SEEK:
      return seek(event);
    case GST_EVENT_SELECT_STREAMS:
      select(event);
      return true;
    default:
      return true;
  }
}

bool Core::seek(GstEvent* event) {
  gdouble rate = 1;
  GstFormat format = GST_FORMAT_UNDEFINED;
  GstSeekFlags flags = GST_SEEK_FLAG_NONE;
  GstSeekType type = GST_SEEK_TYPE_NONE;
  gint64 time = 0;
  gst_event_parse_seek(event, &rate, &format, &flags, &type, &time, nullptr, nullptr);
  const auto window = reader_.window();
  if (rate != 1 || format != GST_FORMAT_TIME || !(flags & GST_SEEK_FLAG_FLUSH) || type != GST_SEEK_TYPE_SET ||
      !window) {
    return false;
  }
  std::vector<SegmentOutlet*> all;
  {
    std::lock_guard lock(mutex_);
    for (const auto& [of, each] : outlets_) all.push_back(each.get());
  }
  for (SegmentOutlet* each : all) gst_pad_push_event(each->pad(), gst_event_new_flush_start());
  stop();
  origin_ = std::clamp<std::int64_t>(time, window->start, std::max(window->start, window->end));
  for (SegmentOutlet* each : all) {
    gst_pad_push_event(each->pad(), gst_event_new_flush_stop(TRUE));
    each->restart(origin_);
  }
  start();
  return true;
}

void Core::select(GstEvent* event) {
  constexpr std::int64_t parsedAhead = 12 * GST_SECOND;
  GList* wanted = nullptr;
  gst_event_parse_select_streams(event, &wanted);
  for (GList* each = wanted; each; each = each->next) {
    for (std::size_t i = 0; i < reader_.facts().texts.size(); ++i) {
      if (textId(i) == static_cast<const char*>(each->data)) {
        reader_.wishText(static_cast<unsigned>(i), std::max(origin_, main_.reached() - parsedAhead));
      }
    }
  }
  g_list_free_full(wanted, g_free);
}

bool Core::answer(GstPad* pad, GstQuery* query) {
  const auto window = reader_.window();
  GstFormat format = GST_FORMAT_TIME;
  switch (GST_QUERY_TYPE(query)) {
    case GST_QUERY_DURATION:
      gst_query_parse_duration(query, &format, nullptr);
      if (format != GST_FORMAT_TIME || !window || window->isLive) return false;
      gst_query_set_duration(query, format, window->end);
      return true;
    case GST_QUERY_SEEKING:
      gst_query_parse_seeking(query, &format, nullptr, nullptr, nullptr);
      if (format != GST_FORMAT_TIME || !window) return false;
      gst_query_set_seeking(query, format, TRUE, window->start, std::max(window->start, window->end));
      return true;
    default:
      return gst_pad_query_default(pad, GST_OBJECT(element_), query);
  }
}

GstStateChangeReturn changeState(GstElement* element, GstStateChange change) {
  Core& core = coreOf(element);
  if (change == GST_STATE_CHANGE_PAUSED_TO_READY) core.interrupt();
  const auto result = GST_ELEMENT_CLASS(ymr_segment_source_parent_class)->change_state(element, change);
  if (change == GST_STATE_CHANGE_PAUSED_TO_READY) core.stop();
  if (change == GST_STATE_CHANGE_READY_TO_PAUSED && result != GST_STATE_CHANGE_FAILURE) core.start();
  return result;
}

void getLevel(GObject* object, guint, GValue* value, GParamSpec*) {
  g_value_set_uint64(value, coreOf(object).timeAhead());
}

void finalize(GObject* object) {
  delete reinterpret_cast<SegmentSource*>(object)->core;
  G_OBJECT_CLASS(ymr_segment_source_parent_class)->finalize(object);
}

void ymr_segment_source_class_init(SegmentSourceClass* type) {
  GObjectClass* object = G_OBJECT_CLASS(type);
  object->finalize = finalize;
  object->get_property = getLevel;
  // What adaptive demuxers call what they hold ready.
  const auto level = [object](guint number, const char* name) {
    g_object_class_install_property(object, number,
                                    g_param_spec_uint64(name, nullptr, nullptr, 0, G_MAXUINT64, 0, G_PARAM_READABLE));
  };
  level(levelOfPictures, "current-level-time-video");
  level(levelOfSound, "current-level-time-audio");
  GstElementClass* element = GST_ELEMENT_CLASS(type);
  element->change_state = changeState;
  element->send_event = [](GstElement* of, GstEvent* event) -> gboolean { return coreOf(of).handle(event); };
  gst_element_class_set_static_metadata(element, "Segments", "Source/Demuxer", "Media in segments, fetched by others",
                                        "YMR");
}

void ymr_segment_source_init(SegmentSource* source) {
  GST_OBJECT_FLAG_SET(source, GST_ELEMENT_FLAG_SOURCE);
}

}  // namespace

GstElement* makeSegmentSource(std::shared_ptr<MediaBytes> bytes) {
  auto* source = static_cast<SegmentSource*>(g_object_new(ymr_segment_source_get_type(), nullptr));
  source->core = new Core(GST_ELEMENT_CAST(source), std::move(bytes));
  return GST_ELEMENT_CAST(source);
}

bool isSegmentSource(GstObject* object) {
  return G_TYPE_CHECK_INSTANCE_TYPE(object, ymr_segment_source_get_type());
}
