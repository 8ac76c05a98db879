#pragma once

#include <utility>

#include "tarnlib/sstring.h"

namespace TarnLibA500 {

/// A text whose characters are overwritten when it goes, unless somebody else shares them.
class SecretString : public SAnsiString {
  public:
    explicit SecretString(SAnsiString&& text) noexcept : SAnsiString(std::move(text)) {}
    ~SecretString() { releaseBuffer(true); }
    SecretString(const SecretString&) = delete;
    SecretString& operator=(const SecretString&) = delete;
};

}  // namespace TarnLibA500
