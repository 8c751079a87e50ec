#pragma once

#include <sys/socket.h>

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

// The addresses of hosts' names, found out on threads of their own: nobody who asks waits for a resolver. What a
// look-up brought stays known until a later one brings something else; one that fails changes nothing. Any thread.
class NameLookups : public std::enable_shared_from_this<NameLookups> {
 public:
  using Addresses = std::vector<sockaddr_storage>;
  // Takes as long as it likes; empty when there are none, or nobody knows.
  using Resolver = std::function<Addresses(const std::string& name)>;
  using Ended = std::function<void(bool found)>;

  // The process's, over the system's resolver.
  static std::shared_ptr<NameLookups> shared();
  // nil puts the system's back.
  static void setSharedForTests(std::shared_ptr<NameLookups> lookups);

  explicit NameLookups(Resolver resolver) : resolver_(std::move(resolver)) {}

  // What a number or "localhost" stands for, without a look-up; empty for any other name.
  static Addresses ofNumber(const std::string& name);

  // Best first; empty while nothing is known.
  Addresses known(const std::string& name) const;
  // Looks the name up, or joins the look-up of it that is under way. `ended`, which may be empty, is called on the
  // look-up's thread; on the caller's, with false, when none can be begun. It must only hand over.
  void start(const std::string& name, Ended ended);

 private:
  void end(const std::string& name, Addresses addresses);

  const Resolver resolver_;
  mutable std::mutex mutex_;  // for what follows
  std::map<std::string, Addresses> known_;
  std::map<std::string, std::vector<Ended>> underWay_;
};
