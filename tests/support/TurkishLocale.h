#pragma once

#include <gmock/gmock.h>

#include <clocale>
#include <cstdlib>
#include <filesystem>
#include <string>

// Turkish, as a host takes it over from its user with setlocale, while it lives: no dot on a capital I, a comma in
// numbers. Compiled for the purpose, since few machines have it.
class TurkishLocale {
 public:
  TurkishLocale() : before_(std::setlocale(LC_ALL, nullptr)) {
    const std::string folder = testing::TempDir() + "locales", compiled = folder + "/tr_TR.UTF-8";
    std::filesystem::create_directories(folder);
    ::setenv("LOCPATH", folder.c_str(), 1);
    if (!std::filesystem::exists(compiled)) {
      [[maybe_unused]] const int status = std::system(("localedef -f UTF-8 -i tr_TR '" + compiled + "' 2>&1").c_str());
    }
    isThere_ = std::setlocale(LC_ALL, "tr_TR.UTF-8") != nullptr;
  }
  TurkishLocale(const TurkishLocale&) = delete;
  TurkishLocale& operator=(const TurkishLocale&) = delete;
  ~TurkishLocale() { std::setlocale(LC_ALL, before_.c_str()); }

  bool isThere() const { return isThere_; }

 private:
  const std::string before_;
  bool isThere_;
};
