#include "platform/avkit/PanelModel.h"

#include <algorithm>
#include <utility>

PanelModel::PanelModel() = default;

void PanelModel::setPages(std::vector<Page> pages) {
  if (pages == pages_) return;
  if (open_) {
    const auto kept = std::find(pages.begin(), pages.end(), pages_[static_cast<std::size_t>(page_)]);
    open_ = kept != pages.end();
    page_ = open_ ? static_cast<int>(kept - pages.begin()) : 0;
    if (!open_) row_ = -1;
  }
  pages_ = std::move(pages);
  Q_EMIT changed();
}

void PanelModel::setRows(int rows) {
  rows_ = rows;
  if (row_ < rows_) return;
  row_ = rows_ - 1;
  Q_EMIT changed();
}

void PanelModel::open() {
  if (open_ || pages_.empty()) return;
  open_ = true;
  page_ = 0;
  row_ = -1;
  Q_EMIT changed();
}

void PanelModel::close() {
  if (!open_) return;
  open_ = false;
  row_ = -1;
  Q_EMIT changed();
}

void PanelModel::turnTo(int page) {
  if (!open_ || page < 0 || page >= static_cast<int>(pages_.size())) return;
  page_ = page;
  row_ = -1;
  Q_EMIT changed();
}

void PanelModel::up() {
  if (row_ < 0) return close();
  --row_;
  Q_EMIT changed();
}

void PanelModel::down(int enterAt) {
  if (!open_ || showsInfo() || rows_ == 0) return;
  row_ = std::min(row_ < 0 ? std::max(0, enterAt) : row_ + 1, rows_ - 1);
  Q_EMIT changed();
}

QStringList PanelModel::titles() const {
  QStringList titles;
  for (const Page page : pages_) titles << (page == Page::info ? tr("Info") : tr("Subtitles"));
  return titles;
}
