#pragma once

#include <unistd.h>

#include <utility>

// Owns an open descriptor, or nothing (-1). A plain value; moves only.
class Descriptor {
 public:
  Descriptor() = default;
  explicit Descriptor(int number) : number_(number) {}
  Descriptor(Descriptor&& other) noexcept : number_(other.release()) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    if (this != &other) reset(other.release());
    return *this;
  }
  ~Descriptor() { reset(); }

  int get() const { return number_; }
  explicit operator bool() const { return number_ >= 0; }
  int release() { return std::exchange(number_, -1); }
  void reset(int number = -1) {
    if (number_ >= 0) ::close(number_);
    number_ = number;
  }

 private:
  int number_ = -1;
};
