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

TEST(Logger, takesMessagesOfAnotherThreadWhileTheSinkIsReplaced) {
  std::atomic<int> heard{0};
  std::atomic<bool> isOver{false};
  std::thread writer([&] {
    while (!isOver) SKLogger::info("T", "m");
  });
  for (int n = 0; n < 100 || heard == 0; ++n) {
    SKLogger::installSink(SKLogLevelInfo, [&heard](int, std::string_view, std::string_view) { ++heard; });
  }
  isOver = true;
  writer.join();
  SKLogger::installSink(SKLogLevelNone, {});
}
