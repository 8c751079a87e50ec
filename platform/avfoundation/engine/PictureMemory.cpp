#include "platform/avfoundation/engine/PictureMemory.h"

#include <gst/video/gstvideopool.h>
#include <gst/video/video.h>
#include <sys/mman.h>

#include <atomic>
#include <cstddef>
#include <cstring>
#include <mutex>
#include <new>
#include <utility>
#include <vector>

namespace {

// The screen holds one picture, and one waits for it.
constexpr guint heldPictures = 2;

constexpr const char* memoryType = "YMRPictureMemory";

std::byte* newPages(std::size_t size) {
  void* pages = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  return pages == MAP_FAILED ? nullptr : static_cast<std::byte*>(pages);
}

// Pages that nobody uses, kept for the next picture: a new page costs the system as much as decoding into it.
class SparePages final : public PicturePages {
 public:
  ~SparePages() override {
    for (std::byte* pages : spare_) munmap(pages, size_);
  }

  std::byte* take(std::size_t size) override {
    std::lock_guard lock(mutex_);
    if (size != size_ || spare_.empty()) return newPages(size);
    std::byte* pages = spare_.back();
    spare_.pop_back();
    return pages;
  }

  void giveBack(std::byte* pages, std::size_t size) override {
    std::lock_guard lock(mutex_);
    if (size != size_) {
      for (std::byte* other : spare_) munmap(other, size_);
      spare_.clear();
      size_ = size;
    }
    if (spare_.size() < spareLimit) {
      spare_.push_back(pages);
    } else {
      munmap(pages, size);
    }
  }

 private:
  static constexpr std::size_t spareLimit = 1;

  std::mutex mutex_;
  std::size_t size_ = 0;  // of each
  std::vector<std::byte*> spare_;
};

// Set before the first pipeline is made.
std::shared_ptr<PicturePages>& sharedPages() {
  static std::shared_ptr<PicturePages> pages;
  return pages;
}

struct Pages {
  Pages(std::shared_ptr<PicturePages> from, std::size_t count)
      : source(std::move(from)), size(count), bytes(source->take(count)) {}
  ~Pages() {
    if (bytes) source->giveBack(bytes, size);
  }
  Pages(const Pages&) = delete;
  Pages& operator=(const Pages&) = delete;

  const std::shared_ptr<PicturePages> source;
  const std::size_t size;
  std::byte* const bytes;
};

std::shared_ptr<Pages> makePages(const std::shared_ptr<PicturePages>& source, std::size_t size) {
  auto pages = std::make_shared<Pages>(source, size);
  return pages->bytes ? pages : nullptr;
}

bool isShared(const std::shared_ptr<Pages>& pages) {
  if (pages.use_count() > 1) return true;
  std::atomic_thread_fence(std::memory_order_acquire);  // a reader's last access comes before reuse
  return false;
}

struct PictureMemory {
  GstMemory base;
  std::shared_ptr<Pages> pages;
  bool isWorthless = false;  // back in its pool
};

struct YMRPictureAllocator {
  GstAllocator base;
  std::shared_ptr<PicturePages> source;
};

PictureMemory* pictureMemory(GstMemory* memory) {
  return reinterpret_cast<PictureMemory*>(memory);
}

GstMemory* wrap(GstMemoryFlags flags, GstAllocator* allocator, GstMemory* parent, std::shared_ptr<Pages> pages,
                gsize align, gsize offset, gsize size) {
  auto* memory = new PictureMemory{{}, std::move(pages), false};
  gst_memory_init(&memory->base, flags, allocator, parent, memory->pages->size, align, offset, size);
  return &memory->base;
}

GstMemory* allocate(GstAllocator* allocator, gsize size, GstAllocationParams* params) {
  auto pages =
      makePages(reinterpret_cast<YMRPictureAllocator*>(allocator)->source, size + params->prefix + params->padding);
  if (!pages) return nullptr;
  return wrap(params->flags, allocator, nullptr, std::move(pages), params->align, params->prefix, size);
}

void release(GstAllocator*, GstMemory* memory) {
  delete pictureMemory(memory);
}

gpointer map(GstMemory* memory, gsize, GstMapFlags flags) {
  auto& [base, pages, isWorthless] = *pictureMemory(memory);
  if (!(flags & GST_MAP_WRITE)) return pages->bytes;
  if (isShared(pages)) {
    auto own = makePages(pages->source, pages->size);
    if (!own) return nullptr;
    if (!isWorthless) std::memcpy(own->bytes, pages->bytes, pages->size);
    pages = std::move(own);
  }
  isWorthless = false;
  return pages->bytes;
}

void unmap(GstMemory*) {}

gsize lengthFrom(GstMemory* memory, gssize offset, gssize size) {
  return size >= 0 ? static_cast<gsize>(size) : memory->size - static_cast<gsize>(offset);
}

GstMemory* copy(GstMemory* memory, gssize offset, gssize size) {
  return wrap({}, memory->allocator, nullptr, pictureMemory(memory)->pages, memory->align,
              memory->offset + static_cast<gsize>(offset), lengthFrom(memory, offset, size));
}

GstMemory* share(GstMemory* memory, gssize offset, gssize size) {
  GstMemory* parent = memory->parent ? memory->parent : memory;
  constexpr auto readonly = GST_MEMORY_FLAG_READONLY;
  return wrap(static_cast<GstMemoryFlags>(GST_MINI_OBJECT_FLAGS(parent) | readonly), memory->allocator, parent,
              pictureMemory(memory)->pages, memory->align, memory->offset + static_cast<gsize>(offset),
              lengthFrom(memory, offset, size));
}

struct YMRPictureAllocatorClass {
  GstAllocatorClass base;
};
G_DEFINE_TYPE(YMRPictureAllocator, ymr_picture_allocator, GST_TYPE_ALLOCATOR)

void ymr_picture_allocator_init(YMRPictureAllocator* self) {
  auto pages = sharedPages();
  new (&self->source) std::shared_ptr<PicturePages>(pages ? std::move(pages) : std::make_shared<SparePages>());
  self->base.mem_type = memoryType;
  self->base.mem_map = map;
  self->base.mem_unmap = unmap;
  self->base.mem_copy = copy;
  self->base.mem_share = share;
  GST_OBJECT_FLAG_SET(self, GST_ALLOCATOR_FLAG_CUSTOM_ALLOC);
}

void ymr_picture_allocator_class_init(YMRPictureAllocatorClass* type) {
  type->base.alloc = allocate;
  type->base.free = release;
  G_OBJECT_CLASS(type)->finalize = [](GObject* object) {
    std::destroy_at(&reinterpret_cast<YMRPictureAllocator*>(object)->source);
    G_OBJECT_CLASS(ymr_picture_allocator_parent_class)->finalize(object);
  };
}

struct YMRPicturePool {
  GstVideoBufferPool base;
};
struct YMRPicturePoolClass {
  GstVideoBufferPoolClass base;
};
G_DEFINE_TYPE(YMRPicturePool, ymr_picture_pool, GST_TYPE_VIDEO_BUFFER_POOL)

void ymr_picture_pool_init(YMRPicturePool*) {}

// What the next picture is decoded into must not be what a screen still looks at, and need not be a copy of it.
void ymr_picture_pool_class_init(YMRPicturePoolClass* type) {
  GST_BUFFER_POOL_CLASS(type)->reset_buffer = [](GstBufferPool* pool, GstBuffer* buffer) {
    for (guint i = 0; i < gst_buffer_n_memory(buffer); ++i) {
      GstMemory* memory = gst_buffer_peek_memory(buffer, i);
      if (gst_memory_is_type(memory, memoryType)) pictureMemory(memory)->isWorthless = true;
    }
    GST_BUFFER_POOL_CLASS(ymr_picture_pool_parent_class)->reset_buffer(pool, buffer);
  };
}

}  // namespace

void PicturePages::setShared(std::shared_ptr<PicturePages> pages) {
  sharedPages() = std::move(pages);
}

void offerPictureMemory(GstQuery* allocation) {
  gst_query_add_allocation_meta(allocation, GST_VIDEO_META_API_TYPE, nullptr);
  GstCaps* caps = nullptr;
  gst_query_parse_allocation(allocation, &caps, nullptr);
  GstVideoInfo info;
  if (!caps || !gst_video_info_from_caps(&info, caps)) return;
  const auto size = static_cast<guint>(GST_VIDEO_INFO_SIZE(&info));

  const GstObjectRef<GstAllocator> allocator(
      shareObject(GST_ALLOCATOR(g_object_new(ymr_picture_allocator_get_type(), nullptr))));
  const GstObjectRef<GstBufferPool> pool(
      shareObject(GST_BUFFER_POOL(g_object_new(ymr_picture_pool_get_type(), nullptr))));
  GstAllocationParams params;
  gst_allocation_params_init(&params);
  GstStructure* config = gst_buffer_pool_get_config(pool.get());
  gst_buffer_pool_config_set_params(config, caps, size, heldPictures, 0);
  gst_buffer_pool_config_set_allocator(config, allocator.get(), &params);
  gst_buffer_pool_config_add_option(config, GST_BUFFER_POOL_OPTION_VIDEO_META);
  if (!gst_buffer_pool_set_config(pool.get(), config)) return;
  gst_query_add_allocation_pool(allocation, pool.get(), size, heldPictures, 0);
  gst_query_add_allocation_param(allocation, allocator.get(), &params);  // decoders configure the pool anew
}
