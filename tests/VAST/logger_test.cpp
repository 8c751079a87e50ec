#include <gmock/gmock.h>

#include <atomic>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "VAST/SKLogger.h"
#include "platform/foundation/NSException.h"

using testing::ElementsAre;

namespace {

class Logger : public testing::Test {
 protected:
  ~Logger() override { SKLogger::installSink(SKLogLevelNone, {}); }

  void record(int level) {
    SKLogger::installSink(level, [this](int at, std::string_view tag, std::string_view message) {
      lines_.push_back(std::string(SKLogger::levelNames()[static_cast<std::size_t>(at)]) + " " + std::string(tag) +
                       ": " + std::string(message));
    });
  }
  static void writeOneOfEach() {
    SKLogger::error("T", "e");
    SKLogger::warning("T", "w");
    SKLogger::info("T", "i");
    SKLogger::debug("T", "d");
  }

  std::vector<std::string> lines_;
};

}  // namespace

TEST_F(Logger, givesASinkTheMessagesUpToItsOwnLevel) {
  record(SKLogLevelWarning);
  writeOneOfEach();
  EXPECT_THAT(lines_, ElementsAre("error T: e", "warning T: w"));

  SKLogger::setLogLevel(SKLogLevelNone);  // a player's, which the sink does not hear of
  record(SKLogLevelDebug);
  writeOneOfEach();
  EXPECT_THAT(lines_,
              ElementsAre("error T: e", "warning T: w", "error T: e", "warning T: w", "info T: i", "debug T: d"));
  SKLogger::installSink(SKLogLevelNone, [](int, std::string_view, std::string_view) { FAIL(); });
  writeOneOfEach();
  SKLogger::installSink(SKLogLevelDebug, {});
  writeOneOfEach();
  EXPECT_THAT(lines_, testing::SizeIs(6));
  EXPECT_FALSE(SKLogger::reachesSink(SKLogLevelError));
}

TEST_F(Logger, refusesALevelThatDoesNotExist) {
  for (const int level : {0, 1, 2, 3, 4}) EXPECT_NO_THROW(SKLogger::setLogLevel(level));
  for (const int level : {-1, 5}) {
    EXPECT_THROW(SKLogger::setLogLevel(level), NSRangeException);
    EXPECT_THROW(SKLogger::installSink(level, {}), NSRangeException);
  }
  EXPECT_EQ(SKLogger::levelNamed("warning"), SKLogLevelWarning);
  EXPECT_EQ(SKLogger::levelNamed("Warning"), std::nullopt);
}

TEST_F(Logger, survivesASinkThatThrowsLogsOrReplacesItself) {
  SKLogger::installSink(SKLogLevelDebug, [this](int, std::string_view, std::string_view) {
    SKLogger::error("T", "from inside");
    record(SKLogLevelDebug);
    throw std::runtime_error("sink");
  });
  EXPECT_NO_THROW(SKLogger::error("T", "first"));
  SKLogger::error("T", "second");
  EXPECT_THAT(lines_, ElementsAre("error T: second"));
}

TEST_F(Logger, takesMessagesOfManyThreadsWhileTheSinkIsReplaced) {
  std::atomic<int> heard{0};
  std::vector<std::thread> writers;
  for (int i = 0; i < 4; ++i)
    writers.emplace_back([] {
      for (int n = 0; n < 500; ++n) SKLogger::info("T", "m");
    });
  for (int n = 0; n < 100; ++n) {
    SKLogger::installSink(SKLogLevelInfo, [&heard](int, std::string_view, std::string_view) { ++heard; });
  }
  for (auto& writer : writers) writer.join();
  const int before = heard;
  SKLogger::info("T", "m");
  EXPECT_EQ(heard, before + 1);
}
