// Characters of every code page against the system's own conversion, where the two must agree.

#include "strings/characters/codepagetext.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>

#include <windows.h>

#include "tarnlib/schar.h"

using namespace TarnLibA500::mbchar;

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

// Texts go in blocks where they can.
TEST(CodePageDifferential, ConvertsTextsAsTheirCharacters) {
    std::mt19937 random(16);
    for (int i = 0; i < 20'000; ++i) {
        const CodePage& page = CodePage::Of(kCodePages[random() % std::size(kCodePages)]);
        std::string text;
        for (unsigned n = random() % 6; n != 0; --n) {
            const char pair[] = {static_cast<char>(random()), static_cast<char>(random())};
            text += random() % 3 ? std::string("abcdefghijklmnopqrstuvwxyz0123456789").substr(random() % 36)
                                 : std::string(pair, 1 + random() % 2);
        }
        const char* const end = text.data() + text.size();
        std::wstring expected;
        for (const char* at = text.data(); at != end; at += page.characterAt(at, end).bytes) {
            const Character character = page.characterAt(at, end);
            expected += static_cast<wchar_t>(character.isValid() ? character.code : U'?');
        }
        EXPECT_EQ(CountUnits(page, text.data(), end), expected.size());
        const auto room = static_cast<std::uint32_t>(random() % (expected.size() + 2));
        std::wstring units(text.size() + 2, L'#');
        const char* from = text.data();
        units.resize(Decode(page, from, end, units.data(), room));
        EXPECT_EQ(units, expected.substr(0, room)) << page.number();

        if (!expected.empty()) expected[random() % expected.size()] = static_cast<wchar_t>(random());
        std::string bytes;
        for (const wchar_t unit : expected) {
            char one[8] = "?";
            bytes += std::string(one, static_cast<std::size_t>(std::max(page.fromWide(one, unit), 1)));
        }
        const wchar_t* const last = expected.data() + expected.size();
        EXPECT_EQ(CountBytes(page, expected.data(), last), bytes.size());
        std::string out(bytes.size() + 16, '#');
        const wchar_t* wide = expected.data();
        out.resize(Encode(page, wide, last, out.data(), room));
        EXPECT_EQ(out, bytes.substr(0, out.size())) << page.number();
        EXPECT_TRUE(wide == last || room - out.size() < 2);
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
