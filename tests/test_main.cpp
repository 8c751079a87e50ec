#include <gmock/gmock.h>

#include <clocale>

// Asked by the leak checker, in programs that have one.
extern "C" __attribute__((visibility("default"))) const char* __lsan_default_options();
const char* __lsan_default_options() {
  return "suppressions=" YMR_LSAN_SUPPRESSIONS;
}

int main(int argc, char** argv) {
  std::setlocale(LC_ALL, "C.UTF-8");
  testing::InitGoogleMock(&argc, argv);
  return RUN_ALL_TESTS();
}
