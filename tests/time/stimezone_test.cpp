#include "tarnlib/stimezone.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>

#include <windows.h>

#include "support/assert_recorder.h"
#include "support/case_file.h"
#include "support/wine.h"
#include "tarnlib/sdatetimeconv.h"

using namespace TarnLibA500;

namespace {

const STimeZone& utc = STimeZone::TZ_UTC();
const STimeZone& local = STimeZone::TZ_Local();

SDateTime Read(const std::string& text, const STimeZone& zone) {
    SDateTime value;
    EXPECT_TRUE(StringToDate(text.c_str(), value, zone)) << text;
    return value;
}

/// The system's own conversion, by its rules for the year that it is in the zone's standard time.
SYSTEMTIME ShownBySystem(const SDateTime& value) {
    static TIME_ZONE_INFORMATION rules;
    static int year = 0;
    const int now = (value - STimeSpan(0, 0, rules.Bias, 0, 0)).GetYear(utc);
    if (now != year) EXPECT_TRUE(GetTimeZoneInformationForYear(static_cast<USHORT>(now), nullptr, &rules));
    year = now;
    const SYSTEMTIME universal = sicSDateTimeToSYSTEMTIME(&value, utc);
    SYSTEMTIME shown = {};
    EXPECT_TRUE(SystemTimeToTzSpecificLocalTime(&rules, &universal, &shown));
    return shown;
}

}  // namespace

TEST(TimeZone, ReadsAndWritesRules) {
    for (const auto& fields : tarntest::ReadCases("time/zone_rules.txt")) {
        const bool refused = fields.back() == "-";
        tarntest::AssertRecorder recorder;
        const STimeZone zone(SAnsiString(fields.size() == 2 ? fields[0].c_str() : ""));
        EXPECT_EQ(recorder.count(), refused ? 1U : 0U) << fields[0];
        EXPECT_EQ(zone.GetRules(), refused ? "UTC,0" : fields.back().c_str()) << fields[0];
        if (refused) EXPECT_FALSE(zone.InDST(Read("2024-07-01", utc))) << fields[0];
    }
    EXPECT_EQ(utc.GetRules(), "UTC,0");
}

TEST(TimeZone, SwitchesAsItsRulesSay) {
    for (const auto& fields : tarntest::ReadCases("time/zone_switches.txt")) {
        const STimeZone zone(SAnsiString(fields[0].c_str()));
        const SDateTime value = Read(fields[1], zone);
        EXPECT_EQ(value.Format("yyyy-MM-dd HH:mm", utc), fields[2].c_str()) << fields[0] << fields[1];
        SAnsiString shown = value.Format("yyyy-MM-dd HH:mm", zone);
        if (zone.InDST(value)) shown += "*";
        EXPECT_EQ(shown, fields[3].c_str()) << fields[0] << fields[1];
        EXPECT_EQ(value - zone.UTCOffset(value), Read(shown.left(16).getString(), utc)) << fields[1];
    }
}

// These run in processes with several zones.

TEST(ZoneLocal, IsTheZoneOfTheProcess) {
    if (!tarntest::IsOnWine())
        GTEST_SKIP() << "only the emulator takes the system's zone from the environment";
    const char* const wanted = std::getenv("TZ");
    bool found = wanted == nullptr;
    for (const auto& fields : tarntest::ReadCases("time/zone_processes.txt")) {
        if (wanted == nullptr || fields[0] != wanted) continue;
        found = true;
        EXPECT_EQ(Read(fields[1], utc).Format("yyyy-MM-dd HH:mm", local), fields[2].c_str());
    }
    EXPECT_TRUE(found) << wanted;
}

TEST(ZoneLocal, AgreesWithTheSystemForEveryHour) {
    const SDateTime end = Read("2041-01-01", utc);
    const STimeSpan hour(0, 1, 0, 0, 0);
    for (SDateTime value = Read("2000-01-01", utc); value < end; value += hour) {
        const SYSTEMTIME theirs = ShownBySystem(value);
        SYSTEMTIME ours;
        value.GetSYSTEMTIME(&ours, local);
        ASSERT_EQ(std::memcmp(&ours, &theirs, sizeof ours), 0)
            << value.Format("yyyy-MM-dd HH:mm", utc).getString();
        ASSERT_EQ(local.UTCOffset(value),
                  value - Read(value.Format("yyyy-MM-dd HH:mm", local).getString(), utc));
        // Back again: the same instant, or of two with the same local time the later one.
        const SDateTime back(&ours, local);
        if (back != value) {
            ASSERT_TRUE(local.InDST(value) && !local.InDST(back));
            const SYSTEMTIME again = ShownBySystem(back);
            ASSERT_EQ(std::memcmp(&again, &theirs, sizeof again), 0);
        }
    }
}

TEST(ZoneLocal, GivesSecondsByTheRuntime) {
    _putenv("TZ=");  // the runtime would misread the name of a zone
    _tzset();
    for (SDateTime value = Read("2000-01-01", utc); value.GetYear(utc) < 2030;
         value += STimeSpan(0, 5, 0, 0, 0)) {
        if (_daylight == 0 && local.InDST(value)) continue;  // of a zone that has given it up since
        ASSERT_EQ(SDateTime(value.GetTimeT(local), local), value)
            << value.Format("yyyy-MM-dd HH:mm", utc).getString();
    }
    EXPECT_EQ(Read("1960-01-01", utc).GetTimeT(local), -1);
    // Universal parts are taken for local ones, in standard time.
    const SDateTime noon = Read("2024-01-15T12:00", utc);
    const SDateTime standard = local.InDST(noon) ? Read("2024-07-15T12:00", utc) : noon;
    EXPECT_EQ(sicSDateTimeToTime_t(&noon, utc) - noon.GetTimeT(local),
              local.UTCOffset(standard).GetTotalSeconds());
}
