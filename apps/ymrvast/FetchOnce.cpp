#include "apps/ymrvast/FetchOnce.h"

#include <utility>

void FetchOnce::load(URLRequest request, const dispatch_queue_t& queue, Completion completion) {
  const std::string address = request.url.absoluteString();
  {
    const std::lock_guard lock(mutex_);
    const auto found = known_.find(address);
    if (found != known_.end()) {
      return dispatch_async(queue, [response = found->second, completion = std::move(completion)]() mutable {
        completion(std::move(response));
      });
    }
  }
  URLLoader::shared()->load(std::move(request), queue,
                            [self = shared_from_this(), address, completion = std::move(completion)](auto response) {
                              if (!response.error) URLLoader::shared()->noteAnswer();
                              {
                                const std::lock_guard lock(self->mutex_);
                                self->known_.insert_or_assign(address, response);
                              }
                              completion(std::move(response));
                            });
}
