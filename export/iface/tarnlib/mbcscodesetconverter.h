#pragma once

#include <cstdint>

#include "tarnlib/simplebuffer.h"
#include "tarnlib/sstring.h"
#include "tarnlib/tarnapi.h"

/// Text of the process's code page into bytes of a named code set and back.
///
/// What a side does not have becomes "?", or the nearest character the system offers. All members are static
/// and may be called from any thread.
///
///     SAnsiString name = MBCSCodesetConverter::ExplicitCodesetToT(bytes, MBCSCodesetConverter::UTF8);
///     SSimpleBuffer reply = MBCSCodesetConverter::TToExplicitCodeset(name, MBCSCodesetConverter::Windows932);
///     Send(reply, reply.getNBytes());
namespace TarnLibA500 {

/// Conversions between the process's code page and a named code set; all members are static.
class TARN_API MBCSCodesetConverter {
  public:
    /// The code sets by number.
    enum ExplicitCodeset {
        Current = 0,         ///< the process's code page: bytes as they are
        UTF8 = 1,            ///< UTF-8
        Windows1252 = 2,     ///< Windows code page 1252, western European
        Windows932 = 3,      ///< Windows code page 932, Japanese
        Windows1252Too = 4,  ///< deliberately the same as 2
        ISO8859_15 = 5       ///< Windows code page 28605
    };

    /// The text of zero-terminated bytes; a null pointer is an empty one. Illegal UTF-8 is traced, with the byte
    /// where it goes wrong, and gives an empty text; a value that is no code set is reported by assertion and
    /// does too.
    static SAnsiString ExplicitCodesetToT(const char* bytes, ExplicitCodeset codeset);
    /// The same for "count" bytes, zero bytes included.
    static SAnsiString ExplicitCodesetToT(const char* bytes, std::uint32_t count, ExplicitCodeset codeset);
    /// The same for a buffer's used bytes, zero bytes included.
    static SAnsiString ExplicitCodesetToT(const SSimpleBuffer& bytes, ExplicitCodeset codeset);
    /// The bytes of a text, zero bytes in it included. The used bytes are the text without a terminator; one zero
    /// byte stands behind them, so that the pointer is a C string.
    static SSimpleBuffer TToExplicitCodeset(const SAnsiString& text, ExplicitCodeset codeset);
};

}  // namespace TarnLibA500
