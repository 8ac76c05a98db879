#include "tarnlib/sdate.h"

#include <gtest/gtest.h>

#include <string>

#include "support/assert_recorder.h"
#include "support/case_file.h"
#include "tarnlib/sdatetime.h"

using namespace TarnLibA500;

namespace {

constexpr std::int32_t kFirstThatLeadsBack = -1036;  // -4716-03-01
constexpr std::int32_t kLast = 13'689'324;           // 32767-12-31

std::string Text(const SDate& date) {
    short year = 1;
    unsigned char month = 1, day = 1;
    date.GetYearMonthDay(year, month, day);
    return std::to_string(year) + "-" + std::to_string(month) + "-" + std::to_string(day);
}

}  // namespace

TEST(Date, NumbersEveryDayAsAnotherCalendarDoes) {
    for (const auto& fields : tarntest::ReadCases("time/date_years.txt")) {
        const std::int32_t first = std::stoi(fields[1]);
        unsigned check = 0;
        for (std::int32_t day = first; day < first + std::stoi(fields[2]); ++day) {
            const SDate date = SDate::FromDayNumber(day);
            check = check * 31 + date.GetMonth() * 512U + date.GetDay() * 8U + date.GetDayOfWeek();
            ASSERT_EQ(date.GetYear(), std::stoi(fields[0])) << day;
        }
        ASSERT_EQ(check, std::stoul(fields[3], nullptr, 16)) << fields[0];
    }
}

TEST(Date, LeadsBackFromEveryDay) {
    for (std::int32_t day = kFirstThatLeadsBack; day <= kLast; ++day) {
        const SDate date = SDate::FromDayNumber(day);
        ASSERT_EQ(SDate(date.GetYear(), date.GetMonth(), date.GetDay()).GetDayNumber(), day);
    }
}

TEST(Date, BuildsAndReads) {
    for (const auto& fields : tarntest::ReadCases("time/date_builds.txt")) {
        int year = 0;
        unsigned month = 0, day = 0;
        ASSERT_EQ(std::sscanf(fields[0].c_str(), "%d-%u-%u", &year, &month, &day), 3);
        const SDate date(static_cast<short>(year), static_cast<unsigned char>(month),
                         static_cast<unsigned char>(day), fields[1] == "c");
        ASSERT_EQ(date.IsValid() ? std::to_string(date.GetDayNumber()) : "-", fields[2]) << fields[0];
        if (!date.IsValid()) continue;
        EXPECT_EQ(Text(date), fields[3]);
        EXPECT_EQ(date.GetDayOfWeek(), std::stoi(fields[4])) << fields[0];
    }
}

// The sheet of a month is drawn day by day: a week begins with the first day of the month and on every first
// day.
TEST(Date, CountsWeeksOfMonths) {
    int weeks[7] = {};
    for (SDate date(1583, 1, 1); date < SDate(1585, 1, 1); date += STimeSpan(1, 0, 0, 0, 0)) {
        for (unsigned char firstDay = 0; firstDay < 7; ++firstDay) {
            int& week = weeks[firstDay];
            week = date.GetDay() == 1 ? 1 : week + (date.GetDayOfWeek() == firstDay);
            ASSERT_EQ(date.GetWeekOfMonth(firstDay), week) << Text(date);
        }
        const bool isLast = (date + STimeSpan(1, 0, 0, 0, 0)).GetDay() == 1;
        ASSERT_EQ(date.GetDay() == date.GetNumDaysInCurMonth(), isLast) << Text(date);
    }
    EXPECT_EQ(SDate(1582, 10, 15).GetWeekOfMonth(0), 3);  // the 1st was a Monday
}

TEST(Date, AddsWholeDaysAndStaysInvalid) {
    const SDate leapDay(2024, 2, 29);
    EXPECT_EQ(Text(leapDay + STimeSpan(1, 23, 59, 59, 999)), "2024-3-1");
    EXPECT_EQ(Text(leapDay + STimeSpan(-1, -23, 0, 0, 0)), "2024-2-28");
    EXPECT_EQ((SDate(2025, 3, 1) - leapDay).GetTotalHours(), 366 * 24);
    EXPECT_FALSE((SDate() + STimeSpan(1, 0, 0, 0, 0)).IsValid());
    EXPECT_FALSE((leapDay - STimeSpan::FromMilliseconds(std::numeric_limits<long long>::max())).IsValid());
}

TEST(Date, ReportsReadingTheInvalidDate) {
    const SDate none;
    tarntest::AssertRecorder recorder;
    for (const int part :
         {int{none.GetYear()}, int{none.GetMonth()}, int{none.GetDay()}, int{none.GetDayOfWeek()},
          int{none.GetWeekOfMonth(0)}, int{none.GetNumDaysInCurMonth()}})
        EXPECT_EQ(part, 0);
    EXPECT_EQ(none - SDate(2000, 1, 1), STimeSpan());
    EXPECT_EQ(SDate(2000, 1, 1) - none, STimeSpan());
    EXPECT_EQ(Text(none), "0-0-0");
    EXPECT_EQ(recorder.count(), 9U);
    EXPECT_TRUE(recorder.sawLast("stime", "IsValid()"));
}

TEST(Date, ReadsAnyNumberWithoutHarm) {
    for (const std::int32_t number : {-2147483647, -100'000'001, -1'000'000, 100'000'001, 2147483647}) {
        const SDate date = SDate::FromDayNumber(number);
        EXPECT_LT(date.GetDayOfWeek(), 7) << Text(date);
        date.GetWeekOfMonth(3);
        const SDateTime noon(date, STime::FromMilliseconds(43'200'000));
        noon.GetHour(STimeZone::TZ_Local());
        noon.Format("yyyy MM dd", STimeZone("A,-60,B,-120,M3.5.0/02:00,M10.5.0/03:00"));
        EXPECT_EQ((date + STimeSpan(1, 0, 0, 0, 0)).IsValid(), number != 2147483647);
    }
}
