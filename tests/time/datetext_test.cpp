#include <gtest/gtest.h>

#include <windows.h>

#include "support/assert_recorder.h"
#include "support/case_file.h"
#include "support/locale_scope.h"
#include "tarnlib/sdatetimeconv.h"
#include "tarnlib/sdatetimestring.h"
#include "tarnlib/slocale.h"

using namespace TarnLibA500;

namespace {

const STimeZone& utc = STimeZone::TZ_UTC();
constexpr LCID kEnglish = 0x0409;

STimeZone Zone(const std::string& rules) {
    return STimeZone(SAnsiString(rules.c_str()));
}

// Systems differ in their word for the era.
std::string WithEra(std::string text) {
    char era[16];
    GetDateFormatA(kEnglish, 0, nullptr, "g", era, sizeof era);
    for (std::size_t at = text.find("{era}"); at != text.npos; at = text.find("{era}"))
        text.replace(at, 5, era);
    return text;
}

void CheckNames(const char* cases) {
    for (const auto& fields : tarntest::ReadCases(cases)) {
        const LCID language = std::stoul(fields[0], nullptr, 16);
        SetThreadLocale(language);
        const tarntest::LocaleScope locale(fields[1].c_str());
        EXPECT_EQ(SLocale::GetCurrentThreadLocale(), language);
        const int n = std::stoi(fields[2]);
        EXPECT_EQ(SDateTimeString::GetLongMonth(n), fields[3].c_str());
        EXPECT_EQ(SDateTimeString::GetLongDay(n), fields[4].c_str());
        const SDateTime day(1999, static_cast<unsigned char>(n), 1, 0, 0, 0, 0, utc);
        if (!fields[3].empty())
            EXPECT_EQ(day.Format("MMMM '\xF0\x9F\x98\x80'", utc), (fields[3] + " \xF0\x9F\x98\x80").c_str());
    }
    SetThreadLocale(kEnglish);
}

}  // namespace

TEST(DateText, FollowsThePattern) {
    SetThreadLocale(kEnglish);
    for (auto fields : tarntest::ReadCases("time/date_formats.txt")) {
        fields[3] = WithEra(fields[3]);
        const tarntest::LocaleScope locale(fields.size() > 4 ? fields[4].c_str() : "C");
        SDateTime value;
        if (fields[1] != "-") ASSERT_TRUE(StringToDate(fields[1].c_str(), value, utc)) << fields[1];
        EXPECT_EQ(value.Format(fields[0].c_str(), Zone(fields[2])), fields[3].c_str()) << fields[0];
        // Into an array: as much room as it takes, and a byte less.
        const auto length = static_cast<int>(fields[3].size());
        char out[1024] = "?";
        const auto room = static_cast<std::uint32_t>(length) + 1;
        EXPECT_EQ(value.Format(out, room, fields[0].c_str(), Zone(fields[2])), length);
        EXPECT_EQ(out, fields[3]);
        if (length == 0) continue;
        EXPECT_EQ(value.Format(out, room - 1, fields[0].c_str(), Zone(fields[2])), -1);
        EXPECT_STREQ(out, "");
    }
    char out[5];
    tarntest::AssertRecorder recorder;
    EXPECT_EQ(SDateTime().Format(out, 0, "y", utc), -1);
    EXPECT_EQ(SDateTime().Format(out, 5, nullptr, utc), -1);
    EXPECT_EQ(recorder.count(), 2U);
}

TEST(DateText, ReadsOnlyWhatIsADate) {
    for (const auto& fields : tarntest::ReadCases("time/date_parses.txt")) {
        const SAnsiString text(fields[0].data(), static_cast<std::uint32_t>(fields[0].size()));
        const SDateTime before(1LL, utc);
        SDateTime value = before;
        bool hasDate = true;
        bool hasTime = true;
        tarntest::AssertRecorder recorder;
        const bool read = StringToDate(text, value, hasDate, hasTime, Zone(fields[1]));
        EXPECT_EQ(recorder.count(), 0U) << text.getString();
        SAnsiString found = value.Format("yyyy-MM-dd HH:mm:ss.SS", utc);
        if (hasTime) found += " T";
        EXPECT_EQ(read ? found : SAnsiString("-"), fields[2].c_str()) << text.getString();
        EXPECT_EQ(hasDate, read);
        if (!read) EXPECT_TRUE(value == before && !hasTime) << text.getString();
        short year = 1970;  // the parts of what is untouched
        unsigned char month = 1, day = 1;
        EXPECT_EQ(StringToYMD(text, year, month, day), read && !hasTime) << text.getString();
        if (!hasTime) EXPECT_EQ(SDate(year, month, day), value.GetDate(Zone(fields[1]))) << text.getString();
    }
}

TEST(DateText, TakesNamesFromTheThreadsLocale) {
    CheckNames("time/date_names.txt");
    // More locales than are kept, and each again.
    for (int i = 0; i < 80; ++i) {
        if (!SetThreadLocale(MAKELCID(MAKELANGID(1 + i % 40, SUBLANG_DEFAULT), SORT_DEFAULT))) continue;
        const SYSTEMTIME may = {1999, 5, 0, 1, 0, 0, 0, 0};
        wchar_t name[80];
        GetDateFormatW(GetThreadLocale(), 0, &may, L"MMM", name, 80);
        SAnsiString narrow;
        narrow.fromWChar(name);
        EXPECT_EQ(SDateTimeString::GetShortMonth(5), narrow) << i;
    }
    SetThreadLocale(kEnglish);
}

TEST(Utf8DateText, HasEveryName) {
    CheckNames("time/date_names_utf8.txt");
}
