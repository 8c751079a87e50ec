#include <gmock/gmock.h>

#include <atomic>
#include <stdexcept>
#include <thread>

#include "VAST/SKLogger.h"
#include "platform/foundation/NSException.h"
#include "tests/VAST/Parser/RecordedLog.h"

using testing::ElementsAre;

TEST(Logger, givesASinkTheMessagesUpToItsOwnLevelWhateverAPlayersIs) {
  const RecordedLog log(SKLogLevelWarning);
  SKLogger::setLogLevel(SKLogLevelNone);
  const auto writeOneOfEach = [] {
    SKLogger::error("T", "e");
    SKLogger::warning("T", "w");
    SKLogger::info("T", "i");
    SKLogger::debug("T", "d");
  };
  writeOneOfEach();
  EXPECT_THAT(log.lines(), ElementsAre("error T: e", "warning T: w"));
  SKLogger::installSink(SKLogLevelNone, [](int, std::string_view, std::string_view) { FAIL(); });
  writeOneOfEach();
  SKLogger::installSink(SKLogLevelDebug, {});
  EXPECT_FALSE(SKLogger::reachesSink(SKLogLevelError));
  for (const int level : {-1, 5}) {
    EXPECT_THROW(SKLogger::setLogLevel(level), NSRangeException);
    EXPECT_THROW(SKLogger::installSink(level, {}), NSRangeException);
  }
}

TEST(Logger, survivesASinkThatThrowsLogsOrReplacesItself) {
  std::optional<RecordedLog> next;
  SKLogger::installSink(SKLogLevelDebug, [&next](int, std::string_view, std::string_view) {
    SKLogger::error("T", "from inside");
    next.emplace();
    throw std::runtime_error("sink");
  });
  EXPECT_NO_THROW(SKLogger::error("T", "first"));
  SKLogger::error("T", "second");
  EXPECT_THAT(next->lines(), ElementsAre("error T: second"));
}

TEST(Logger, takesMessagesOfManyThreadsWhileTheSinkIsReplaced) {
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
  SKLogger::installSink(SKLogLevelNone, {});
}
