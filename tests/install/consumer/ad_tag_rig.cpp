// A program without a screen that uses the ad-tag library alone.
#include <VAST/NSString_UrlEncode.h>
#include <VAST/SKLogger.h>
#include <platform/dispatch/PlainRunLoop.h>

#include <cstdio>

int main() {
  PlainRunLoop loop;
  SKLogger::setLogLevel(0);
  const bool encoded = urlencode("a b/c") == "a+b%2Fc";
  const bool ran = [&loop] {
    bool done = false;
    loop.post([&done] { done = true; });
    return loop.runUntil([&done] { return done; }, std::chrono::seconds(10));
  }();
  std::printf("encoded %d, ran %d\n", encoded, ran);
  return encoded && ran ? 0 : 1;
}
