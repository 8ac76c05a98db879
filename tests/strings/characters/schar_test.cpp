#include "tarnlib/schar.h"

#include <gtest/gtest.h>

#include "support/locale_scope.h"

using namespace TarnLibA500;

TEST(Character, ConvertsByFlavour) {
    const tarntest::LocaleScope locale(tarntest::kLocale1252);
    const SChar_t<char, 0> e('\xE9'), none;
    char bytes[4] = {};
    wchar_t units[2] = {};
    EXPECT_TRUE(e.isAlpha() && e.isLower() && e.isUnicode() && e.isMBCSChar() && !e.isAsciiChar() &&
                !e.isDigit());
    EXPECT_EQ(e.toUpper(), '\xC9');
    EXPECT_TRUE(e.toUChar() == 0xE9 && e.getNBytesForUTF8() == 2 && e.getNBytesForWChar() == 2);
    EXPECT_TRUE(e.toWideChar(units, 2) == 1 && units[0] == 0xE9);
    EXPECT_TRUE(e.toOCAChar(units, 1) == -1 && e.toAsciiChar(bytes, 4) == -1);
    EXPECT_TRUE(e.toMBCSChar(bytes, 0) == -1 && e.toMBCSChar(nullptr, 4) == -1);
    EXPECT_TRUE(e.toMBCSChar(bytes, 1) == 1 && bytes[0] == '\xE9');
    EXPECT_TRUE(none.toMBCSChar(bytes, 0) == 0 && none.toWideChar(units, 0) == 0);
    EXPECT_FALSE(none.isAlpha() || none.isUnicode() || none.isWhiteSpace());
    SChar_t<wchar_t, 1> wide(L'\x3000');
    SChar_t<char, 1> ascii('x');
    EXPECT_TRUE(wide.isWhiteSpace() && !wide.isBlank() &&
                !wide.isMBCSChar() == (wide.getNBytesForMBCS() == 0));
    EXPECT_TRUE(wide.fromSChar(e) && wide == 0xE9);
    EXPECT_TRUE(!ascii.fromSChar(e) && ascii == 'x' && !ascii.fromUChar(0x80));
    SChar_t<char, 0> yen('a');
    EXPECT_TRUE(!yen.fromUChar(0x0E01) && yen == 'a' && yen.fromUChar(0x20AC) && yen == '\x80');
}

TEST(Cp932Character, HoldsBothBytes) {
    const tarntest::LocaleScope locale(tarntest::kLocale932);
    const SChar_t<char, 0> so("\x83\x5C\x41"), broken("\x83 ");
    EXPECT_TRUE(so.getLength() == 2 && broken.getLength() == 1);
    EXPECT_TRUE(so != '\x83' && so != '\\' && so.toUChar() == 0x30BD && so.getNBytesForUTF8() == 3);
    EXPECT_TRUE(!broken.isUnicode() && !broken.isMBCSChar() && broken.toLower() == broken);
    EXPECT_EQ((SChar_t<char, 0>("\x82\x60").toLower()), (SChar_t<char, 0>("\x82\x81")));
}

TEST(Utf8Character, HoldsAllOfUnicode) {
    const SChar_t<char, 0> face("\xF0\x9F\x98\x80!"), e("\xC3\xA9"), broken("\x9F"), grows("\xC8\xBA");
    EXPECT_TRUE(face.getLength() == 4 && face.toUCS4() == 0x1F600 && face.toUChar() == 0 &&
                face.isWideChar());
    EXPECT_TRUE(face.getNBytesForUTF8() == 4 && face.getNBytesForMBCS() == 4 &&
                face.getNBytesForWChar() == 4);
    EXPECT_EQ(e.toUpper(), (SChar_t<char, 0>("\xC3\x89")));
    EXPECT_TRUE(e.isAlpha() && e.isLower() && grows.toLower().getLength() == 3);
    EXPECT_FALSE(broken.isUnicode() || face.isAlpha() || face.isUpper());
    wchar_t units[2] = {};
    EXPECT_TRUE(face.toOCAChar(units, 2) == -1 && face.toOCAChar(units, 4) == 2 && units[1] == 0xDE00);
    SChar_t<wchar_t, 1> wide(L'a');
    SChar_t<char, 0> narrow('a');
    EXPECT_FALSE(wide.fromSChar(face) || narrow.fromUChar(0xD83D) || narrow.fromUCS4(0x110000));
    EXPECT_TRUE(wide == 'a' && narrow == 'a' && narrow.fromSChar(face) && narrow == face &&
                narrow.fromUCS4(0xE9) && narrow == e);
    EXPECT_EQ((SChar_t<char, 0>("\xF0\x90\x90\x80").toLower()), (SChar_t<char, 0>("\xF0\x90\x90\xA8")));
}
