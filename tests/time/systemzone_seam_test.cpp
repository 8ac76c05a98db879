#include "time/systemzone.h"

#include <gtest/gtest.h>

#include <sstream>

#include "seam/osclock.h"
#include "support/alloc_hooks.h"
#include "support/case_file.h"
#include "support/failing.h"
#include "tarnlib/sdatetimeconv.h"
#include "tarnlib/sstopwatch.h"
#include "time/calendar.h"

using namespace TarnLibA500;
using tarntest::Instead;

namespace {

const STimeZone& utc = STimeZone::TZ_UTC();
const STimeZone& local = STimeZone::TZ_Local();

/// A system whose clock and zone the test sets; it counts how often its zone is read.
struct FakeSystem {
    static inline std::uint64_t tick;
    static inline int reads, calls;
    static inline bool fails;
    static inline TIME_ZONE_INFORMATION zone;
    static inline long long now = 13'350'095'999'001;  // milliseconds since 1601

    FakeSystem() {
        tick += 1'000'000;  // whatever was kept is too old now
        reads = calls = 0;
        fails = false;
        zone = {};
    }

    static ULONGLONG WINAPI Tick() { return ++calls, tick; }
    static void WINAPI Time(FILETIME* time) {
        ++calls;
        const long long ticks = now * 10'000;
        *time = {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
    }
    static bool Read(unsigned short year, TIME_ZONE_INFORMATION& out) noexcept {
        ++reads;
        out = zone;
        if (year == 2019) out.Bias = 999;  // unlike the others
        return !fails;
    }

    const Instead<decltype(GetTickCount64)> tickCount{osclock::tickCount, Tick};
    const Instead<decltype(GetSystemTimeAsFileTime)> systemTime{osclock::systemTime, Time};
    const Instead<decltype(oszone::ReadFromSystem)> readZone{oszone::readZone, Read};
};

SAnsiString Shown(const char* text) {
    SDateTime value;
    EXPECT_TRUE(StringToDate(text, value, utc));
    return value.Format("yyyy-MM-dd HH:mm", local);
}

FARPROC WINAPI FindNothing(HMODULE, const char*) {
    SetLastError(ERROR_PROC_NOT_FOUND);
    return nullptr;
}

}  // namespace

TEST(SystemZoneSeam, AsksForAYearOnceInASecondAndSeesChanges) {
    const FakeSystem system;
    FakeSystem::zone.Bias = -60;
    EXPECT_EQ(Shown("2024-05-05T12:00"), "2024-05-05 13:00");
    FakeSystem::zone.Bias = -345;
    FakeSystem::tick += 999;
    EXPECT_EQ(Shown("2024-06-06T12:00"), "2024-06-06 13:00");
    EXPECT_EQ(FakeSystem::reads, 1);
    FakeSystem::tick += 1;
    EXPECT_EQ(Shown("2024-06-06T12:00"), "2024-06-06 17:45");
    EXPECT_EQ(Shown("1960-06-06T12:00"), "1960-06-06 17:45");  // the same place in the table
    EXPECT_EQ(Shown("2019-06-06T12:00"), "2019-06-05 19:21");
    EXPECT_EQ(FakeSystem::reads, 4);
}

TEST(SystemZoneSeam, UnderstandsEveryFormOfData) {
    const FakeSystem system;
    const auto read = [](const std::string& text, SYSTEMTIME& date) {
        WORD* const parts = &date.wYear;  // in the order of the text
        std::istringstream in(text);
        for (int i = 0; i < 8; ++i) in >> parts[i];
    };
    for (const auto& fields : tarntest::ReadCases("time/zone_system.txt")) {
        FakeSystem::tick += 1000;
        FakeSystem::zone.Bias = 180;
        FakeSystem::zone.DaylightBias = -60;
        read(fields[0], FakeSystem::zone.DaylightDate);
        read(fields[1], FakeSystem::zone.StandardDate);
        EXPECT_EQ(Shown(fields[2].c_str()), fields[3].c_str()) << fields[2];
        EXPECT_EQ(local.GetRules(), fields[4].c_str());
    }
    wcscpy(FakeSystem::zone.StandardName, L"A, B");
    EXPECT_EQ(local.GetRules().left(9), "A  B,180,");
    FakeSystem::tick += 1000;
    FakeSystem::fails = true;
    EXPECT_EQ(Shown("2024-07-01T12:00"), "2024-07-01 12:00");
    EXPECT_EQ(local.GetRules(), "UTC,0");
}

TEST(SystemZoneSeam, ReadsTheSystemsClock) {
    const FakeSystem system;
    FakeSystem::zone.Bias = -60;
    EXPECT_EQ(SDateTime::GetCurrentDateTime().Format("yyyy-MM-dd HH:mm:ss.SS", utc),
              "2024-01-18 23:59:59.001");
    EXPECT_EQ(SDate::GetCurrentDate(local), SDate(2024, 1, 19));
    SStopWatch watch;
    for (const unsigned pause : {0U, 500U}) {
        FakeSystem::tick += pause;  // does not count
        watch.Start();
        FakeSystem::tick += 30;
        watch.Start();  // runs already
        EXPECT_EQ(watch.GetElapsedMilliseconds(), pause == 0 ? 30U : 60U);
        watch.Stop();
    }
    watch.Start();
    watch.Reset();
    FakeSystem::tick += 2;
    EXPECT_EQ(watch.GetElapsedMilliseconds(), 2U);
}

TEST(SystemZoneSeam, AsksWindows7ForTheClockThatItHas) {
    const Instead find(osmodules::getProcAddress, &FindNothing);
    osclock::finestTime = &osclock::FindFinestTime;
    SetLastError(ERROR_SUCCESS);
    FILETIME earlier;
    GetSystemTimeAsFileTime(&earlier);
    EXPECT_GE(osclock::Now(), osclock::UnitsOf(earlier));
    EXPECT_EQ(osclock::finestTime.load(), &GetSystemTimeAsFileTime);
    EXPECT_EQ(GetLastError(), DWORD{ERROR_SUCCESS});
    osclock::finestTime = &osclock::FindFinestTime;
}

TEST(SystemZoneSeam, TakesInstantsOfTheSystemApart) {
    constexpr std::uint64_t kDay = 864'000'000'000;
    for (const std::uint64_t day : {0, 1, 154'000, 400'000, 10'675'198}) {
        for (const std::uint64_t rest :
             {std::uint64_t{0}, std::uint64_t{9'999}, std::uint64_t{10'000}, kDay - 1}) {
            const calendar::DayTime parts = calendar::DayTimeOf(day * kDay + rest);
            EXPECT_EQ(parts.day, calendar::kFirstOf1601 + static_cast<std::int32_t>(day));
            EXPECT_EQ(parts.milliseconds, static_cast<std::int32_t>(rest / 10'000));
        }
    }
}

TEST(SystemZoneSeam, NeedsNoSystemForUniversalTimeAndLittleMemory) {
    const FakeSystem system;
    const SAnsiString text("2024-02-29@01:02:03.004");
    const STimeZone berlin("CET,-60,CEST,-120,M3.5.0/02:00,M10.5.0/03:00");
    tarntest::AllocationCount count;
    SDateTime value;
    for (const STimeZone* zone : {&berlin, &utc}) {
        ASSERT_TRUE(StringToDate(text, value, *zone));
        EXPECT_EQ(value, SDateTime(2024, 2, 29, 1, 2, 3, value.GetMillisecond(), *zone));
    }
    char text23[24];
    EXPECT_EQ(value.Format(text23, sizeof text23, "yyyy-MM-dd@HH:mm:ss.SS", utc), 23);
    EXPECT_EQ(count.Taken(), 0U);
    const SAnsiString shown = value.Format("yyyy-MM-dd@HH:mm:ss.SS", utc);
    EXPECT_EQ(count.Taken(), 1U);
    EXPECT_EQ(FakeSystem::calls + FakeSystem::reads, 0);
    EXPECT_EQ(shown, text23);
}
