#include "tarnlib/UTFConverter.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include <windows.h>

#include "support/locale_scope.h"
#include "support/print_strings.h"

using namespace TarnLibA500;
using Converter = CUTFConverter;

namespace {

struct Outcome {
    Converter::Result result;
    std::size_t read;
    std::wstring units;
};

Outcome Decode(const std::string& bytes, std::size_t room = 100, Converter::Mode mode = Converter::Lenient) {
    std::wstring out(room, L'#');
    const auto* const first = reinterpret_cast<const unsigned char*>(bytes.data());
    const unsigned char* at = first;
    wchar_t* end = out.data();
    const auto result = Converter::Convert(at, first + bytes.size(), end, out.data() + room, mode);
    out.resize(static_cast<std::size_t>(end - out.data()));
    return {result, static_cast<std::size_t>(at - first), out};
}

std::string Bytes(const SSimpleBuffer& buffer) {
    return {reinterpret_cast<const char*>(buffer.getBufferProtected()), buffer.getNBytes()};
}

// Text of all lengths in all scripts, with the unusual at every offset of the fast loops.
std::wstring RandomText(std::mt19937& random) {
    static const wchar_t* const pieces[] = {L"abcdefghijklmnopqrstuvwxyz",    L"\xE4",         L"\x3B1\x3B2",
                                            L"\x65E5\x672C\x8A9E\x3001",      L"\xD83D\xDE00", L"x",
                                            L"\x7F\x80\x7FF\x800\xFFFD\xFFFF"};
    std::wstring text;
    for (unsigned n = random() % 12; n != 0; --n) {
        text += std::wstring(pieces[random() % 7]).substr(0, 1 + random() % 26);
        if ((text.back() & 0xFC00) == 0xD800) text += L'\xDE00';
    }
    return text;
}

}  // namespace

// Table 3-7 of the Unicode Standard: the boundaries of every row, and what lies just outside.
TEST(UTFCore, AcceptsWellFormedUTF8Only) {
    struct Case {
        const char* bytes;
        Converter::Result result;
    };
    constexpr auto ok = Converter::ConversionOK;
    constexpr auto cut = Converter::SourceExhausted;
    constexpr auto bad = Converter::SourceIllegal;
    const Case cases[] = {
        {"\x01", ok},
        {"\x7F", ok},
        {"\xC2\x80", ok},
        {"\xDF\xBF", ok},
        {"\xE0\xA0\x80", ok},
        {"\xE0\xBF\xBF", ok},
        {"\xE1\x80\x80", ok},
        {"\xEC\xBF\xBF", ok},
        {"\xED\x80\x80", ok},
        {"\xED\x9F\xBF", ok},
        {"\xEE\x80\x80", ok},
        {"\xEF\xBF\xBF", ok},
        {"\xF0\x90\x80\x80", ok},
        {"\xF1\x80\x80\x80", ok},
        {"\xF4\x8F\xBF\xBF", ok},
        {"\x80", bad},
        {"\xBF", bad},
        {"\xC0\x80", bad},
        {"\xC1\xBF", bad},
        {"\xC2\x7F", bad},
        {"\xC2\xC0", bad},
        {"\xE0\x9F\xBF", bad},
        {"\xE1\x80\x7F", bad},
        {"\xED\xA0\x80", bad},
        {"\xED\xBF\xBF", bad},
        {"\xF0\x8F\xBF\xBF", bad},
        {"\xF4\x90\x80\x80", bad},
        {"\xF5\x80\x80\x80", bad},
        {"\xF1\x80\x80\xC0", bad},
        {"\xFF\x80\x80\x80\x80\x80", bad},
        {"\xC2", cut},
        {"\xE0\xA0", cut},
        {"\xF0\x90\x80", cut},
    };
    for (const Case& c : cases) {
        // Alone, and behind and before enough text for the fast loops.
        for (const std::string& before :
             {std::string(), std::string(40, 'a'), std::string("\xE3\x81\x82\xC3\xA4")}) {
            const std::string after = c.result == cut ? "" : std::string(20, 'z');
            const Outcome outcome = Decode(before + c.bytes + after);
            EXPECT_EQ(outcome.result, c.result) << before.size() << ' ' << testing::PrintToString(c.bytes);
            EXPECT_EQ(outcome.read,
                      c.result == ok ? before.size() + std::strlen(c.bytes) + after.size() : before.size());
        }
    }
}

TEST(UTFCore, StopsBeforeWhatDoesNotFit) {
    for (std::size_t room = 0; room < 40; ++room) {
        const std::string text =
            "\xF0\x9F\x98\x80"
            "0123456789ABCDEF"
            "\xE3\x81\x82\xE3\x81\x84\xC3\xA4\xF0\x9F\x98\x80";
        const Outcome outcome = Decode(text, room);
        const bool fits = room >= 23;
        EXPECT_EQ(outcome.result, fits ? Converter::ConversionOK : Converter::TargetExhausted);
        const Outcome prefix = Decode(text.substr(0, outcome.read));
        EXPECT_EQ(prefix.units, outcome.units) << room;
        EXPECT_LE(room - outcome.units.size(), fits ? room : 1);  // a pair may leave one place
    }
}

// However a text is cut, what was not read goes in front of the next piece.
TEST(UTFCore, TakesTextInPieces) {
    const std::wstring text = L"\xD83D\xDE00-0123456789abcdef\xE4\x20AC\xD83D\xDE00\x65E5\x672C\x8A9E";
    char utf8[80] = {};
    WideCharToMultiByte(CP_UTF8, 0, text.c_str(), -1, utf8, 80, nullptr, nullptr);
    const std::string bytes = utf8;
    for (std::size_t cut = 0; cut <= bytes.size(); ++cut) {
        const Outcome first = Decode(bytes.substr(0, cut));
        EXPECT_EQ(first.result, first.read == cut ? Converter::ConversionOK : Converter::SourceExhausted);
        EXPECT_LT(cut - first.read, 4U);
        EXPECT_EQ(first.units + Decode(bytes.substr(first.read)).units, text) << cut;
    }
    for (std::size_t cut = 0; cut <= text.size(); ++cut) {
        unsigned char out[80] = {};
        unsigned char* end = out;
        const wchar_t* at = text.data();
        const auto result = Converter::Convert(at, text.data() + cut, end, out + 80);
        const bool isWhole = at == text.data() + cut;
        EXPECT_EQ(result, isWhole ? Converter::ConversionOK : Converter::SourceExhausted) << cut;
        EXPECT_EQ(Converter::Convert(at, text.data() + text.size(), end, out + 80), Converter::ConversionOK);
        EXPECT_STREQ(reinterpret_cast<char*>(out), utf8) << cut;
    }
}

TEST(UTFCore, TreatsLoneSurrogatesByMode) {
    for (const std::wstring text : {L"\xD800", L"a\xDC00z", L"\xD800\xD800\xDC00",
                                    L"0123456789ABCDE\xDFFF"
                                    L"FG"}) {
        SOCAString wide(text.c_str());
        SSimpleBuffer utf8;
        EXPECT_TRUE(Converter::UTF16ToUTF8(wide, utf8));
        EXPECT_NE(Bytes(utf8).find("\xEF\xBF\xBD"), std::string::npos);
        EXPECT_EQ(Bytes(utf8).back(), '\0');
        unsigned char out[80];
        const wchar_t* at = text.data();
        unsigned char* end = out;
        EXPECT_NE(Converter::Convert(at, at + text.size(), end, out + 80, Converter::Strict),
                  Converter::ConversionOK);
        EXPECT_EQ(*at & 0xF800, 0xD800);
    }
    const Converter::UCS4 values[] = {0x110000, 0xD800, 0x10FFFF};
    const Converter::UCS4* at = values;
    wchar_t out[8];
    wchar_t* end = out;
    EXPECT_EQ(Converter::Convert(at, values + 3, end, out + 8), Converter::ConversionOK);
    EXPECT_EQ(std::wstring(out, end), L"\xFFFD\xFFFD\xDBFF\xDFFF");
}

TEST(UTFDifferential, AgreesWithTheSystemBothWays) {
    std::mt19937 random(37);
    for (int i = 0; i < 20'000; ++i) {
        const std::wstring text = RandomText(random);
        char bytes[2000];
        const int units = static_cast<int>(text.size());
        const int count =
            units == 0 ? 0
                       : WideCharToMultiByte(CP_UTF8, 0, text.data(), units, bytes, 2000, nullptr, nullptr);
        SSimpleBuffer utf8;
        ASSERT_TRUE(Converter::UTF16ToUTF8(SOCAString(text.data(), static_cast<std::uint32_t>(units)), utf8));
        ASSERT_EQ(Bytes(utf8), std::string(bytes, static_cast<std::size_t>(count)) + '\0');
        ASSERT_EQ(Converter::UTF16ToUTF8Length(text.c_str()), static_cast<unsigned>(count) + 1);
        SOCAString back;
        ASSERT_TRUE(Converter::UTF8ToUTF16(bytes, static_cast<std::uint32_t>(count), back));
        ASSERT_EQ(std::wstring(back.getString(), back.getLength()), text);
        Converter::UCS4Buffer codes;
        Converter::UTF8Buffer again;
        ASSERT_TRUE(Converter::UTF16ToUCS4(back, codes) && Converter::UCS4ToUTF8(codes.getBuffer(), again));
        ASSERT_EQ(std::string(again.getBuffer(), again.getLength()),
                  std::string(bytes, static_cast<std::size_t>(count)));
    }
}

TEST(UTFConverter, WholeTexts) {
    SOCAString wide(L"old");
    EXPECT_TRUE(Converter::UTF8ToUTF16(static_cast<const char*>(nullptr), wide));
    EXPECT_TRUE(wide.isEmpty());
    wide = L"old";
    EXPECT_FALSE(Converter::UTF8ToUTF16("caf\xE9", wide));
    EXPECT_TRUE(wide.isEmpty());
    SSimpleBuffer utf8;
    EXPECT_TRUE(Converter::UTF16ToUTF8(SOCAString(), utf8));
    EXPECT_EQ(Bytes(utf8), std::string(1, '\0'));
    EXPECT_TRUE(Converter::UTF16ToUTF8(SOCAString(L"A"), utf8));
    EXPECT_EQ(utf8.getNBytes(), 2U);
    EXPECT_EQ(Converter::UTF16ToUTF8Length(L"\xD83D\xDE00"), 5U);
    EXPECT_EQ(Converter::WideCharToUTF8Length(L"\xD83D\xDE00"), 7U);
    EXPECT_EQ(Converter::UTF16ToUCS4(L"a\xD83D\xDE00", nullptr, 0), 4U);
    Converter::UCS4 codes[3] = {9, 9, 9};
    EXPECT_EQ(Converter::UTF16ToUCS4(L"a\xD83D\xDE00", codes, 3), 4U);
    EXPECT_EQ(codes[1], 0x1F600U);
    EXPECT_EQ(codes[2], 0U);
    EXPECT_EQ(Converter::UTF16ToUCS4(L"abc", codes, 2), 2U);
    unsigned char* bytes = nullptr;
    std::uint32_t length = 9;
    EXPECT_FALSE(Converter::ConvertToUTF8String(L"x", 0, bytes, length));
    EXPECT_EQ(length, 0U);
    EXPECT_TRUE(Converter::ConvertToUTF8String(L"\xE9\xD800", 2, bytes, length));
    EXPECT_STREQ(reinterpret_cast<char*>(bytes), "\xC3\xA9\xEF\xBF\xBD");
    EXPECT_EQ(length, 5U);
    SSimpleBuffer::dealloc(bytes);
    EXPECT_TRUE(Converter::ConvertToUTF8String(L"\xE9", 0xFFFFFFFF, bytes, length));
    EXPECT_STREQ(reinterpret_cast<char*>(bytes), "\xC3\xA9");
    SSimpleBuffer::dealloc(bytes);
    EXPECT_TRUE(Converter::UTF8ToUTF16("\xC3\xA9", 0xFFFFFFFF, wide));
    EXPECT_EQ(wide, L"\xE9");
    EXPECT_TRUE(Converter::UTF8ToUTF16("a\0b", 3, wide));
    EXPECT_EQ(wide.getLength(), 3U);
    const tarntest::LocaleScope locale(tarntest::kLocale1252);
    CUTFConverter object(SAnsiString("\x80"));
    EXPECT_STREQ(object.getBuffer(), "\xE2\x82\xAC");
    EXPECT_EQ(object.getLength(), 3U);
}
