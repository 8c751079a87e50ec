#include "platform/avfoundation/hls/HLSFetcher.h"

#include "platform/avfoundation/fetch/FetchThread.h"
#include "platform/avfoundation/hls/HLSFiles.h"
#include "platform/avfoundation/hls/HLSLoader.h"
#include "platform/foundation/MainThread.h"

namespace {

class Work final : public FetchWork {
 public:
  Work(HLSLoader::Source source, std::shared_ptr<ByteStore> store, HTTPStreams& streams)
      : isLocal_(source.url.isFileURL()),
        store_(store),
        loader_(std::move(source), std::move(store), isLocal_ ? files_ : streams) {}

  std::optional<Time> turn(Time now) override {
    const auto due = loader_.turn(now);
    return isLocal_ && files_.turn() ? now : due;  // nobody else wakes this thread for a file
  }
  int wakeDescriptor() const override { return store_->wakeDescriptor(); }
  void takeWake() override { store_->takeWake(); }

 private:
  const bool isLocal_;
  HLSFiles files_;
  const std::shared_ptr<ByteStore> store_;
  HLSLoader loader_;
};

}  // namespace

std::unique_ptr<HLSFetcher> HLSFetcher::open(const NSURL& url, std::string text, std::size_t bytesLimit,
                                             int screenHeight) {
  YMR_ASSERT_MAIN_THREAD();
  auto store = ByteStore::make(bytesLimit);
  if (!store) return nullptr;
  return std::unique_ptr<HLSFetcher>(new HLSFetcher(url, std::move(text), std::move(store), screenHeight));
}

HLSFetcher::HLSFetcher(const NSURL& url, std::string text, std::shared_ptr<ByteStore> store, int screenHeight)
    : store_(std::move(store)),
      thread_(FetchThread::shared()),
      number_(thread_->add([source = HLSLoader::Source{url, std::move(text), screenHeight},
                            bytes = store_](HTTPStreams& streams) -> std::unique_ptr<FetchWork> {
        return std::make_unique<Work>(source, bytes, streams);
      })) {}

HLSFetcher::~HLSFetcher() {
  thread_->remove(number_);
}

bool HLSFetcher::isPlaylist(std::string_view text) {
  constexpr std::string_view order = "\xEF\xBB\xBF", mark = "#EXTM3U";
  if (text.starts_with(order)) text.remove_prefix(order.size());
  text.remove_prefix(std::min(text.find_first_not_of(" \t\r\n"), text.size()));
  return text.starts_with(mark);
}
