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
///     SSimpleBuffer reply = MBCSCodesetConverter::TToExplicitCodeset(name,
///     MBCSCodesetConverter::Windows932); Send(reply, reply.getNBytes());
namespace TarnLibA500 {

class TARN_API MBCSCodesetConverter {
  public:
    enum ExplicitCodeset {
        Current = 0,  ///< the process's code page: bytes as they are
        UTF8 = 1,
        Windows1252 = 2,
        Windows932 = 3,
        Windows1252Too = 4,  ///< deliberately the same as 2
        ISO8859_15 = 5       ///< Windows code page 28605
    };

    /// Zero-terminated bytes, so many bytes, or a buffer's used bytes; a null pointer is an empty text.
    /// Illegal UTF-8 is traced and gives an empty text; a value that is no code set is reported by assertion
    /// and does too.
    static SAnsiString ExplicitCodesetToT(const char* bytes, ExplicitCodeset codeset);
    static SAnsiString ExplicitCodesetToT(const char* bytes, std::uint32_t count, ExplicitCodeset codeset);
    static SAnsiString ExplicitCodesetToT(const SSimpleBuffer& bytes, ExplicitCodeset codeset);
    /// The used bytes are the text without a terminator; one zero byte stands behind them, so that the
    /// pointer is a C string.
    static SSimpleBuffer TToExplicitCodeset(const SAnsiString& text, ExplicitCodeset codeset);
};

}  // namespace TarnLibA500
