#pragma once

#include <QImage>
#include <QObject>
#include <QString>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/avfoundation/AVPlayerItem.h"

// What the host tells of the programme. Texts are shown as they stand, never as markup; a picture that can't be decoded
// counts as none. Main thread; pictures are decoded off it.
class InfoModel final : public QObject {
  Q_OBJECT
  Q_PROPERTY(QString title READ title NOTIFY changed)
  Q_PROPERTY(QString description READ description NOTIFY changed)
  // Null until it is decoded, or when there is none.
  Q_PROPERTY(QImage artwork READ artwork NOTIFY changed)
  Q_PROPERTY(bool hasArtwork READ hasArtwork NOTIFY changed)

 public:
  InfoModel();

  // Reads the item's external metadata; nil for none. To be called again when they may have changed.
  void read(const std::shared_ptr<AVPlayerItem>& item);

  QString title() const { return title_; }
  QString description() const { return description_; }
  QImage artwork() const { return artwork_; }
  bool hasArtwork() const { return !artwork_.isNull(); }
  bool isEmpty() const { return title_.isEmpty() && description_.isEmpty() && artwork_.isNull(); }

 Q_SIGNALS:
  void changed();

 private:
  struct Decoding;
  void readArtwork(const std::vector<std::byte>* data);

  QString title_;
  QString description_;
  std::vector<std::byte> artworkData_;
  QImage artwork_;
  std::shared_ptr<Decoding> decoding_;  // of artworkData_, while it is under way
};
