// Characters of every code page against the system's own conversion, where the two must agree.

#include "strings/characters/mbchar.h"

#include <gtest/gtest.h>

#include <windows.h>

#include "tarnlib/schar.h"

using TarnLibA500::mbchar::CodePage;

constexpr unsigned kCodePages[] = {1252, 932, 936, 949, 950, 28605, 1250, 1251, 874};

TEST(CodePageDifferential, DecodesLikeTheSystem) {
    for (const unsigned number : kCodePages) {
        const CodePage& page = CodePage::Of(number);
        for (unsigned first = 1; first < 256; ++first) {
            for (unsigned second = 0; second < (page.isSingleByte() ? 1 : 256); ++second) {
                const char text[] = {static_cast<char>(first), static_cast<char>(second), '\0'};
                const bool lead = IsDBCSLeadByteEx(number, static_cast<BYTE>(first));
                wchar_t system[4] = {};
                const int units = MultiByteToWideChar(number, lead ? MB_ERR_INVALID_CHARS : 0, text,
                                                      lead ? 2 : 1, system, 4);
                const bool valid = units == 1 && (!lead || second != 0);
                wchar_t ours = L'#';
                const int used = page.toWide(ours, text);
                ASSERT_EQ(used, valid ? 1 + lead : -1) << number << ' ' << first << ' ' << second;
                ASSERT_EQ(ours, valid ? system[0] : L'#') << number << ' ' << first << ' ' << second;
                ASSERT_EQ(page.step(text), valid && lead ? 2U : 1U);
                if (!lead && second != 0) break;
            }
        }
    }
}

TEST(CodePageDifferential, EncodesLikeTheSystem) {
    for (const unsigned number : kCodePages) {
        const CodePage& page = CodePage::Of(number);
        for (unsigned unit = 1; unit < 0x10000; ++unit) {
            const auto code = static_cast<wchar_t>(unit);
            char system[8] = {}, ours[8] = {};
            BOOL replaced = FALSE;
            const int bytes = WideCharToMultiByte(number, 0, &code, 1, system, 8, nullptr, &replaced);
            ASSERT_EQ(page.fromWide(ours, code), replaced ? -1 : bytes) << number << ' ' << unit;
            if (!replaced) ASSERT_STREQ(ours, system) << number << ' ' << unit;
        }
    }
}

TEST(CodePageTables, TheCLocaleIsLatinOneAndUnknownPagesAreLikeIt) {
    for (const unsigned number : {0U, 65001U, 54321U}) {
        const CodePage& page = CodePage::Of(number);
        wchar_t unit = 0;
        char encoded = 0;
        EXPECT_TRUE(page.isSingleByte() && page.foldByte('\xC9') == 0xC9);
        EXPECT_TRUE(page.toWide(unit, "\xE9") == 1 && unit == 0xE9);
        EXPECT_TRUE(page.fromWide(&encoded, 0xFF) == 1 && page.fromWide(&encoded, 0x100) == -1);
    }
    EXPECT_EQ(CodePage::Of(1252).foldByte('\xC9'), 0xE9);
    EXPECT_EQ(CodePage::Of(932).foldByte('\x83'), 0x83);
}

TEST(CharacterClasses, FollowTheUnicodeTable) {
    unsigned spaces = 0, uppers = 0;
    for (unsigned code = 0x80; code < 0x10000; ++code) {
        spaces += TarnLibA500::is_space(static_cast<wchar_t>(code));
        uppers += TarnLibA500::is_upper(static_cast<wchar_t>(code));
    }
    EXPECT_EQ(spaces, 19U);  // White_Space has 25 members, six of them ASCII
    EXPECT_GT(uppers, 1000U);
    for (const int code : {0xC0, 0x130, 0x2160, 0x24CF, 0x1E9E})
        EXPECT_TRUE(TarnLibA500::is_upper(static_cast<wchar_t>(code))) << code;
    for (const int code : {0xD7, 0xDF, 0x131, 0x2170, 0x1C5})
        EXPECT_FALSE(TarnLibA500::is_upper(static_cast<wchar_t>(code))) << code;
}
