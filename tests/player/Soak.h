#pragma once

#include <malloc.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <optional>
#include <string>

#include "tests/player/AdDocument.h"
#include "tests/support/HTTPServer.h"
#include "tests/support/ScreenTest.h"

// An ad server in a process of its own, so that what it needs is not counted here. Its tag has one ad, of half a
// second.
class AdServerProcess {
 public:
  AdServerProcess() {
    int ends[2];
    EXPECT_EQ(pipe(ends), 0);
    process_ = fork();
    if (process_ == 0) serve(ends[1]);
    close(ends[1]);
    char url[100]{};
    EXPECT_GT(read(ends[0], url, sizeof url - 1), 0);
    close(ends[0]);
    tag_ = url;
  }
  AdServerProcess(const AdServerProcess&) = delete;
  AdServerProcess& operator=(const AdServerProcess&) = delete;
  ~AdServerProcess() {
    kill(process_, SIGKILL);
    waitpid(process_, nullptr, 0);
  }

  NSURL tag() const { return *NSURL::URLWithString(tag_); }

 private:
  [[noreturn]] static void serve(int answer) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    HTTPServer server;
    server.onOthers([](const HTTPServer::Request&) { return HTTPServer::Reply(); });
    server.onFile("/film/half.mp4", std::string(YMR_SAMPLES) + "/half.mp4", "video/mp4");
    server.on("/tag", adDocument({{"half"}}, {server.url("/film"), server.url("/track")}), "application/xml");
    const std::string url = server.url("/tag");
    if (write(answer, url.data(), url.size()) != static_cast<ssize_t>(url.size())) _exit(1);
    for (;;) pause();
  }

  pid_t process_ = 0;
  std::string tag_;
};

// Rounds of something, which may not leave more and more memory, threads and descriptors behind once the first rounds
// are over. With the environment variable of this name there are as many as it says, and the cost of a round is
// printed; else half a hundred, which say little of memory.
class Soak {
 public:
  explicit Soak(const char* variable) : asked_(std::getenv(variable)) {}

  int rounds() const { return asked_ ? std::atoi(asked_) : 50; }

  void roundIsOver() {
    if (++done_ < settled()) return;
    // What was taken down by other threads may still be going.
    int patience = first_ ? 300 : 100;
    runEventsUntil([&] {
      last_ = Belongings::now();
      return --patience < 0 || (first_ && last_.threads <= first_->threads && last_.files <= first_->files);
    });
    if (!first_) first_ = last_;
    EXPECT_LE(last_.threads, first_->threads + 3);
    EXPECT_LE(last_.files, first_->files + 3);
  }

  void isOver() const {
    const double bytes = static_cast<double>(last_.memory - first_->memory) / (rounds() - settled());
    std::cout << rounds() << " rounds: " << bytes << " bytes more a round from the " << settled() << "th on; threads "
              << first_->threads << " to " << last_.threads << ", descriptors " << first_->files << " to "
              << last_.files << ", heap " << first_->memory / 1024 << " to " << last_.memory / 1024 << " KiB\n";
#ifdef NDEBUG
    EXPECT_LT(bytes, asked_ ? 1000 : 50'000);
#endif
  }

 private:
  // Of this process.
  struct Belongings {
    std::ptrdiff_t memory, threads, files;

    static std::ptrdiff_t entries(const char* folder) {
      return std::distance(std::filesystem::directory_iterator(folder), std::filesystem::directory_iterator());
    }
    static Belongings now() {
      return {static_cast<std::ptrdiff_t>(mallinfo2().uordblks), entries("/proc/self/task"), entries("/proc/self/fd")};
    }
  };

  int settled() const {
    return asked_ ? 50 : 20;
  }

  const char* const asked_;
  int done_ = 0;
  std::optional<Belongings> first_;
  Belongings last_{};
};
