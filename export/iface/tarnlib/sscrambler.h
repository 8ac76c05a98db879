#pragma once

#include "tarnlib/simplebuffer.h"
#include "tarnlib/sstring.h"
#include "tarnlib/tarnapi.h"

namespace TarnLibA500 {

/// Bytes as printable text: SStringHelper's 64 symbols, four for three bytes, without padding.
class TARN_API SScrambler {
  public:
    /// Bytes as text. A null pointer with a count is reported by assertion and gives an empty text.
    static SAnsiString BinToAscii(const unsigned char* bytes, unsigned count);
    /// The way back. False, with an empty buffer, for another symbol and for a length that leaves one over.
    static bool AsciiToBin(const SAnsiString& text, SSimpleBuffer& bytes);
    /// The room that the text of a number of bytes needs, a terminator included; 0 when that passes 32 bits.
    static unsigned GetAsciiSize(unsigned bytes) noexcept;
};

}  // namespace TarnLibA500
