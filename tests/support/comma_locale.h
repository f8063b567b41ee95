// A C library locale with a decimal comma.
#pragma once

#include <clocale>
#include <cstdlib>
#include <string>

#include "support/temporary_folder.h"

namespace support {

// Sets it for as long as it lives, where the system has one or can make one.
class CommaLocale {
 public:
  CommaLocale() : before_(std::setlocale(LC_ALL, nullptr)) {
#ifndef _WIN32
    // Systems often carry the sources of locales only.
    const std::string command =
        "localedef -i de_DE -f UTF-8 '" + folder_.file("de_DE.UTF-8") + "' >/dev/null 2>&1";
    if (std::system(command.c_str()) == 0) ::setenv("LOCPATH", folder_.path().c_str(), 1);
#endif
    for (const char* name : {"de_DE.UTF-8", "de_DE.utf8", "de_DE", "fr_FR.UTF-8", "German"}) {
      isSet_ = std::setlocale(LC_ALL, name) != nullptr &&
               std::string(std::localeconv()->decimal_point) == ",";
      if (isSet_) return;
    }
  }
  CommaLocale(const CommaLocale&) = delete;
  CommaLocale& operator=(const CommaLocale&) = delete;
  ~CommaLocale() {
    std::setlocale(LC_ALL, before_.c_str());
#ifndef _WIN32
    ::unsetenv("LOCPATH");
#endif
  }

  bool isSet() const { return isSet_; }

 private:
  TemporaryFolder folder_;
  std::string before_;
  bool isSet_ = false;
};

}  // namespace support

// Leaves the test where there is no such locale.
#define SKIP_WITHOUT_COMMA_LOCALE(locale) \
  if (!(locale).isSet())                  \
  GTEST_SKIP() << "this system has no locale with a decimal comma and cannot make one"
