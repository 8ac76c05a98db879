#pragma once

#include <cstdint>

#include "security/secretbytes.h"
#include "strings/characters/mbchar.h"
#include "tarnlib/scrypt.h"
#include "tarnlib/sstring.h"

/// Secret texts of the process's code page as UTF-8 and back. No copy of them is left anywhere; zero bytes are
/// characters like others.
namespace TarnLibA500 {

class Utf8Text {
  public:
    /// What is no character becomes "?", which is traced. Throws BadAllocation.
    Utf8Text(const char* text, std::uint32_t length) : Utf8Text(mbchar::CodePage::Current(), text, length) {}
    /// The same.
    explicit Utf8Text(const SAnsiString& text) : Utf8Text(text.getString(), text.getLength()) {}
    /// Valid as long as the object.
    SCrypt::ByteStr bytes() noexcept { return {bytes_.data(), bytes_.size()}; }

  private:
    Utf8Text(const mbchar::CodePage& page, const char* text, std::uint32_t length);

    SecretBytes bytes_;
};

/// What the code page does not have becomes "?", which is traced. False, with an empty text, for what is no UTF-8.
/// Throws BadAllocation.
bool TextFromUtf8(const SCrypt::ByteStr& utf8, SAnsiString& text);

}  // namespace TarnLibA500
