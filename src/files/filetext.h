#pragma once

#include <cstdint>

#include "strings/characters/mbchar.h"
#include "tarnlib/sfile.h"
#include "tarnlib/simplebuffer.h"
#include "tarnlib/sstring.h"

namespace TarnLibA500 {

/// Makes narrow text of the bytes of a file, which come in pieces of any size. Bytes that are narrow text as they
/// stand are kept: those of the native code page, and all of them where narrow text is UTF-8, also what is no
/// character of it.
class TextDecoder {
  public:
    /// "expectedBytes" are reserved at once; the text can become longer.
    TextDecoder(SFile::FileEncoding encoding, std::uint32_t expectedBytes);
    void add(const char* bytes, std::uint32_t count);
    /// The text. Empty when the bytes were converted and are not valid UTF-8.
    SAnsiString finish();
    /// False from finish on when the bytes were said to be UTF-8, and are not.
    bool isLegal() const noexcept { return isLegal_; }
    /// How many bytes were valid: where the first byte stands that is no character.
    std::uint32_t validBytes() const noexcept { return validBytes_; }

  private:
    void check();
    void addUtf8(const unsigned char* at, const unsigned char* end);
    const unsigned char* addPart(const unsigned char* at, const unsigned char* end);
    void keepPending(const unsigned char* at, const unsigned char* end);
    void completePending(const unsigned char*& at, const unsigned char* end);
    void encode(const wchar_t* units, std::uint32_t count);

    static constexpr std::uint32_t kMaxUtf8Bytes = 4;

    const mbchar::CodePage& page_;
    const bool isKept_;
    const bool isChecked_;
    SAnsiString text_;
    bool isLegal_ = true;
    std::uint32_t validBytes_ = 0;
    std::uint32_t pendingBytes_ = 0;  // the beginning of a character that a piece ended in
    unsigned char pending_[kMaxUtf8Bytes];
};

/// True when bytes are their own narrow text, with nothing in them that is no character.
bool IsAsItIs(const char* bytes, std::uint32_t count, SFile::FileEncoding encoding);

/// A code-page text in UTF-8, without a terminator. What stands between two zero bytes and is not valid in the
/// code page is left out; "isWhole" says whether something was.
SSimpleBuffer EncodeFileText(const SAnsiString& text, bool& isWhole);

}  // namespace TarnLibA500
