#pragma once

#include "tarnlib/tarnapi.h"

namespace TarnLibA500 {

/// The locale that names of months, days and the like are taken from.
///
/// It is the system's locale of the calling thread, which a thread begins with the user's. Any thread may ask
/// for its own.
///
///     SetThreadLocale(0x0407);                      // German
///     SLocale::GetCurrentThreadLocale();            // 0x0407
///     SDateTimeString::GetLongDay(1);               // "Montag"
class SLocale {
  public:
    /// The locale identifier of the calling thread.
    TARN_API static unsigned long GetCurrentThreadLocale() noexcept;
};

}  // namespace TarnLibA500
