#include "platform/avfoundation/fetch/ByteFetcher.h"

#include "platform/avfoundation/fetch/FetchThread.h"

std::unique_ptr<ByteFetcher> ByteFetcher::open(const NSURL& url, std::size_t bytesLimit) {
  auto store = ByteStore::make(bytesLimit);
  return store ? std::unique_ptr<ByteFetcher>(new ByteFetcher(url, std::move(store))) : nullptr;
}

ByteFetcher::ByteFetcher(const NSURL& url, std::shared_ptr<ByteStore> store)
    : store_(std::move(store)), thread_(FetchThread::shared()), number_(thread_->add(url, store_)) {}

ByteFetcher::~ByteFetcher() {
  thread_->remove(number_);
}
