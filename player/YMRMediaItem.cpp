#include "player/YMRMediaItem.h"

#include <utility>

std::shared_ptr<YMRMediaItem> YMRMediaItem::itemWithUrl(std::optional<NSURL> mediaUrl) {
  auto item = std::make_shared<YMRMediaItem>();
  item->setMediaUrl(std::move(mediaUrl));
  return item;
}
