// Strings of one flavour into another, and code-page text into named code sets.

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <clocale>
#include <string>
#include <thread>

#include "support/assert_recorder.h"
#include "support/case_file.h"
#include "support/locale_scope.h"
#include "support/print_strings.h"
#include "tarnlib/codesetconverter.h"
#include "tarnlib/mbcscodesetconverter.h"
#include "tarnlib/sdecodedstring.h"
#include "tarnlib/sstring.h"

using namespace TarnLibA500;
using tarntest::kLocale1252;
using tarntest::kLocale932;
using tarntest::LocaleScope;
using Codeset = MBCSCodesetConverter;

namespace {

std::string Bytes(const SSimpleBuffer& buffer) {
    return {reinterpret_cast<const char*>(buffer.getBufferProtected()), buffer.getNBytes()};
}

}  // namespace

TEST(AsciiConversion, RefusesWhatIsNotAscii) {
    tarntest::AssertRecorder asserts;
    SAsciiString s("kept");
    const auto refuses = [&](bool converted, const std::string& source) {
        return !converted && asserts.sawLast("sstring", "Not a valid ASCII string in " + source);
    };
    EXPECT_TRUE(refuses(s.fromMBCS("a\xE9"), "MBCS"));
    EXPECT_TRUE(refuses(s.fromOCA(L"a\x100"), "OCA"));
    EXPECT_TRUE(refuses(s.fromWChar(L"\xE9"), "WChar"));
    EXPECT_TRUE(!s.fromUTF8("\xC3\xA9") && s == "kept");
    EXPECT_TRUE(!s.fromUTF8("\xC3") && s.isEmpty());
    EXPECT_TRUE(s.fromWChar(L"plain text", 5) && s == "plain");
    EXPECT_TRUE(s.fromMBCS(s.getString() + 1) && s == "lain");

    const SAsciiString stray("a\xE9");
    char bytes[8];
    wchar_t units[8];
    EXPECT_TRUE(stray.toAscii(bytes, 2) == -1 && stray.toAscii(bytes, 3) == 3);
    EXPECT_TRUE(asserts.sawLast("sstring", "Not a valid ASCII string in SString"));
    EXPECT_STREQ(bytes, "a?");
    EXPECT_TRUE(stray.toMBCS(bytes, 2) == -1 && asserts.sawLast("sstring", "nBytesInBuffer >= nBytesUsed"));
    EXPECT_EQ(stray.toMBCS(bytes, 3), 3);
    EXPECT_STREQ(bytes, "a\xE9");
    EXPECT_TRUE(stray.toWChar(units, 6) == 3 && units[1] == 0xFFE9);  // widened with its sign
    EXPECT_EQ(stray.toOCA(units, 5), -1);
    EXPECT_EQ(stray.toUTF8(bytes, 3), 3);
}

TEST(AnsiConversion, GoesThroughUTF16) {
    const LocaleScope locale(kLocale1252);
    const SAnsiString s("\x80 caf\xE9");
    char bytes[32];
    wchar_t units[32];
    EXPECT_EQ(s.getNBytesForWChar(), 14U);
    EXPECT_TRUE(s.toWChar(units, 13) == -1 && s.toWChar(units, 14) == 7);
    EXPECT_STREQ(units, L"\x20AC caf\xE9");
    EXPECT_EQ(s.getNBytesForUTF8(), 10U);
    EXPECT_TRUE(s.toUTF8(bytes, 9) == -1 && s.toUTF8(bytes, 10) == 9);  // the terminator not counted
    EXPECT_STREQ(bytes, "\xE2\x82\xAC caf\xC3\xA9");
    EXPECT_EQ(s.toAscii(bytes, 7), 7);
    EXPECT_STREQ(bytes, "? caf?");
    SAnsiString back;
    EXPECT_TRUE(back.fromUTF8("\xE2\x82\xAC caf\xC3\xA9 \xE0\xB8\x81") && back == "\x80 caf\xE9 ?");
    EXPECT_TRUE(back.fromWChar(L"\x141\xFF21\x3000", 2) && back == "LA");  // near likenesses
    EXPECT_TRUE(!back.fromUTF8("abc\xFF") && back.isEmpty());
    EXPECT_TRUE(back.fromAscii("a\xE9z", 2) && back == "a?");
    const SAnsiString large(std::string(3000, '\xE9').c_str());  // more than one piece
    EXPECT_EQ(large.getNBytesForUTF8(), 6001U);
    std::string utf8(6001, '#');
    EXPECT_EQ(large.toUTF8(utf8.data(), 6001), 6000);
    EXPECT_EQ(utf8.find_first_not_of("\xC3\xA9"), 6000U);
}

TEST(WideConversion, CutsWithQuestionMarks) {
    const LocaleScope locale(kLocale1252);
    const SWCharString s(L"a\xE9\x30BD\xD83D");
    char bytes[32];
    EXPECT_EQ(s.toMBCS(bytes, 32), 5);
    EXPECT_STREQ(bytes, "a\xE9??");
    EXPECT_EQ(s.toAscii(bytes, 5), 5);
    EXPECT_STREQ(bytes, "a???");
    EXPECT_EQ(s.toUTF8(bytes, 9), -1);
    EXPECT_EQ(s.toUTF8(bytes, 0xFFFFFFFF), 10);  // "there is room enough"
    EXPECT_STREQ(bytes, "a\xC3\xA9\xE3\x82\xBD\xEF\xBF\xBD");
    SWCharString back(L"old");
    EXPECT_TRUE(back.fromMBCS("\x80\x81") && back == L"\x20AC\x81");
    EXPECT_TRUE(!back.fromUTF8("\xED\xA0\x80") && back.isEmpty());
    tarntest::AssertRecorder asserts;
    EXPECT_TRUE(back.fromMBCS(nullptr) && asserts.sawLast("sstring", "inBuffer != 0"));
    EXPECT_TRUE(s.toMBCS(nullptr, 9) == -1 && asserts.sawLast("sstring", "outBuffer != 0"));
    EXPECT_TRUE(s.toUTF8(nullptr, 9) == -1 && asserts.sawLast("sstring", "outBuffer!=NULL"));
    EXPECT_EQ(SDecodedString(SWCharString(L"x")), L"x");
}

TEST(Cp932Conversion, NeverCutsACharacterInHalf) {
    const LocaleScope locale(kLocale932);
    char bytes[8] = "#######";
    EXPECT_EQ(SWCharString(L"A\x30BD\x30BD").toMBCS(bytes, 4), 5);  // size + 1, no terminator
    EXPECT_EQ(std::string(bytes, 5), "A\x83\x5C?#");
    EXPECT_EQ(CodesetConverter::ucs2tombs(bytes, L"A\x30BD", 2), 2);
    EXPECT_EQ(std::string(bytes, 2), "A?");
    EXPECT_EQ(CodesetConverter::ucs2tombs(bytes, L"\x30BD", 2), 2);
    EXPECT_EQ(std::string(bytes, 3), "\x83\x5C\x5C");  // the third byte is of before
    EXPECT_EQ(CodesetConverter::ucs2tombs(nullptr, L"A\x30BD\xE01", 0), 4);
    wchar_t units[8] = L"#######";
    EXPECT_EQ(CodesetConverter::mbstoucs2(units, "\x83\x5C\x83", 8), 2);
    EXPECT_STREQ(units, L"\x30BD?");
    EXPECT_EQ(CodesetConverter::mbstoucs2(units, "abc", 2), 2);
    EXPECT_EQ(units[2], L'\0');  // of before
    EXPECT_EQ(CodesetConverter::mbtoucs2(units, "\x83"), -1);
    EXPECT_EQ(CodesetConverter::ucs2tomb(bytes, 1, 0x30BD), -1);
    EXPECT_EQ(CodesetConverter::ucs2towcs(units, L"wide", 3), 3);
    EXPECT_EQ(SAnsiString("\x83\x5C").getNBytesForWChar(), 4U);
    SAnsiString large;
    for (int i = 0; i < 1000; ++i) large += "\x83\x5C";
    EXPECT_EQ(large.getNBytesForUTF8(), 3001U);
    SAnsiString back;
    EXPECT_TRUE(back.fromUTF8("\xE3\x82\xBD\xC3\xA9") && back == "\x83\x5C\x65");
}

TEST(NamedCodesets, ConvertBothWays) {
    const LocaleScope locale(kLocale1252);
    for (const auto& c : tarntest::ReadCases("strings/codesets.txt")) {
        const auto codeset = static_cast<Codeset::ExplicitCodeset>(std::stoi(c[0]));
        EXPECT_EQ(Codeset::ExplicitCodesetToT(c[1].c_str(), codeset), c[2].c_str()) << codeset;
        const SSimpleBuffer bytes = Codeset::TToExplicitCodeset(c[2].c_str(), codeset);
        EXPECT_EQ(Bytes(bytes), c[1]) << codeset;
        EXPECT_EQ(bytes.getBufferProtected()[bytes.getNBytes()], 0);
        EXPECT_EQ(Codeset::ExplicitCodesetToT(bytes, codeset), c[2].c_str());
    }
    EXPECT_EQ(Codeset::ExplicitCodesetToT("\x83\x5C", Codeset::Windows932),
              "?");  // not in this process's code page
    EXPECT_EQ(Codeset::ExplicitCodesetToT(static_cast<const char*>(nullptr), Codeset::Windows932), "");
    EXPECT_EQ(Codeset::TToExplicitCodeset("", Codeset::UTF8).getNBytes(), 0U);
    tarntest::AssertRecorder asserts;
    EXPECT_EQ(Codeset::ExplicitCodesetToT("x", static_cast<Codeset::ExplicitCodeset>(6)), "");
    EXPECT_TRUE(asserts.sawLast("mbcscodesetconverter", "codeset is known"));
}

TEST(NamedCodesets, TraceIllegalUTF8) {
    const tarntest::AssertRecorder recorder(tarntest::kTracesToo);
    const std::string text = std::string(1000, 'x') + "\xC3\xA9\xFF!";
    EXPECT_EQ(Codeset::ExplicitCodesetToT(text.c_str(), Codeset::UTF8), "");
    EXPECT_EQ(recorder.last(), "9 mbcscodesetconverter: failed UTF8 -> UCS2 conversion at byte 1002 of 1004");
}

// A count is a count: only texts without one end at their zero.
TEST(CountedSources, KeepZeroUnits) {
    const auto text = [](const auto& s) { return std::string(s.getString(), s.end().getPtr()); };
    const std::string three("a\0b", 3);
    SAnsiString ansi;
    SAsciiString ascii;
    SWCharString wide;
    EXPECT_TRUE(ansi.fromAscii("a\0bc", 3) && text(ansi) == three);
    EXPECT_TRUE(ansi.fromMBCS("a\0bc", 3) && text(ansi) == three);
    EXPECT_TRUE(ansi.fromWChar(L"a\0bc", 3) && text(ansi) == three);
    EXPECT_TRUE(ansi.fromUTF8("a\0bc", 3) && text(ansi) == three);
    EXPECT_TRUE(ascii.fromMBCS("a\0bc", 3) && ascii.fromUTF8("a\0bc", 3) && text(ascii) == three);
    EXPECT_FALSE(ascii.fromWChar(L"a\0\xE9", 3));
    EXPECT_TRUE(wide.fromMBCS("a\0bc", 3) && text(wide) == three);
    EXPECT_TRUE(wide.fromAscii("a\0bc", 3) && wide.fromOCA(wide.getString(), 3) && text(wide) == three);
    EXPECT_TRUE(ansi.fromMBCS("a\0bc") && ansi == "a");
    for (const auto codeset : {Codeset::UTF8, Codeset::Windows1252}) {
        const SSimpleBuffer bytes = Codeset::TToExplicitCodeset(SAnsiString("a\0b", 3), codeset);
        EXPECT_EQ(Bytes(bytes), three);
        EXPECT_EQ(text(Codeset::ExplicitCodesetToT(bytes, codeset)), three);
    }
}

// Sizes and what is written are of one code page, whatever another thread sets in between.
TEST(Cp932Conversion, KeepsToItsRoomWhileTheLocaleChanges) {
    const LocaleScope locale(kLocale932);
    constexpr std::uint32_t kCharacters = 600, kMargin = 4 * kCharacters;
    SAnsiString text;
    for (std::uint32_t i = 0; i < kCharacters; ++i) text += "\x83\x5C";
    const SWCharString units(std::wstring(kCharacters, L'\x30BD').c_str());
    std::atomic<bool> stop{false};
    std::thread other([&stop] {
        while (!stop) std::setlocale(LC_CTYPE, "C"), std::setlocale(LC_CTYPE, kLocale932);
    });
    const auto keepsTo = [](std::uint32_t bytes, auto convert) {
        std::string out(bytes + kMargin, '#');
        convert(out.data(), bytes);
        return out.find_first_not_of('#', bytes) == std::string::npos;
    };
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(2);
    while (!testing::Test::HasFailure() && std::chrono::steady_clock::now() < end) {
        EXPECT_TRUE(keepsTo(kCharacters + 1, [&](char* out, std::uint32_t n) { text.toAscii(out, n); }));
        EXPECT_TRUE(keepsTo(3 * kCharacters + 1, [&](char* out, std::uint32_t n) { text.toUTF8(out, n); }));
        EXPECT_TRUE(keepsTo(2 * kCharacters + 2, [&](char* out, std::uint32_t n) {
            text.toWChar(reinterpret_cast<wchar_t*>(out), n);
        }));
        SWCharString wide;
        wide.fromMBCS(text.getString());
        EXPECT_TRUE(wide == units || (wide.getLength() == 2 * kCharacters && wide.endsWith(L"\x83\x5C")));
        SAnsiString narrow;
        narrow.fromWChar(units.getString());
        EXPECT_TRUE(narrow == text || narrow == std::string(kCharacters, '?').c_str());
        const SChar_t<char, 0> character("\x83\x5C");
        char one[3] = {};
        const int written = character.toMBCSChar(one, 2);
        EXPECT_EQ(std::string(one), written == 2 ? "\x83\x5C" : written == 1 ? "\x83" : "") << written;
    }
    stop = true;
    other.join();
}
