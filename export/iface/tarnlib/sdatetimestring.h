#pragma once

#include "tarnlib/sdate.h"
#include "tarnlib/sstring.h"
#include "tarnlib/tarnapi.h"

namespace TarnLibA500 {

/// The names of months, days, halves of the day and eras in the calling thread's locale.
///
/// The names come from the system, in the code page of the C locale, or in UTF-8 (SNarrowText); a character
/// that this does not have becomes "?". Names of months and days are asked of the system once for a locale and kept, those
/// of the first sixteen locales. Members may be called from any thread. A number out of range gives an empty name.
///
///     SetThreadLocale(MAKELCID(MAKELANGID(LANG_GERMAN, SUBLANG_GERMAN), SORT_DEFAULT));
///     SAnsiString month = SDateTimeString::GetLongMonth(3);     // "März"
///     SAnsiString day = SDateTimeString::GetShortDay(0);        // "So"
///     SAnsiString half = SDateTimeString::GetLongAM(false);     // the marker of the afternoon
class SDateTimeString {
  public:
    /// The name of a month, 1 to 12.
    TARN_API static SAnsiString GetLongMonth(int month);
    /// The short name of a month, 1 to 12.
    TARN_API static SAnsiString GetShortMonth(int month);
    /// The name of a day of the week, 0 (Sunday) to 6.
    TARN_API static SAnsiString GetLongDay(int day);
    /// The short name of a day of the week, 0 (Sunday) to 6.
    TARN_API static SAnsiString GetShortDay(int day);
    /// The marker of the morning, or with "false" of the afternoon. Empty in locales that have none.
    TARN_API static SAnsiString GetLongAM(bool morning);
    /// The short form of that marker.
    TARN_API static SAnsiString GetShortAM(bool morning);
    /// The era of a date. The system has no name for years before 1: empty.
    TARN_API static SAnsiString GetEra(const SDate& date);
};

}  // namespace TarnLibA500
