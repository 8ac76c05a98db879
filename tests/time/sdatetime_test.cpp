#include "tarnlib/sdatetime.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <limits>
#include <sstream>
#include <string>

#include <windows.h>

#include "support/assert_recorder.h"
#include "support/case_file.h"
#include "tarnlib/sdatetimeconv.h"

using namespace TarnLibA500;

namespace {

const STimeZone& utc = STimeZone::TZ_UTC();
const STimeZone& local = STimeZone::TZ_Local();
const STimeZone east("IST,-330");
constexpr const char* kOneSign =
    "((nDays >= 0) && (nHours >= 0) && (nMinutes >= 0) && (nSeconds >= 0) && (nMilliseconds >= 0)) || "
    "((nDays <= 0) && (nHours <= 0) && (nMinutes <= 0) && (nSeconds <= 0) && (nMilliseconds <= 0))";
constexpr const char* kIso = "yyyy-MM-dd HH:mm:ss.SS";

/// Numbers as one text, so that none of them can stand in for another.
template <class... Numbers>
std::string Listed(Numbers... numbers) {
    std::string list;
    ((list += (list.empty() ? "" : " ") + std::to_string(numbers)), ...);
    return list;
}

std::string PartsOf(const SDateTime& value) {
    return Listed(value.GetYear(utc), value.GetMonth(utc), value.GetDay(utc), value.GetDayOfWeek(utc),
                  value.GetHour(utc), value.GetMinute(utc), value.GetSecond(), value.GetMillisecond());
}

SDateTime At(const char* text) {
    SDateTime value;
    EXPECT_TRUE(StringToDate(text, value, utc)) << text;
    return value;
}

}  // namespace

TEST(TimeSpan, IsTheSumOfItsComponents) {
    for (const auto& fields : tarntest::ReadCases("time/date_spans.txt")) {
        std::istringstream parts(fields[0]);
        long d, h, m, s, ms;
        parts >> d >> h >> m >> s >> ms;
        tarntest::AssertRecorder recorder;
        STimeSpan span;
        span.Set(d, h, m, s, ms);
        EXPECT_EQ(recorder.sawLast("stime", kOneSign), fields[2] == "-") << fields[0];
        const long long total = std::stoll(fields[1]);
        EXPECT_EQ(Listed(span.GetTotalMilliseconds(), span.GetTotalSeconds(), span.GetTotalMinutes(),
                         span.GetTotalHours()),
                  Listed(total, total / 1000, total / 60'000, total / 3'600'000));
        if (fields[2] == "-") continue;
        EXPECT_EQ(Listed(span.GetDays(), span.GetHours(), span.GetMinutes(), span.GetSeconds(),
                         span.GetMilliseconds()),
                  fields[2]);
    }
}

TEST(Time, ShowsWhatItWasBuiltFrom) {
    const STimeZone west("NST,210,NDT,150,M3.2.0/02:00,M11.1.0/02:00");
    const STime time(1, 2, 3, 4, east);
    EXPECT_EQ(time.GetTotalMilliseconds(), ((19 * 60 + 32) * 60 + 3) * 1000 + 4);  // the day before
    EXPECT_EQ(time.Format("H:mm:ss.SS yyyy", east), "1:02:03.004 ");
    EXPECT_EQ(time.Format("HH:mm", west), "16:02");  // always standard time
    unsigned char h, m, s;
    time.GetHourMinuteSecond(h, m, s, east);
    EXPECT_EQ(
        Listed(time.GetHour(east), time.GetMinute(east), time.GetSecond(), time.GetMillisecond(), h, m, s),
        "1 2 3 4 1 2 3");
}

TEST(Time, WrapsAtMidnightAndComparesWhatClocksShow) {
    const STime late(23, 59, 59, 999, utc);
    const STime midnight(0, 0, 0, 0, utc);
    EXPECT_EQ(late + STimeSpan(3, 0, 0, 0, 1), midnight);
    EXPECT_EQ(midnight - STimeSpan(0, 0, 0, 0, 1), late);
    EXPECT_FALSE((STime() + STimeSpan(1, 0, 0, 0, 0)).IsValid() ||
                 STime::FromMilliseconds(86'400'000).IsValid());
    EXPECT_LT(STimeComparison(midnight, late, utc), 0);
    EXPECT_GT(STimeComparison(midnight, late, east), 0);
    tarntest::AssertRecorder recorder;
    EXPECT_LT(STimeComparison(STime(), midnight, east), 0);
    EXPECT_TRUE(recorder.sawLast("stime", "IsValid()"));
}

TEST(DateTime, CarriesBetweenDateAndTime) {
    const SDateTime newYear(2025, 1, 1, 2, 0, 0, 7, east);
    EXPECT_EQ(newYear, SDateTime(SDate(2024, 12, 31), STime(20, 30, 0, 7, utc)));
    EXPECT_EQ(PartsOf(newYear), "2024 12 31 2 20 30 0 7");
    EXPECT_EQ(Listed(newYear.GetHour(east), newYear.GetMinute(east), newYear.GetDayOfWeek(east)), "2 0 3");
    short year;
    unsigned char month, day, hour, minute, second;
    unsigned short millisecond;
    newYear.GetDateTime(year, month, day, hour, minute, second, millisecond, utc);
    EXPECT_EQ(Listed(year, month, day, hour, minute, second, millisecond), "2024 12 31 20 30 0 7");
}

TEST(DateTime, CountsFromOneInstantToAnother) {
    for (const auto& fields : tarntest::ReadCases("time/date_sums.txt")) {
        const SDateTime from = At(fields[0].c_str()), to = At(fields[2].c_str());
        const auto span = STimeSpan::FromMilliseconds(std::stoll(fields[1]));
        EXPECT_TRUE(from + span == to && to - span == from && to - from == span) << fields[0];
        EXPECT_TRUE(span < STimeSpan() ? to < from : from < to) << fields[0];
    }
    const SDateTime leapDay = At("2024-02-29T23:59:59.999");
    const auto longest = STimeSpan::FromMilliseconds(std::numeric_limits<long long>::min());
    EXPECT_FALSE((leapDay + longest).IsValid() || (leapDay - longest).IsValid());
    EXPECT_TRUE(longest + longest == longest && longest.GetDays() == -2147483647 - 1);
    EXPECT_TRUE(SDateTime() < At("0001-01-01") && SDateTime() == SDateTime());
}

TEST(DateTime, TakesSecondsAndOleDates) {
    for (const auto& fields : tarntest::ReadCases("time/date_numbers.txt")) {
        const bool isOle = fields[0] == "o";
        const double ole = std::strtod(fields[1].c_str(), nullptr);
        tarntest::AssertRecorder recorder;
        const SDateTime value = isOle ? SDateTime(ole, east) : SDateTime(std::stoll(fields[1]), east);
        EXPECT_EQ(value.IsValid(), !fields[2].empty()) << fields[1];
        EXPECT_EQ(recorder.count(), isOle && fields[2].empty() ? 1U : 0U) << fields[1];
        if (!value.IsValid()) continue;
        EXPECT_EQ(value.Format(kIso, isOle ? east : utc), fields[2].c_str());
        if (isOle) EXPECT_NEAR(value.GetOleDate(east), ole, 1e-9);
    }
}

TEST(DateTime, TakesAndGivesPartsOfTheSystem) {
    const SDateTime value(2024, 2, 29, 23, 59, 58, 997, east);
    SYSTEMTIME parts;
    ASSERT_TRUE(value.GetSYSTEMTIME(&parts, east));
    EXPECT_EQ(Listed(parts.wYear, parts.wMonth, parts.wDayOfWeek, parts.wDay, parts.wHour, parts.wMinute,
                     parts.wSecond, parts.wMilliseconds),
              "2024 2 4 29 23 59 58 997");
    EXPECT_EQ(SDateTime(&parts, east), value);
    const struct tm runtime = sicSDateTimeToTm(&value, east);
    EXPECT_EQ(Listed(runtime.tm_year, runtime.tm_mon, runtime.tm_mday, runtime.tm_hour, runtime.tm_min,
                     runtime.tm_sec, runtime.tm_wday, runtime.tm_yday, runtime.tm_isdst),
              "124 1 29 23 59 58 4 59 0");
    EXPECT_EQ(SDateTime(&runtime, east) + STimeSpan(0, 0, 0, 0, 997), value);
    EXPECT_EQ(sicSDateTimeToTm(&value).tm_hour, 18);
    const STimeZone berlin("CET,-60,CEST,-120,M3.5.0/02:00,M10.5.0/03:00");
    const SDateTime summer = At("2024-07-01");
    EXPECT_EQ(sicSDateTimeToTm(&summer, berlin).tm_isdst, 1);
    const SDateTime ancient(-44, 3, 15, 12, 0, 0, 0, utc);
    EXPECT_FALSE(ancient.GetSYSTEMTIME(&parts, utc));
    EXPECT_EQ(Listed(parts.wYear, parts.wMonth, parts.wDay, parts.wHour), "0 0 0 0");
    EXPECT_EQ(ancient.Format("y yy yyyy-MM-dd g", utc), "44 44 -44-03-15 ");
}

TEST(DateTime, RefusesPartsThatDoNotExist) {
    struct tm distant = {};
    distant.tm_year = std::numeric_limits<int>::max();
    tarntest::AssertRecorder recorder;
    EXPECT_FALSE(SDateTime(2023, 2, 29, 0, 0, 0, 0, utc).IsValid() || SDateTime(&distant, utc).IsValid());
    EXPECT_EQ(recorder.count(), 0U);
    EXPECT_FALSE(SDateTime(-1LL, utc).IsValid());
    EXPECT_TRUE(recorder.sawLast("stime", "time_t is invalid"));
    const SDateTime none[] = {
        {2024, 2, 29, 24, 0, 0, 0, utc}, {2024, 2, 29, 23, 60, 0, 0, utc}, {2024, 2, 29, 23, 59, 60, 0, utc}};
    EXPECT_EQ(recorder.count(), std::size(none));
    EXPECT_TRUE(recorder.sawLast("stime", "false"));
    for (const SDateTime& value : none) EXPECT_FALSE(value.IsValid());
    EXPECT_FALSE(SDateTime(static_cast<const struct tm*>(nullptr), utc).IsValid());
    EXPECT_FALSE(SDateTime(static_cast<const SYSTEMTIME*>(nullptr), utc).IsValid());
    EXPECT_EQ(recorder.count(), 2U);
}

TEST(DateTime, ReportsReadingTheInvalidValue) {
    const SDateTime none;
    const SDateTime half(SDate(2024, 1, 2), STime());
    const STimeZone berlin("CET,-60");
    tarntest::AssertRecorder recorder;
    EXPECT_EQ(PartsOf(none), "0 0 0 0 0 0 0 0");
    EXPECT_FALSE(none.GetDate(utc).IsValid() || none.GetTime().IsValid() || berlin.InDST(none));
    EXPECT_EQ((half - At("2024-01-02")).GetTotalMilliseconds(), 0);
    EXPECT_EQ(half.GetOleDate(utc), 0);
    EXPECT_EQ(berlin.UTCOffset(none).GetTotalMinutes(), -60);
    EXPECT_EQ(recorder.count(), 14U);
    EXPECT_TRUE(recorder.sawLast("stime", "IsValid()"));
    EXPECT_EQ(half.Format("yyyy HH", berlin), "2024 ");
    EXPECT_EQ(SDateTime(SDate(), STime(1, 0, 0, 0, utc)).Format("yyyy HH", berlin), " 02");
    EXPECT_EQ(recorder.count(), 0U);
}

TEST(DateTime, NamesTheConversionThatWasMisused) {
    const SDateTime none;
    tarntest::AssertRecorder recorder;
    const auto saw = [&recorder](const char* unit) {
        return recorder.sawLast(unit, "Input SDateTime value is NULL or not valid");
    };
    for (const SDateTime* value : {static_cast<const SDateTime*>(nullptr), &none}) {
        EXPECT_TRUE(sicSDateTimeToTime_t(value, local) == 0 && saw("sic_sdatetime_tm"));
        EXPECT_TRUE(sicSDateTimeToTm(value, local).tm_mday == 0 && saw("sic_sdatetime_tm"));
        EXPECT_TRUE(sicSDateTimeToDATE(value, local) == 0.0 && saw("sic_sdatetime_date"));
        EXPECT_TRUE(sicSDateTimeToSYSTEMTIME(value, local).wDay == 0 && saw("sic_sdatetime_systemtime"));
    }
    EXPECT_EQ(none.GetTimeT(utc), 0);
    EXPECT_TRUE(recorder.sawLast("stime", "&tZone == &STimeZone::TZ_Local()"));
    EXPECT_EQ(none.GetTimeT(local), 0);
    EXPECT_TRUE(recorder.sawLast("stime", "IsValid()"));
}
