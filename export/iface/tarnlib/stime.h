#pragma once

#include <cstdint>
#include <limits>

#include "tarnlib/sstring.h"
#include "tarnlib/stimespan.h"
#include "tarnlib/tarnapi.h"

// A macro of <windows.h>, which would give the member another name.
#undef GetCurrentTime

namespace TarnLibA500 {

class STimeZone;

/// A time of day: one signed 32-bit count of milliseconds since midnight, universal time.
///
/// Without a date there is no daylight saving: a zone counts with its standard offset, the local zone with
/// that of the present year, and times wrap at midnight. Use SDateTime where the date matters. A plain value
/// of 4 bytes, to be copied freely; different objects may be used by different threads. Nothing throws: a
/// time that does not exist is reported by assertion (unit "stime", text "false") and is the invalid time;
/// reading that is reported, too, and gives 0.
///
///     const STimeZone& here = STimeZone::TZ_Local();
///     STime opening(8, 30, 0, 0, here);
///     STime closing = opening + STimeSpan(0, 9, 15, 0, 0);
///     closing.GetHour(here);                                            // 17
///     if (STimeComparison(STime::GetCurrentTime(), opening, here) < 0) ...   // earlier in the day, here
///     SAnsiString sign = opening.Format("h:mm tt", here);               // "8:30 AM"
class STime {
  public:
    /// The count of the invalid time.
    static constexpr std::int32_t InvalidTime = std::numeric_limits<std::int32_t>::min();

    /// The invalid time.
    constexpr STime() noexcept : milliseconds_(InvalidTime) {}
    /// From a clock in the zone: hour 0 to 23, minute and second 0 to 59, millisecond 0 to 999.
    TARN_API STime(unsigned char hour, unsigned char minute, unsigned char second, unsigned short millisecond,
                   const STimeZone& zone);
    /// From milliseconds since midnight in universal time; the invalid time unless they are 0 to 86,399,999.
    static constexpr STime FromMilliseconds(std::int32_t milliseconds) noexcept {
        STime time;
        if (milliseconds >= 0 && milliseconds < kMillisecondsPerDay) time.milliseconds_ = milliseconds;
        return time;
    }
    /// Constructs the time anew; false when it is the invalid one now.
    TARN_API bool Set(unsigned char hour, unsigned char minute, unsigned char second,
                      unsigned short millisecond, const STimeZone& zone);

    /// False for the invalid time.
    constexpr bool IsValid() const noexcept { return milliseconds_ != InvalidTime; }

    /// The hour that a clock in the zone shows, 0 to 23.
    TARN_API unsigned char GetHour(const STimeZone& zone) const;
    /// The minute that a clock in the zone shows, 0 to 59.
    TARN_API unsigned char GetMinute(const STimeZone& zone) const;
    /// The second, 0 to 59: zones differ by whole minutes, so that it needs none.
    TARN_API unsigned char GetSecond() const;
    /// The millisecond, 0 to 999.
    TARN_API unsigned short GetMillisecond() const;
    /// Hour, minute and second at once; three zeros for the invalid time.
    TARN_API void GetHourMinuteSecond(unsigned char& hour, unsigned char& minute, unsigned char& second,
                                      const STimeZone& zone) const;
    /// Milliseconds since midnight in universal time, 0 to 86,399,999.
    TARN_API long GetTotalMilliseconds() const;
    /// The time by a pattern of letters (see SDateTime::Format); the letters of dates render nothing.
    TARN_API SAnsiString Format(const char* pattern, const STimeZone& zone) const;

    /// The present time of day.
    TARN_API static STime GetCurrentTime();
    /// What the macro makes of that name where <windows.h> comes after this header.
    static STime GetTickCount() { return GetCurrentTime(); }

    /// Moves the time on, past midnight to the beginning of the day; an invalid time stays invalid.
    TARN_API STime& operator+=(const STimeSpan& span) noexcept;
    /// The same backwards.
    TARN_API STime& operator-=(const STimeSpan& span) noexcept;
    /// The time a span later, as += makes it.
    STime operator+(const STimeSpan& span) const noexcept { return STime(*this) += span; }
    /// The time a span earlier, as -= makes it.
    STime operator-(const STimeSpan& span) const noexcept { return STime(*this) -= span; }
    /// True for the same moment of the day; which one comes first depends on the zone (STimeComparison).
    constexpr bool operator==(const STime&) const noexcept = default;

  private:
    friend class SDateTime;
    friend struct ZoneAccess;
    static constexpr std::int32_t kMillisecondsPerDay = 86'400'000;

    std::int32_t milliseconds_;
};

static_assert(sizeof(STime) == 4);

/// Compares what clocks in the zone show: negative, zero or positive as a is earlier, the same or later in
/// the day. An invalid time is reported by assertion and comes before all others.
TARN_API int STimeComparison(const STime& a, const STime& b, const STimeZone& zone);

}  // namespace TarnLibA500
