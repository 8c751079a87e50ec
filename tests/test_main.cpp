#include <gmock/gmock.h>

#include <clocale>

int main(int argc, char** argv) {
  std::setlocale(LC_ALL, "C.UTF-8");
  testing::InitGoogleMock(&argc, argv);
  return RUN_ALL_TESTS();
}
