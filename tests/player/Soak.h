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

#include "ads/core/SKVASTMediaFilePicker.h"
#include "platform/avfoundation/engine/MediaEngine.h"
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

// Rounds of something with real media in a window, which may not leave more and more memory, threads and descriptors
// behind once the first rounds are over.
class Soak : public testing::Test {
 protected:
  Soak() {
    SKVASTMediaFilePicker::setProbeHost("127.0.0.1");
    MediaEngineSettings::shared().audio = MediaEngineSettings::Audio::none;
    window.setRootViewController(root);
    window.makeKeyAndVisible();
  }
  ~Soak() override { MediaEngineSettings::shared() = {}; }

  // With the environment variable of this name there are as many rounds as it says, and the cost of one is printed;
  // else half a hundred, which say little of memory.
  void run(const char* variable, const std::function<void(int number)>& round) {
    const char* const asked = std::getenv(variable);
    const int rounds = asked ? std::atoi(asked) : 50, settled = asked ? 50 : 20;
    std::optional<Belongings> first;
    Belongings last{};
    for (int number = 0; number < rounds; ++number) {
      SCOPED_TRACE(number);
      ASSERT_NO_FATAL_FAILURE(round(number));
      if (number + 1 < settled) continue;
      // What was taken down by other threads may still be going.
      runEventsUntil([&, patience = first ? 300 : 100]() mutable {
        last = Belongings::now();
        return --patience < 0 || (first && last.threads <= first->threads && last.files <= first->files);
      });
      if (!first) first = last;
      EXPECT_LE(last.threads, first->threads + 3);
      EXPECT_LE(last.files, first->files + 3);
    }
    const double bytes = static_cast<double>(last.memory - first->memory) / (rounds - settled);
    std::cout << rounds << " rounds: " << bytes << " bytes more a round from the " << settled << "th on; threads "
              << first->threads << " to " << last.threads << ", descriptors " << first->files << " to " << last.files
              << ", heap " << first->memory / 1024 << " to " << last.memory / 1024 << " KiB\n";
#ifdef NDEBUG
    EXPECT_LT(bytes, asked ? 1000 : 50'000);
#endif
  }

  QGuiApplication& application = screenApplication();
  const AdServerProcess ads;
  UIWindow window{CGSize{320, 180}, screenGraphics()};
  const std::shared_ptr<UIViewController> root = std::make_shared<UIViewController>();

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
};
