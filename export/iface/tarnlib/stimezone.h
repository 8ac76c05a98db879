#pragma once

#include <cstdint>

#include "tarnlib/sstring.h"
#include "tarnlib/stimespan.h"
#include "tarnlib/tarnapi.h"

namespace TarnLibA500 {

class SDateTime;

/// A time zone: a standard offset and, where there is one, a rule of daylight saving.
///
/// Offsets are universal time minus local time: a zone east of Greenwich has a negative one. TZ_UTC and
/// TZ_Local are there from the start to the very end of the process and are recognised by their address. A
/// zone never changes and may be used by any thread; the local zone asks the system for the year in question
/// each time (at most once in a second and year), so that a change of the system's zone shows while the
/// process runs.
///
///     const STimeZone& here = STimeZone::TZ_Local();
///     const STimeZone berlin("CET,-60,CEST,-120,M3.5.0/02:00,M10.5.0/03:00");
///     SDateTime now = SDateTime::GetCurrentDateTime();
///     SAnsiString there = now.Format("HH:mm", berlin);
///     if (berlin.InDST(now)) ...
///     berlin.UTCOffset(now).GetTotalMinutes();             // -60 or -120
class STimeZone {
  public:
    /// From the text
    ///
    ///     NAME,offset[,DSTNAME,offset,Mm.w.d/hh:mm,Mm.w.d/hh:mm]
    ///
    /// with offsets in minutes (below a day), names of 1 to 95 bytes (any of the system's, in UTF-8 too), and
    /// the switches to and from daylight saving time: month m (1 to 12), the w-th (1 to 4, 5: the last) weekday
    /// d (0 is Sunday) in it, at the time that clocks show just before (00:00 to 24:00). Any other text is
    /// reported by assertion and gives UTC.
    TARN_API explicit STimeZone(const SAnsiString& rules);

    /// Universal time, with the rules "UTC,0".
    TARN_API static const STimeZone& TZ_UTC() noexcept;
    /// The zone of the system. A copy of it follows the system, too, but is not recognised as the local zone
    /// where that is asked for.
    TARN_API static const STimeZone& TZ_Local() noexcept;

    /// The text that makes such a zone; for the local zone, its rules in the present year.
    TARN_API SAnsiString GetRules() const;
    /// Universal time minus local time at an instant; at an invalid one, the zone's standard offset.
    TARN_API STimeSpan UTCOffset(const SDateTime& utc) const;
    /// True when daylight saving time is in force at an instant; false at an invalid one.
    TARN_API bool InDST(const SDateTime& utc) const;

  private:
    friend struct ZoneAccess;

    struct Switch {
        unsigned char month;  // 1 to 12
        unsigned char week;   // 1 to 5
        unsigned char day;    // of the week, 0 is Sunday
        std::int16_t minute;  // of the day, up to 1440
    };
    enum class Kind : unsigned char { Fixed, Daylight, System };
    static constexpr std::uint32_t kNameBytes = 96;

    constexpr explicit STimeZone(Kind kind) noexcept : kind_(kind) {}
    bool ReadRules(const SAnsiString& rules) noexcept;

    // No strings: UTC and the local zone need no construction, and nothing is left when the library goes.
    char standardName_[kNameBytes] = "UTC";
    char daylightName_[kNameBytes] = "";
    Kind kind_ = Kind::Fixed;
    Switch toDaylight_{};
    Switch toStandard_{};
    std::int16_t standardMinutes_ = 0;
    std::int16_t daylightMinutes_ = 0;
};

}  // namespace TarnLibA500
