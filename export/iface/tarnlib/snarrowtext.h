#pragma once

#include "tarnlib/tarnapi.h"

/// What the bytes of narrow text mean in this process: the code page of the C locale, or UTF-8.
///
/// It holds for every `SAnsiString` and for all that takes or gives one: where other headers say "the process's
/// code page", it is UTF-8 after `UseUtf8`. The choice is made once, at the start,
/// before other threads run and before narrow texts are made: texts that are there already keep their bytes and
/// are read by the new rules from then on, and an operation that another thread is in the middle of may work by
/// either. Nothing crashes then, and nothing is written beyond its room.
///
///     int main() {
///         SNarrowText::UseUtf8();
///         SAnsiString name("\xF0\x9F\x98\x80.txt");   // five characters
///     }
namespace TarnLibA500 {

/// The process's choice of what narrow text is; all members are static.
class TARN_API SNarrowText {
  public:
    /// From now on narrow text is UTF-8, whatever the C locale: a character is a well-formed sequence of one to
    /// four bytes, and a byte that belongs to none is a character by itself: it stays in its text as it is, is found
    /// by no search, and becomes "?" in conversions. Throws the standard allocation failure, and nothing has
    /// changed, when there is no memory for it.
    static void UseUtf8();
    /// From now on narrow text is in the code page of the C locale's LC_CTYPE category, which follows
    /// setlocale. So it is from the start.
    static void FollowLocale() noexcept;
    /// True when narrow text is UTF-8 by UseUtf8.
    static bool IsUtf8() noexcept;
};

}  // namespace TarnLibA500
