#include "tarnlib/UTFConverter.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include <windows.h>

#include "support/case_file.h"
#include "support/locale_scope.h"
#include "support/print_strings.h"

using namespace TarnLibA500;
using Converter = CUTFConverter;

namespace {

template <class unit>
struct Outcome {
    Converter::Result result;
    std::size_t read;
    std::basic_string<unit> units;
};

// From a block of exactly the source's size, for guarded heaps, into room with a margin behind that must
// stay.
template <class To, class From, class Out, class In>
Outcome<Out> Convert(const std::basic_string<In>& text, std::size_t room, Converter::Mode mode) {
    constexpr std::size_t margin = 64;
    const std::vector<From> source(text.begin(), text.end());
    std::vector<To> out(room + margin, To('#'));
    const From* at = source.data();
    To* end = out.data();
    const auto result = Converter::Convert(at, at + source.size(), end, end + room, mode);
    EXPECT_EQ(std::vector<To>(out.begin() + static_cast<int>(room), out.end()),
              std::vector<To>(margin, To('#')));
    return {result, static_cast<std::size_t>(at - source.data()), {out.data(), end}};
}
Outcome<wchar_t> Decode(const std::string& bytes, std::size_t room = 1000,
                        Converter::Mode mode = Converter::Lenient) {
    return Convert<wchar_t, unsigned char, wchar_t>(bytes, room, mode);
}
Outcome<char> Encode(const std::wstring& units, std::size_t room = 1000,
                     Converter::Mode mode = Converter::Lenient) {
    return Convert<unsigned char, wchar_t, char>(units, room, mode);
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

TEST(UTFCore, AcceptsWellFormedUTF8Only) {
    for (const auto& c : tarntest::ReadCases("strings/utf8_table_3_7.txt")) {
        const bool ok = c[1] == "ok";
        const auto bad = c[1] == "cut" ? Converter::SourceExhausted : Converter::SourceIllegal;
        // Alone, and behind and before enough text for the fast loops.
        for (const std::string& before :
             {std::string(), std::string(40, 'a'), std::string("\xE3\x81\x82\xC3\xA4")}) {
            for (const std::size_t after : {0, c[1] == "cut" ? 0 : 20}) {
                const std::string text = before + c[0] + std::string(after, 'z');
                const Outcome outcome = Decode(text);
                EXPECT_EQ(outcome.result, ok ? Converter::ConversionOK : bad) << testing::PrintToString(text);
                EXPECT_EQ(outcome.read, ok ? text.size() : before.size()) << testing::PrintToString(text);
            }
        }
    }
}

TEST(UTFCore, StopsBeforeWhatDoesNotFit) {
    const auto expectStops = [](const auto& text, std::size_t size, std::size_t unused, auto convert) {
        for (std::size_t room = 0; room <= size; ++room) {
            const auto first = convert(text, room, Converter::Lenient);
            EXPECT_EQ(first.result, room == size ? Converter::ConversionOK : Converter::TargetExhausted)
                << room;
            EXPECT_EQ(convert(text.substr(0, first.read), 1000, Converter::Lenient).units, first.units)
                << room;
            EXPECT_LT(room - first.units.size(), unused);
        }
    };
    const wchar_t* const lines[] = {
        L"\xD83D\xDE00-0123456789ABCDEF\x3042\x3044\xE4\xD83D\xDE00-",  // of every length
        L"0123456789ABCDE\xE4-0123456789ABCDEFG\xF6",                   // single characters of two bytes
        L"0123456789abcdefghijklmnopqrstuv",
        L"\x65E5\x672C\x8A9E\x3042",
        L"\x41F\x440\x438-\x65E5\x41C",  // of one to three bytes
    };
    for (const std::wstring line : lines) {
        std::wstring text;
        while (text.size() < 80) text += line;
        const std::string bytes = Encode(text).units;
        expectStops(text, bytes.size(), 4, Encode);  // the next character may need so many
        expectStops(bytes, text.size(), 2, Decode);  // a pair may leave one place
    }
}

// However a text is cut, what was not read goes in front of the next piece.
TEST(UTFCore, TakesTextInPieces) {
    const auto expectSame = [](const auto& source, const auto& whole, auto convert) {
        for (std::size_t cut = 0; cut <= source.size(); ++cut) {
            const auto first = convert(source.substr(0, cut), 1000, Converter::Lenient);
            const auto rest = convert(source.substr(first.read), 1000, Converter::Lenient);
            EXPECT_EQ(first.result, first.read == cut ? Converter::ConversionOK : Converter::SourceExhausted);
            EXPECT_LT(cut - first.read, 4U);
            EXPECT_EQ(first.units + rest.units, whole) << cut;
        }
    };
    const std::wstring text = L"\xD83D\xDE00-0123456789abcdef\xE4\x20AC\xD83D\xDE00\x65E5\x672C\x8A9E";
    const std::string bytes = Encode(text).units;
    expectSame(bytes, text, Decode);
    expectSame(text, bytes, Encode);
}

TEST(UTFCore, TreatsLoneSurrogatesByMode) {
    for (const std::wstring text :
         {L"\xD800", L"a\xDC00z", L"\xD800\xD800\xDC00", L"0123456789ABCDE\xDFFFxy"}) {
        SOCAString wide(text.c_str());
        SSimpleBuffer utf8;
        EXPECT_TRUE(Converter::UTF16ToUTF8(wide, utf8));
        EXPECT_NE(Bytes(utf8).find("\xEF\xBF\xBD"), std::string::npos);
        EXPECT_EQ(Bytes(utf8).back(), '\0');
        const auto strict = Encode(text, 80, Converter::Strict);
        EXPECT_NE(strict.result, Converter::ConversionOK);
        EXPECT_EQ(text[strict.read] & 0xF800, 0xD800);
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
        const int count = WideCharToMultiByte(CP_UTF8, 0, text.data(), units, bytes, 2000, nullptr, nullptr);
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
    EXPECT_TRUE(Converter::UTF8ToUTF16(nullptr, wide) && wide.isEmpty());
    wide = L"old";
    EXPECT_TRUE(!Converter::UTF8ToUTF16("caf\xE9", wide) && wide.isEmpty());
    EXPECT_EQ(Converter::UTF16ToUTF8Length(L"\xD83D\xDE00"), 5U);
    EXPECT_EQ(Converter::WideCharToUTF8Length(L"\xD83D\xDE00"), 7U);
    EXPECT_EQ(Converter::UTF16ToUCS4(L"a\xD83D\xDE00", nullptr, 0), 4U);
    Converter::UCS4 codes[3] = {9, 9, 9};
    EXPECT_EQ(Converter::UTF16ToUCS4(L"a\xD83D\xDE00", codes, 3), 4U);
    EXPECT_TRUE(codes[1] == 0x1F600 && codes[2] == 0);
    EXPECT_EQ(Converter::UTF16ToUCS4(L"abc", codes, 2), 2U);
    EXPECT_EQ(Converter::UTF16ToUCS4(L"a", codes, 1), 1U);  // no room for the terminator
    EXPECT_EQ(codes[1], U'b');
    unsigned char* bytes = nullptr;
    std::uint32_t length = 9;
    EXPECT_TRUE(!Converter::ConvertToUTF8String(L"x", 0, bytes, length) && length == 0);
    EXPECT_TRUE(Converter::ConvertToUTF8String(L"\xE9\xD800", 2, bytes, length));
    EXPECT_STREQ(reinterpret_cast<char*>(bytes), "\xC3\xA9\xEF\xBF\xBD");
    EXPECT_EQ(length, 5U);
    SSimpleBuffer::dealloc(bytes);
    EXPECT_TRUE(Converter::ConvertToUTF8String(L"\xE9", 0xFFFFFFFF, bytes, length));
    EXPECT_STREQ(reinterpret_cast<char*>(bytes), "\xC3\xA9");
    SSimpleBuffer::dealloc(bytes);
    EXPECT_TRUE(Converter::UTF8ToUTF16("\xC3\xA9", 0xFFFFFFFF, wide) && wide == L"\xE9");
    EXPECT_TRUE(Converter::UTF8ToUTF16("a\0b", 3, wide) && wide.getLength() == 3);
    const tarntest::LocaleScope locale(tarntest::kLocale1252);
    CUTFConverter object(SAnsiString("\x80"));
    EXPECT_TRUE(object.getBuffer() == std::string("\xE2\x82\xAC") && object.getLength() == 3);
}
