#include "platform/systemconfiguration/NameLookup.h"

#include <netdb.h>

#include <condition_variable>
#include <cstring>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>

#include "platform/dispatch/BlockedSignals.h"

namespace {

using Addresses = std::vector<sockaddr_storage>;

std::optional<Addresses> resolve(const std::string& name, int flags) {
  addrinfo hints{};
  hints.ai_socktype = SOCK_STREAM;
  hints.ai_flags = flags;
  addrinfo* list = nullptr;
  if (::getaddrinfo(name.c_str(), nullptr, &hints, &list) != 0) return std::nullopt;
  const std::unique_ptr<addrinfo, decltype(&::freeaddrinfo)> owned(list, &::freeaddrinfo);
  Addresses addresses;
  for (const addrinfo* one = list; one; one = one->ai_next) {
    std::memcpy(&addresses.emplace_back(), one->ai_addr, one->ai_addrlen);
  }
  return addresses;
}

struct Question {
  std::mutex mutex;
  std::condition_variable answered;
  std::optional<Addresses> answer;
};

}  // namespace

Addresses lookUpName(const std::string& name, std::chrono::milliseconds bound) {
  if (auto numeric = resolve(name, AI_NUMERICHOST)) return *numeric;
  // The resolver cannot be interrupted, so its thread owns what it needs and is left behind when it is too slow.
  const auto question = std::make_shared<Question>();
  {
    const BlockedSignals blocked;
    std::thread([question, name] {
      auto addresses = resolve(name, 0).value_or(Addresses());
      std::lock_guard lock(question->mutex);
      question->answer = std::move(addresses);
      question->answered.notify_all();
    }).detach();
  }
  std::unique_lock lock(question->mutex);
  question->answered.wait_for(lock, bound, [&] { return question->answer.has_value(); });
  return question->answer.value_or(Addresses());
}
