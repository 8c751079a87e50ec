#include "platform/systemconfiguration/NameLookups.h"

#include <netdb.h>

#include <cstring>
#include <system_error>
#include <thread>
#include <utility>

#include "platform/dispatch/BlockedSignals.h"

namespace {

using Addresses = NameLookups::Addresses;

constexpr std::size_t underWayLimit = 16;  // threads, when a resolver is silent
constexpr std::size_t knownLimit = 256;

Addresses resolve(const std::string& name, int flags) {
  addrinfo hints{};
  hints.ai_socktype = SOCK_STREAM;
  hints.ai_flags = flags;
  addrinfo* list = nullptr;
  if (::getaddrinfo(name.c_str(), nullptr, &hints, &list) != 0) return {};
  const std::unique_ptr<addrinfo, decltype(&::freeaddrinfo)> owned(list, &::freeaddrinfo);
  Addresses addresses;
  for (const addrinfo* one = list; one; one = one->ai_next) {
    std::memcpy(&addresses.emplace_back(), one->ai_addr, one->ai_addrlen);
  }
  return addresses;
}

struct Shared {
  std::mutex mutex;
  std::shared_ptr<NameLookups> lookups;
};

// Never destroyed: look-ups may still be under way while the process ends.
Shared& place() {
  static auto* const instance = new Shared;
  return *instance;
}

}  // namespace

std::shared_ptr<NameLookups> NameLookups::shared() {
  std::lock_guard lock(place().mutex);
  auto& lookups = place().lookups;
  if (!lookups) lookups = std::make_shared<NameLookups>([](const std::string& name) { return resolve(name, 0); });
  return lookups;
}

void NameLookups::setSharedForTests(std::shared_ptr<NameLookups> lookups) {
  std::lock_guard lock(place().mutex);
  place().lookups.swap(lookups);
}

Addresses NameLookups::ofNumber(const std::string& name) {
  return resolve(name == "localhost" ? "127.0.0.1" : name, AI_NUMERICHOST);
}

Addresses NameLookups::known(const std::string& name) const {
  std::lock_guard lock(mutex_);
  const auto found = known_.find(name);
  return found == known_.end() ? Addresses() : found->second;
}

void NameLookups::start(const std::string& name, Ended ended) {
  std::unique_lock lock(mutex_);
  const bool joins = underWay_.contains(name);
  if (!joins && underWay_.size() >= underWayLimit) {
    lock.unlock();
    if (ended) ended(false);
    return;
  }
  auto& waiting = underWay_[name];
  if (ended) waiting.push_back(std::move(ended));
  lock.unlock();
  if (joins) return;
  try {
    // A resolver cannot be interrupted, so that its thread owns what it needs and nobody waits for it.
    const BlockedSignals blocked;
    std::thread([self = shared_from_this(), name] { self->end(name, self->resolver_(name)); }).detach();
  } catch (const std::system_error&) {
    end(name, {});
  }
}

void NameLookups::end(const std::string& name, Addresses addresses) {
  const bool found = !addresses.empty();
  std::unique_lock lock(mutex_);
  if (found && known_.size() >= knownLimit) known_.clear();
  if (found) known_[name] = std::move(addresses);
  const auto waiting = underWay_.extract(name);
  lock.unlock();
  for (const Ended& ended : waiting.mapped()) ended(found);
}
