#include "tarnlib/stime.h"

#include <gtest/gtest.h>

#include <sstream>

#include "support/assert_recorder.h"
#include "support/case_file.h"
#include "support/listed.h"
#include "tarnlib/stimezone.h"

using namespace TarnLibA500;
using tarntest::Listed;

namespace {
constexpr const char* kOneSign =
    "((nDays >= 0) && (nHours >= 0) && (nMinutes >= 0) && (nSeconds >= 0) && (nMilliseconds >= 0)) || "
    "((nDays <= 0) && (nHours <= 0) && (nMinutes <= 0) && (nSeconds <= 0) && (nMilliseconds <= 0))";
}  // namespace

TEST(TimeSpan, IsTheSumOfItsComponents) {
    for (const auto& fields : tarntest::ReadCases("date_spans.txt")) {
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
    const STimeZone east("IST,-330");
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
    const STimeZone& utc = STimeZone::TZ_UTC();
    const STimeZone east("IST,-330");
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

TEST(Time, ReportsTimesThatDoNotExist) {
    constexpr unsigned char kCases[][3] = {{24, 0, 0}, {23, 60, 0}, {23, 59, 60}};
    for (const auto& c : kCases) {
        tarntest::AssertRecorder recorder;
        STime time;
        EXPECT_FALSE(time.Set(c[0], c[1], c[2], 0, STimeZone::TZ_UTC()));
        EXPECT_TRUE(recorder.sawLast("stime", "false"));
        EXPECT_EQ(time.GetHour(STimeZone::TZ_UTC()) + time.GetTotalMilliseconds(), 0);
        EXPECT_TRUE(recorder.sawLast("stime", "IsValid()"));
    }
}
