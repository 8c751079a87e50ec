#pragma once

#include <cstddef>
#include <memory>

#include "platform/avfoundation/engine/GstHandles.h"

// Memory for decoded pictures that is shared where GStreamer would copy it.
//
// A decoder goes on reading a picture that later ones refer to while that picture is already on its way to the screen.
// GStreamer makes a copy for the way, of every such picture; here both have the same pages. That is sound because
// nobody writes to a picture that has been decoded: a buffer that comes back to its pool while its pages are still
// looked at gets others. Whoever else maps such memory for writing gets a copy of its own.
//
// What is not needed goes back to the system at once; the heap would keep it.

// Where the memory comes from. Any thread.
class PicturePages {
 public:
  virtual ~PicturePages() = default;
  // At least `size` bytes, on a page's boundary, with anything in them; null when there are none.
  virtual std::byte* take(std::size_t size) = 0;
  // What take() gave, with the same size. Nobody looks at it any more.
  virtual void giveBack(std::byte* pages, std::size_t size) = 0;

  // What pictures are decoded into from now on, in all of this process; nil: memory of its own, for each pipeline
  // apart. For a program that shares its pictures with another one.
  static void setShared(std::shared_ptr<PicturePages> pages);
};

// Takes part in an ALLOCATION query: offers a pool of such memory, whose rows may be of any length.
void offerPictureMemory(GstQuery* allocation);
