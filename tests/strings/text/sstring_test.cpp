#include "tarnlib/sstring.h"
#include "tarnlib/sconcat.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <functional>
#include <limits>
#include <memory>
#include <random>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <windows.h>

#include "support/assert_recorder.h"
#include "support/calls.h"
#include "support/locale_scope.h"
#include "support/thrown.h"
#include "tarnlib/codesetconverter.h"

using namespace TarnLibA500;
using tarntest::Arguments, tarntest::Number, tarntest::WhatOf, tarntest::YesNo;
using tarntest::kLocale1252;
using tarntest::kLocale932;
using tarntest::LocaleScope;

namespace {

// Opens the buffer control that derived classes use.
template <class String>
class Probe : public String {
  public:
    using String::String;
    using Base = typename String::Base;
    using Buffer = typename Base::SStringBuffer;
    using Base::allocBuffer, Base::concatAllocHelper, Base::copyOnWrite, Base::GetEmptyBuffer,
        Base::getStringBuffer;
    using Base::releaseBuffer, Base::releaseStringBuffer, Base::setBuffer, Base::unlinkBuffer;
    std::uint32_t capacity() const { return this->getStringBuffer()->capacity; }
    int references() const { return this->getStringBuffer()->refCount; }
    bool isOnEmptyBuffer() const { return this->getStringBuffer() == Base::GetEmptyBuffer(); }
};
using Ansi = Probe<SAnsiString>;
using Wide = Probe<SWCharString>;

std::wstring FromLatin(const std::string& text) {
    std::wstring wide;
    for (const char c : text) wide += static_cast<unsigned char>(c);
    return wide;
}

std::string_view Text(const SString_t<char, 0>& s) {
    return {s.getString(), s.getLength()};
}

// A number is no text and no count a truth value, but a null pointer is an empty text.
template <class String>
concept TakesNull = requires(String s) {
    s = 0;
    s = NULL;
    s = nullptr;
};
template <class String, class Number>
concept TakesNumber = std::is_constructible_v<String, Number> || std::is_assignable_v<String&, Number> ||
    requires(String s, Number n) {
    s += n;
} || requires(String s, Number n) {
    s.concat(n);
};
template <class String, class Unit>
concept TakesUnitAtIndex = std::is_assignable_v<decltype(std::declval<String&>()[0]), Unit>;
template <class String, class Unit>
constexpr bool kRefusesMisuse =
    TakesNull<String> && !TakesNumber<String, int> && !TakesNumber<String, bool> &&
    !TakesNumber<String, double> && !std::is_constructible_v<String, const Unit*, bool> &&
    !TakesUnitAtIndex<String, Unit>;
static_assert(kRefusesMisuse<SAnsiString, char> && kRefusesMisuse<SAsciiString, char> &&
              kRefusesMisuse<SWCharString, wchar_t> && kRefusesMisuse<SAnsiStringCI, char>);
static_assert(!TakesNumber<SAnsiString, wchar_t>);

template <class String>
std::string Walk(const String& text) {
    std::string units;
    for (const auto character : text) {
        if (units.size() > 9) return "for ever";
        units += character.getLength() == 0 ? '0' : static_cast<char>(*character.getUnits());
    }
    return units;
}

SAnsiString Order(const SAnsiString& a, const SAnsiString& b) {
    EXPECT_EQ(b.compare(a.getString()), -a.compare(b));
    return Number(a.compare(b));
}

SAnsiString EqualsNoCase(const SAnsiStringCI& a, const char* b) {
    EXPECT_NE(a == b, a != b);
    return YesNo(a == b);
}

// A text in a block of its very size: what is read beyond it faults where blocks are guarded.
std::vector<char> Exact(const SAnsiString& text) {
    return {text.getString(), text.getString() + text.getLength() + 1};
}

std::uint32_t Count(const SAnsiString& digits) {
    return static_cast<std::uint32_t>(std::stoul(digits.getString()));
}

// Into every room that is too small, too: a part of it then, and never half a character.
SWCharString ToWide(const SAnsiString& text) {
    const auto exact = Exact(text);
    SWCharString whole;
    whole.fromMBCS(exact.data(), text.getLength());
    const auto units = static_cast<std::uint32_t>(CodesetConverter::mbstoucs2(nullptr, exact.data(), 0));
    EXPECT_TRUE(units == whole.getLength() && text.getNBytesForWChar() == 2 * units + 2);
    for (std::uint32_t room = 0; room <= units; ++room) {
        const auto out = std::make_unique<wchar_t[]>(room);  // for 0, too, an address
        const int written = CodesetConverter::mbstoucs2(out.get(), exact.data(), room);
        EXPECT_EQ(SWCharString(out.get(), static_cast<std::uint32_t>(written)),
                  whole.left(static_cast<std::uint32_t>(written)));
        EXPECT_TRUE(written + 1 >= static_cast<int>(room) &&
                    (written == 0 || (out[static_cast<std::size_t>(written) - 1] & 0xFC00) != 0xD800));
    }
    return whole;
}

// At once and by way of UTF-16.
SAnsiString ToUtf8(const SAnsiString& text) {
    const SWCharString wide = ToWide(text);
    std::vector<char> once(text.getNBytesForUTF8()), twice(wide.getNBytesForUTF8());
    EXPECT_EQ(text.toUTF8(once.data(), text.getNBytesForUTF8()) + 1, static_cast<int>(once.size()));
    EXPECT_EQ(wide.toUTF8(twice.data(), wide.getNBytesForUTF8()), static_cast<int>(twice.size()));
    EXPECT_STREQ(once.data(), twice.data());
    SAnsiString back;
    back.fromWChar(wide.getString(), wide.getLength());
    return back;
}

SAnsiString ToAscii(const SAnsiString& text) {
    std::vector<char> out(text.getNBytesForAscii());
    EXPECT_EQ(text.toAscii(out.data(), text.getNBytesForAscii()), static_cast<int>(out.size()));
    return out.data();
}

SAnsiString FromUtf8(const SAnsiString& text) {
    SAnsiString taken("old");
    return taken.fromUTF8(Exact(text).data(), text.getLength()) ? taken : "no" + taken;
}

// In place a text may not grow, whatever becomes of its letters.
SAnsiString MappedInPlace(const SAnsiString& text, void (*map)(char*, std::uint32_t)) {
    auto exact = Exact(text);
    map(exact.data(), 0xFFFFFFFF);
    EXPECT_LE(std::strlen(exact.data()), text.getLength());
    return exact.data();
}

template <class Edit>
SAnsiString Edited(SAnsiString text, Edit edit) {
    const SAnsiString shared(text);
    edit(text);
    return text;
}

// Positions are in bytes.
const tarntest::Calls kCalls = {
    {"find",
     [](const Arguments& a) { return Number(a[0].find(Exact(a[1]).data()).getPtr() - a[0].getString()); }},
    {"find last", [](const Arguments& a) { return Number(a[0].findLast(a[1]).getPtr() - a[0].getString()); }},
    {"starts with", [](const Arguments& a) { return YesNo(a[0].startsWith(Exact(a[1]).data())); }},
    {"ends with", [](const Arguments& a) { return YesNo(a[0].endsWith(Exact(a[1]).data())); }},
    {"compare", [](const Arguments& a) { return Order(a[0], a[1]); }},
    {"compare no case", [](const Arguments& a) { return Number(a[0].compareNoCase(a[1])); }},
    {"equals no case", [](const Arguments& a) { return EqualsNoCase(a[0], Exact(a[1]).data()); }},
    {"less no case", [](const Arguments& a) { return YesNo(SAnsiStringCI(a[0]) < a[1].getString()); }},
    {"characters", [](const Arguments& a) { return Number(a[0].getNChars()); }},
    {"left", [](const Arguments& a) { return a[0].left(Count(a[1])); }},
    {"right", [](const Arguments& a) { return a[0].right(Count(a[1])); }},
    {"mid", [](const Arguments& a) { return a[0].mid(Count(a[1]), Count(a[2])); }},
    {"delete",
     [](const Arguments& a) {
         return Edited(a[0], [&](auto& s) { s.deleteChars(Count(a[1]), Count(a[2])); });
     }},
    {"insert",
     [](const Arguments& a) { return Edited(a[0], [&](auto& s) { s.insertChars(Count(a[2]), a[1]); }); }},
    {"set",
     [](const Arguments& a) { return Edited(a[0], [&](auto& s) { s.setAt(Count(a[2]), a[1].getAt(0)); }); }},
    {"utf-8", [](const Arguments& a) { return ToUtf8(a[0]); }},
    {"from utf-8", [](const Arguments& a) { return FromUtf8(a[0]); }},
    {"ascii", [](const Arguments& a) { return ToAscii(a[0]); }},
    {"trim", [](const Arguments& a) { return SAnsiString(a[0]).trim(); }},
    {"lower",
     [](const Arguments& a) { return MappedInPlace(a[0], &MakeLowerCase), SAnsiString(a[0]).toLower(); }},
    {"upper",
     [](const Arguments& a) { return MappedInPlace(a[0], &MakeUpperCase), SAnsiString(a[0]).toUpper(); }},
};

}  // namespace

TEST(StringBuffer, LayoutIsOnePointerToATwelveByteHeader) {
    static_assert(sizeof(SAnsiString) == sizeof(void*) && sizeof(SWCharStringCI) == sizeof(void*));
    static_assert(sizeof(Ansi::Buffer) == 12);
    const Ansi s("abc");
    EXPECT_EQ(static_cast<const void*>(s.getString()),
              reinterpret_cast<const char*>(s.getStringBuffer()) + 12);
    const Ansi::Buffer& empty = *Ansi::GetEmptyBuffer();
    EXPECT_TRUE(empty.refCount == -1 && empty.length == 0 && empty.capacity == 0xFFFFFFFF &&
                *empty.getBuffer() == '\0');
}

TEST(StringBuffer, GrowsByItsRules) {
    Ansi s;
    EXPECT_EQ(s.concatAllocHelper(0), nullptr);
    EXPECT_TRUE(s.isOnEmptyBuffer());
    s.concat("ab", 2);
    EXPECT_EQ(s.capacity(), 2U + 1 + 32);  // fresh: slack
    s.concat(std::string(40, 'x').c_str());
    EXPECT_EQ(s.capacity(), 2U * 2 + 40 + 1);  // in place: doubling of the old length, no slack
    const Ansi second(s);
    s.concat("y");
    EXPECT_EQ(s.capacity(), 42U + 1 + 1 + 32);  // shared with room: as long as needed
    const Ansi third(s);
    s.concat(std::string(100, 'z').c_str());
    EXPECT_EQ(s.capacity(), 2U * 43 + 100 + 1 + 32);  // shared without room
    EXPECT_EQ(second.getLength(), 42U);
    EXPECT_EQ(third.getLength(), 43U);
    Ansi w;
    for (const auto& [request, capacity] : {std::pair{9U, 42U}, {41U, 42U}, {42U, 75U}}) {
        w.copyOnWrite(request);
        EXPECT_EQ(w.capacity(), capacity);
    }
    Ansi text("hello");
    const Ansi other(text);
    text.copyOnWrite(3);
    EXPECT_EQ(text.capacity(), 5U + 33);
    EXPECT_EQ(text, "hello");
}

TEST(StringBuffer, RefusesImpossibleSizes) {
    for (const std::uint32_t n : {0xFFFFFFE0U, 0xFFFFFFFFU, 0xFFFFFFDFU}) {
        EXPECT_EQ(WhatOf<std::bad_alloc>([n] { Ansi().allocBuffer(n); }), "bad allocation") << n;
    }
    EXPECT_THROW(Wide().allocBuffer(0x7FFFFFDA), std::bad_alloc);  // 12 + 2 x (n + 32) passes 32 bits
    Ansi s("abc");
    EXPECT_THROW(s.copyOnWrite(0xFFFFFFDF), std::bad_alloc);
    EXPECT_THROW(s.setSize(0xFFFFFFFF), std::bad_alloc);
    tarntest::AssertRecorder asserts;
    EXPECT_EQ(s.concatAllocHelper(0xFFFFFFFD), nullptr);  // length + 1 wraps
    EXPECT_EQ(s.concatAllocHelper(0xFFFFFFFA), nullptr);  // the doubled request wraps
    EXPECT_EQ(asserts.count(), 2U);
    EXPECT_EQ(s, "abc");
}

TEST(StringBuffer, WipesWhatItAloneHolds) {
    Ansi secret("password");
    SAnsiString spy(secret);
    EXPECT_FALSE(Ansi::releaseStringBuffer(secret.getStringBuffer(), true));  // counted down, not wiped
    secret.getStringBuffer()->refCount.fetch_add(1);
    EXPECT_EQ(WhatOf<std::runtime_error>([&] { secret.unlinkBuffer(true); }),
              "Cannot overwrite memory, SString buffer is shared.");
    EXPECT_TRUE(secret.isOnEmptyBuffer());
    EXPECT_EQ(spy, "password");
    Ansi alone("password");
    EXPECT_NO_THROW(alone.setBuffer(alone.getStringBuffer(), true));
    EXPECT_NO_THROW(alone.unlinkBuffer(true));
    EXPECT_TRUE(alone.releaseBuffer(true));
    EXPECT_EQ(alone.getStringBuffer(), nullptr);
}

TEST(StringSharing, CopiesShareAndMovesLeaveALiveEmptyString) {
    Ansi a("text");
    Ansi b(a);
    EXPECT_EQ(a.getString(), b.getString());
    EXPECT_EQ(a.references(), 2);
    Ansi c(std::move(a));
    EXPECT_TRUE(a.isOnEmptyBuffer());
    a.concat("again");
    EXPECT_EQ(a, "again");
    b = std::move(c);
    EXPECT_TRUE(c.isEmpty());
    EXPECT_EQ(b.references(), 1);
    Ansi& self = b;
    b = self;
    b = std::move(self);
    EXPECT_EQ(b, "text");
    EXPECT_EQ(b.right(9).getString(), b.getString());  // only right() of a short text shares
    EXPECT_NE(b.left(9).getString(), b.getString());
    EXPECT_EQ(b.left(9), "text");
}

// In the unit flavours a zero unit is a character; a multi-byte text ends there.
TEST(StringEdit, LoopsEndAtZeroUnits) {
    EXPECT_EQ(Walk(SWCharString(L"a\0\0b", 4)), "a00b");
    EXPECT_EQ(Walk(SAsciiString("\0a\0", 3)), "0a0");
    const SAnsiString text("ab\0c", 4);
    EXPECT_EQ(Walk(text), "ab");
    SAnsiString::iterator at = text.begin();
    for (int steps = 0; at < text.end() && steps < 9; ++steps) ++at;
    EXPECT_TRUE(at == text.end() && at.getPtr() == text.getString() + 2);
    EXPECT_EQ(SAnsiString(text.begin(), text.end()), text);
    // A match where a text ends can be told from none only by never being one.
    EXPECT_TRUE(text.findLast(SAnsiString("\0c", 2)) == text.end() &&
                text.find(SAnsiString("\0", 1)) == text.end());
    EXPECT_EQ(text.find(SAnsiString("b\0c", 3)), text.getCursor(1));
    const SWCharString wide(L"\0b\0b", 4);
    EXPECT_EQ(wide.findLast(SWCharString(L"\0b", 2)), wide.getCursor(2));
}

// Nothing may be left of a text that moves while it is read.
TEST(StringEdit, SourcesMayLieInsideTheString) {
    const std::string letters = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ";
    SAnsiString s(letters.c_str());
    s += s;
    EXPECT_EQ(Text(s), letters + letters);
    s.concat(s.getString() + 1, 2);
    EXPECT_EQ(Text(s), letters + letters + "bc");
    s = s.getString() + 50;
    EXPECT_EQ(Text(s), "YZ" + letters + "bc");
    s.insertChars(2, s);
    EXPECT_EQ(Text(s), "YZYZ" + letters + "bc" + letters + "bc");
    s.insertChars(0, s.getString() + 1);
    EXPECT_EQ(Text(s).substr(0, 4), "ZYZa");
    s.copyFrom(s.getString() + 1, 3);
    EXPECT_EQ(Text(s), "YZa");
    for (std::uint32_t n = 0; n <= letters.size(); ++n) {
        SWCharString copied(FromLatin(letters).c_str());
        copied.setSize(200);  // room for both
        copied.concat(copied.getString() + 52 - n, n);
        EXPECT_EQ(copied, FromLatin(letters + letters.substr(52 - n)).c_str());
    }
    constexpr std::uint32_t kLarge = 2'000'000;  // a block of its own, whose memory goes when it moves
    SAsciiString ascii(std::string(kLarge, 'x').c_str());
    ascii.concatFromAsciiCharacters(ascii.getString(), kLarge);
    EXPECT_EQ(ascii, std::string(2 * kLarge, 'x').c_str());
    SWCharString wide(std::wstring(kLarge, L'x').c_str());
    wide.concatFromAsciiCharacters(wide.getString(), kLarge);
    EXPECT_EQ(wide, std::wstring(2 * kLarge, L'x').c_str());
}

TEST(StringEdit, SizesAndSharedBlocks) {
    SAnsiString s("abcd");
    for (const SAnsiString part : {s.right(s.find('c')), s.mid(s.find('c'))}) EXPECT_EQ(part, "cd");
    EXPECT_TRUE(s.getAt(99) == 0 && s.mid(s.end(), s.begin()).isEmpty());
    s.setSize(1);
    s.setSize(100);
    EXPECT_EQ(s, "a");
    s.detach()[0] = 'Y';
    EXPECT_EQ(s + "!" + SAnsiString("?"), "Y!?");
    EXPECT_EQ(SAnsiString(static_cast<const char*>(nullptr)), "");
    EXPECT_EQ(SAnsiString("a\0b", 3).getLength(), 3U);
}

TEST(StringEdit, TrimsByFlavour) {
    const auto wide = [](const std::string& utf8) {
        SWCharString text;
        EXPECT_TRUE(text.fromUTF8(utf8.c_str()));
        return text;
    };
    for (const auto& c : tarntest::ReadCases("strings/trims.txt")) {
        EXPECT_EQ(wide(c[0]).trimLeft(), wide(c[1]));
        EXPECT_EQ(wide(c[0]).trimRight(), wide(c[2]));
        EXPECT_EQ(wide(c[0]).trim(), wide(c[3]));
    }
    Ansi blank(" \t ");
    EXPECT_TRUE((blank.trim(), blank.isOnEmptyBuffer()));
    Ansi word("word");
    const char* const before = word.getString();
    EXPECT_EQ(word.trim().getString(), before);
}

TEST(StringSearch, FindsByFlavour) {
    SAnsiString s("abracadabra, abracadabra");
    EXPECT_EQ(s.find("a", s.getCursor(1)), s.getCursor(3));
    EXPECT_EQ(s.find("", s.getCursor(5)), s.getCursor(5));
    EXPECT_TRUE(s.find(static_cast<const char*>(nullptr)).isAtEnd());
    EXPECT_TRUE(s.startsWith('a') && s.startsWith(s) && s.endsWith('a') && s.endsWith(s));
    EXPECT_FALSE(s.startsWith(nullptr) || s.startsWith('b') || s.endsWith(nullptr) || s.endsWith('b'));
    EXPECT_TRUE(SWCharString(L"\xE9t\xE9").endsWith(L"t\xE9"));
    const SAnsiStringCI mixed("xxABCxabc");
    EXPECT_EQ(mixed.find("aBc"), mixed.getCursor(2));
    EXPECT_TRUE(mixed.startsWith("XXa") && mixed.endsWith("ABC") && !mixed.startsWith("abc"));
    EXPECT_EQ(mixed.find('A', mixed.getCursor(3)), mixed.getCursor(6));
}

TEST(StringCompare, OrdersUnsignedUnitsAndLengths) {
    EXPECT_EQ(SAnsiString("a\0b", 3).compare("a"), 1);
    EXPECT_LT(SWCharString(L"\x7FFF"), SWCharString(L"\x8000"));
    EXPECT_EQ(SAnsiString().compare(static_cast<const char*>(nullptr)), 0);
    EXPECT_EQ(SAsciiString("a").compareNoCase("c"), -2);  // not normalised
    EXPECT_EQ(SAsciiString("b").compareNoCase(static_cast<const char*>(nullptr)), 'b');
    EXPECT_TRUE(SAnsiStringCI("AbC") == "aBc" && SAnsiString("x") < SAnsiStringCI("Y"));
}

TEST(StringCalls, AnswerAsInTheFiles) {
    tarntest::ExpectCalls("strings/string_calls.txt", kCalls);  // the C locale knows ASCII only
    const LocaleScope locale(kLocale1252);
    tarntest::ExpectCalls("strings/string_calls_1252.txt", kCalls);
    EXPECT_EQ(SWCharString(L"\xC9T\xC9").compareNoCase(L"\xE9t\xE9"), 0);
}

TEST(Utf8String, AnswersAsInTheFilesAndAsPython) {
    tarntest::ExpectCalls("strings/string_calls.txt", kCalls);
    tarntest::ExpectCalls(tarntest::Beside("data/utf8_strings.txt", TARN_MADE_CASES).string(), kCalls);
    for (const auto& c : tarntest::ReadCases("strings/trims.txt")) {
        EXPECT_EQ(SAnsiString(c[0].c_str()).trimLeft(), c[1].c_str());
        EXPECT_EQ(SAnsiString(c[0].c_str()).trimRight(), c[2].c_str());
    }
    const LocaleScope locale(kLocale1252);
    tarntest::ExpectCalls("strings/string_calls_utf8.txt", kCalls);
}

// Some texts are ordered without asking the system; the answer must be the system's.
TEST(StringCompare, AgreesWithTheSystemsCollation) {
    for (const auto& [name, id] : {std::pair{"English_United States.1252", 0x409},
                                   {"German_Germany.1252", 0x407},
                                   {"Danish_Denmark.1252", 0x406}}) {
        const LocaleScope locale(name);
        std::mt19937 random(1933);
        const std::string alphabet = "aAbBzZsS019_- .\xE9\xC9\xE4\xC4\xDF";
        const auto text = [&] {
            std::string made;
            for (unsigned n = random() % 6; n != 0; --n) made += alphabet[random() % alphabet.size()];
            return made;
        };
        for (int i = 0; i < 20'000; ++i) {
            const std::string a = text(), b = text();
            const std::wstring left = FromLatin(a), right = FromLatin(b);
            const int system =
                CompareStringW(static_cast<LCID>(id), NORM_IGNORECASE, left.c_str(), -1, right.c_str(), -1) -
                2;
            ASSERT_EQ(SAnsiString(a.c_str()).compareNoCase(b.c_str()), system)
                << name << ": " << a << " | " << b;
        }
    }
}

TEST(StringCase, MapsInPlace) {
    EXPECT_EQ(SAsciiString("x1y").toUpper(), "X1Y");
    EXPECT_EQ(SWCharString(L"\xC9").toLower(), L"\xC9");
    const LocaleScope locale(kLocale1252);
    EXPECT_EQ(SWCharString(L"\x414").toLower(), L"\x434");
    char text[] = "ABCDEF";
    MakeLowerCase(text, 3);
    EXPECT_STREQ(text, "abcDEF");
    SAnsiString large(std::string(2'000'000, 'Q').c_str());
    EXPECT_EQ(large.toLower().findLast('q'), large.getCursor(1'999'999));
    tarntest::AssertRecorder asserts;
    std::uint32_t nBytes = 7;
    char thai[] = "A";
    EXPECT_TRUE(MakeLowerCaseChar(thai, 1, nBytes));
    EXPECT_FALSE(MakeLowerCaseChar(thai, 0, nBytes));
    EXPECT_TRUE(asserts.sawLast("sstring", "MakeLowerCaseChar: Fail to convert back to MBCS"));
}

// Random edits on sharing copies, against std::string: an edit changes its own string and no other.
TEST(StringDifferential, RandomEditsOnSharingCopies) {
    std::mt19937 random(20240229);
    constexpr std::size_t kStrings = 6;
    std::vector<SAnsiString> ours(kStrings);
    std::vector<std::string> theirs(kStrings);
    std::size_t i = 0, k = 0;
    std::uint32_t at = 0, count = 0;
    char c = 0;
    const auto s = [&]() -> SAnsiString& { return ours[i]; };
    const auto t = [&]() -> std::string& { return theirs[i]; };
    const std::function<void()> edits[] = {
        [&] { s() = ours[k], t() = theirs[k]; },
        [&] { s() += c, t() += c; },
        [&] { s().concat(ours[k]), t() += std::string(theirs[k]); },
        [&] { s().insertChars(at, ours[k].left(count)), t().insert(at, theirs[k].substr(0, count)); },
        [&] { s().deleteChars(at, count), t().erase(at, count); },
        [&] { s() = s().mid(at, count), t() = t().substr(at, count); },
        [&] { s().toUpper(), std::transform(t().begin(), t().end(), t().begin(), &toupper); },
        [&] { s().insertChar(at, c), t().insert(at, 1, c); },
        [&] { s().setAt(at, c), at < t().size() ? t().replace(at, 1, 1, c) : t(); }};
    const auto below = [&](std::size_t n) { return static_cast<std::uint32_t>(random() % n); };
    for (int round = 0; round < 30'000; ++round) {
        i = below(kStrings), k = below(kStrings);
        at = below(t().size() + 1), count = below(12), c = static_cast<char>('a' + below(26));
        edits[below(std::size(edits))]();
        if (t().size() > 1000) s().setSize(10), t().resize(10);
        for (std::size_t n = 0; n < kStrings; ++n) ASSERT_EQ(Text(ours[n]), theirs[n]) << round;
        ASSERT_EQ(static_cast<std::size_t>(s().find("ab").getPtr() - s().getString()),
                  std::min(t().find("ab"), t().size()));
        ASSERT_EQ(s().compare(ours[k]) < 0, t() < theirs[k]);
    }
}

TEST(StringThreads, SharersMayBeCopiedAndDestroyedAtOnce) {
    Ansi shared("shared by eight threads");
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(2);
    const auto work = [end](const SAnsiString& original) {
        SAnsiString mine[16];
        for (unsigned round = 0; round % 1024 != 0 || std::chrono::steady_clock::now() < end; ++round) {
            mine[round % 16] = mine[(round * 7 + 3) % 16];
            mine[(round * 5 + 1) % 16] = original;
            if (round % 64 == 0) mine[round % 16] += "!";
        }
    };
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i) threads.emplace_back(work, std::cref(shared));
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(shared.references(), 1);
    EXPECT_EQ(shared, "shared by eight threads");
}

// 83 5C is one character whose trail byte is a backslash.
TEST(Cp932String, CharactersAreWhole) {
    const LocaleScope locale(kLocale932);
    tarntest::ExpectCalls("strings/string_calls_932.txt", kCalls);
    const SAnsiString so("\x83\x5C");
    EXPECT_EQ(SAsciiString(SAnsiString(so + "A"), true), so.getString());  // as many bytes as characters
    EXPECT_EQ(SAsciiString(so, false), "");
    const SAnsiStringCI mixed("\x82\x60" + so + "XY");
    EXPECT_EQ(mixed.find("xy"), mixed.getCursor(2));
}

TEST(RawText, FollowsTheBoundedFunctions) {
    char d[8] = "zzzzzzz";
    const auto after = [&](auto call) {
        call();
        return std::string(d);
    };
    EXPECT_EQ(after([&] { CopyString(d, 0, "x"); }), "zzzzzzz");
    EXPECT_EQ(after([&] { CopyString(d, 4, "abcdef"); }), "abc");
    EXPECT_EQ(after([&] { CopyStringN(d, 4, "ABCDEF", 3); }), "ABC");
    EXPECT_EQ(after([&] { CopyStringN(d, 4, nullptr, 3); }), "ABC");
    EXPECT_EQ(after([&] { CopyStringN(d, 4, "abcdef", 4); }), "");
    EXPECT_EQ(after([&] { ConcatString(d, 8, "abc"); }), "abc");
    EXPECT_EQ(after([&] { ConcatStringN(d, 8, "defghijk", 4); }), "abcdefg");
    EXPECT_EQ(after([&] { ConcatStringN(d, 8, nullptr, 4); }), "abcdefg");
    EXPECT_EQ(after([&] { ConcatString(d, 8, "h"); }), "");
    wchar_t w[4] = L"zzz";
    CopyStringN(w, 4, L"abcdef", 6);
    EXPECT_STREQ(w, L"abc");
    CopyString(w, 0, static_cast<const wchar_t*>(nullptr));
    EXPECT_STREQ(w, L"");
}

TEST(StringStream, AppendsNumbersAndText) {
    SAnsiString s;
    s << "i=" << -1 << ' ' << static_cast<short>(-32768) << ' ' << 18446744073709551615ULL << ' ' << 3.5
      << ' ' << SChar_t<char, 0>('c') << SAnsiString("s");
    EXPECT_EQ(s, "i=-1 -32768 18446744073709551615 3.500000 cs");
    SWCharString w;
    w << L"x" << std::numeric_limits<long long>::min() << L'y' << 1e30;
    EXPECT_EQ(w, L"x-9223372036854775808y1000000000000000019884624838656.000000");
    const Ansi parts(
        Concat("", "i=", -1, ' ', SAnsiString("s"), SChar_t<char, 0>('c'), 18446744073709551615ULL));
    EXPECT_EQ(parts, "i=-1 sc18446744073709551615");
    EXPECT_EQ(parts.capacity(), 27U + 1 + 32);
    EXPECT_EQ(Concat(SWCharString(L"w"), static_cast<short>(-7), L'x', std::numeric_limits<long long>::min()),
              L"w-7x-9223372036854775808");
    EXPECT_EQ(Concat(SAsciiString("a"), "b", 0), "ab0");
    const SAnsiString shared(s);
    EXPECT_EQ(SAnsiString(s) + "+" + shared, "i=-1 -32768 18446744073709551615 3.500000 cs+" + s);
    EXPECT_EQ(s, shared);  // a temporary that is shared is not changed
    const char* const block = s.copyFrom("a").getString();
    EXPECT_EQ((std::move(s) + "b" + shared.left(5)).getString(), block);
}
