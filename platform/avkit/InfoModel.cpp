#include "platform/avkit/InfoModel.h"

#include <algorithm>
#include <utility>

#include "platform/dispatch/RunLoop.h"
#include "platform/dispatch/Weakly.h"
#include "platform/uikit/UIImage.h"

namespace {

// Larger than any television shows it.
constexpr int artworkSideLimit = 1280;
// More than the panel can hold; what comes from outside is cut before it is laid out.
constexpr std::size_t textBytesLimit = 4000;

QString textOf(const std::vector<AVMetadataItem>& metadata, const char* key) {
  for (const auto& item : AVMetadataItem::metadataItemsFromArray(metadata, key, AVMetadataKeySpaceCommon)) {
    if (const std::string* text = item.stringValue()) {
      return QString::fromUtf8(text->data(), static_cast<qsizetype>(std::min(text->size(), textBytesLimit))).trimmed();
    }
  }
  return {};
}

QImage decode(const std::vector<std::byte>& data) {
  const auto picture = UIImage::imageWithData(std::span(data));
  if (!picture) return {};
  const QImage pixels(reinterpret_cast<const uchar*>(picture->pixels()), picture->width(), picture->height(),
                      QImage::Format_ARGB32_Premultiplied);
  if (std::max(pixels.width(), pixels.height()) <= artworkSideLimit) return pixels.copy();
  return pixels.scaled(artworkSideLimit, artworkSideLimit, Qt::KeepAspectRatio, Qt::SmoothTransformation);
}

}  // namespace

struct InfoModel::Decoding {
  InfoModel* model;
};

InfoModel::InfoModel() = default;

void InfoModel::read(const std::shared_ptr<AVPlayerItem>& item) {
  static const std::vector<AVMetadataItem> none;
  const auto& metadata = item ? item->externalMetadata() : none;
  title_ = textOf(metadata, AVMetadataCommonKeyTitle).simplified();
  description_ = textOf(metadata, AVMetadataCommonKeyDescription);
  const auto artworks =
      AVMetadataItem::metadataItemsFromArray(metadata, AVMetadataCommonKeyArtwork, AVMetadataKeySpaceCommon);
  readArtwork(artworks.empty() ? nullptr : artworks.front().dataValue());
  Q_EMIT changed();
}

void InfoModel::readArtwork(const std::vector<std::byte>* data) {
  if (data ? *data == artworkData_ : artworkData_.empty()) return;
  artworkData_ = data ? *data : std::vector<std::byte>();
  artwork_ = {};
  decoding_ = nullptr;
  if (artworkData_.empty()) return;
  decoding_ = std::make_shared<Decoding>(Decoding{this});
  RunLoop::main().performWork([weak = std::weak_ptr(decoding_), bytes = artworkData_] {
    RunLoop::main().post(weakly(weak, [picture = decode(bytes)](const Decoding& decoding) {
      decoding.model->decoding_ = nullptr;
      decoding.model->artwork_ = picture;
      Q_EMIT decoding.model->changed();
    }));
  });
}
