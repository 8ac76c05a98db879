#pragma once

#include <gtest/gtest.h>

#include <clocale>

namespace tarntest {

/// Sets a C locale for a test and restores the one before.
class LocaleScope {
  public:
    explicit LocaleScope(const char* name, int category = LC_ALL)
        : category_(category), before_(std::setlocale(category, nullptr)) {
        EXPECT_NE(std::setlocale(category, name), nullptr) << name;
    }
    ~LocaleScope() { std::setlocale(category_, before_.c_str()); }

  private:
    int category_;
    std::string before_;
};

inline constexpr const char* kLocale1252 = "English_United States.1252";
inline constexpr const char* kLocale932 = "Japanese_Japan.932";

}  // namespace tarntest
