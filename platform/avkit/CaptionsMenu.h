#pragma once

#include <QObject>
#include <QStringList>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/avfoundation/AVPlayerItem.h"

// The rows of the captions menu: "Off", and the item's legible options in the languages that are allowed. Main thread.
class CaptionsMenu final : public QObject {
  Q_OBJECT
  // Empty when there is nothing to choose.
  Q_PROPERTY(QStringList names READ names NOTIFY changed)
  // The row of what the item has selected; -1 when no row stands for it.
  Q_PROPERTY(int selected READ selected NOTIFY changed)

 public:
  CaptionsMenu();

  using Languages = std::optional<std::vector<std::string>>;
  void setAllowedLanguages(Languages languages);
  // Reads the item's options and selection; nil for none.
  void read(std::shared_ptr<AVPlayerItem> item);

  struct Choice {
    std::shared_ptr<AVMediaSelectionOption> option;  // nil for "Off"
    std::shared_ptr<AVMediaSelectionGroup> group;
  };
  // Selects the row in the item; nil when the item does not have it any more.
  std::optional<Choice> choose(int row);

  const QStringList& names() const { return names_; }
  int rows() const { return static_cast<int>(names_.size()); }
  int selected() const { return selected_; }

 Q_SIGNALS:
  void changed();

 private:
  bool allows(const AVMediaSelectionOption& option) const;

  Languages allowed_;
  std::shared_ptr<AVPlayerItem> item_;
  std::shared_ptr<AVMediaSelectionGroup> group_;
  std::vector<std::shared_ptr<AVMediaSelectionOption>> options_;  // of the rows after "Off"
  QStringList names_;
  int selected_ = -1;
};
