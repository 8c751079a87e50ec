#pragma once

#include <QObject>
#include <QString>
#include <QStringList>
#include <vector>

// The panel that comes down over the picture: which of its pages is open, and where the viewer stands in it. Main
// thread.
class PanelModel final : public QObject {
  Q_OBJECT
  Q_PROPERTY(bool open READ isOpen NOTIFY changed)
  Q_PROPERTY(QStringList titles READ titles NOTIFY changed)
  // Index into titles.
  Q_PROPERTY(int page READ page NOTIFY changed)
  Q_PROPERTY(bool showsInfo READ showsInfo NOTIFY changed)
  // The row of the open page on which the viewer stands; -1 on the titles.
  Q_PROPERTY(int row READ row NOTIFY changed)

 public:
  enum class Page { info, subtitles };

  PanelModel();

  // What there is to open. The page that is open stays open when it is among them, else the panel closes.
  void setPages(std::vector<Page> pages);
  // How many rows the subtitles page has.
  void setRows(int rows);
  // Opens the first page, the viewer on the titles. Nothing without pages.
  void open();
  void close();

  // The viewer's arrow keys. Up closes from the titles; down enters the subtitles page at `enterAt`.
  void left() { turnTo(page_ - 1); }
  void right() { turnTo(page_ + 1); }
  void up();
  void down(int enterAt);

  bool isOpen() const { return open_; }
  bool hasPages() const { return !pages_.empty(); }
  bool showsInfo() const { return open_ && pages_[static_cast<std::size_t>(page_)] == Page::info; }
  QStringList titles() const;
  int page() const { return page_; }
  int row() const { return row_; }

 Q_SIGNALS:
  void changed();

 private:
  void turnTo(int page);

  std::vector<Page> pages_;
  int rows_ = 0;
  bool open_ = false;
  int page_ = 0;
  int row_ = -1;
};
