#pragma once

#include "tarnlib/sstring.h"
#include "tarnlib/tarnapi.h"

struct _EXCEPTION_POINTERS;

/// The calls that led to a place, as text.
///
/// A line a frame, the innermost first: a number, the module, the nearest exported function at or below the
/// address (the truth for exported functions, a hint for others), how far behind its beginning the call
/// stands, and the address. Any thread may walk its own stack.
///
///     SAnsiString dump;
///     SStackWalk::StackWalkAll(dump, 0);
///     //  0 tarnlib-5-0.dll TarnLibA500::SFile::open(...)+0x4f (0x6f44131f)
namespace TarnLibA500 {

/// Walks the stack.
class TARN_API SStackWalk {
  public:
    /// Appends the caller's stack, without its innermost "skip" frames, and returns true. When the stack
    /// cannot be walked, "Could not generate the stack dump because of an error: " and the system's text is
    /// appended instead.
    static bool StackWalkAll(SAnsiString& text, int skip);
    /// The same for the place where an exception of the system was raised.
    static bool StackWalkAll(SAnsiString& text, int skip, _EXCEPTION_POINTERS* exception);
};

}  // namespace TarnLibA500
