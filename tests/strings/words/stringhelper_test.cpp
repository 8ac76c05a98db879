#include "tarnlib/stringhelper.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <type_traits>

#include "support/calls.h"
#include "support/locale_scope.h"
#include "tarnlib/swordcursor.h"

using namespace TarnLibA500;
using tarntest::Arguments;

namespace {

SAnsiString Brackets(const SIArray<SAnsiString>& words) {
    SAnsiString text;
    for (const SAnsiString& word : words) text += "[" + word + "]";
    return text;
}

SAnsiString WordsByCursor(const SAnsiString& text, const SAnsiString& separators) {
    SIArray<SAnsiString> words;
    for (SWordCursor word(text, separators); word.next();) {
        EXPECT_TRUE(word.is(word.toString().getString()) && !word.is("?"));
        EXPECT_EQ(word.getRest(), word.getWord() + word.getLength());
        words.Add(word.toString());
    }
    return Brackets(words);
}

SAnsiString Words(const Arguments& a) {
    const bool quoted = a[2].find('q') != a[2].end(), keep = a[2].find('k') != a[2].end();
    SIArray<SAnsiString> words;
    words.Add("old");
    SStringHelper::makeWords(a[0], words, a[1], quoted, keep);
    if (!quoted && !keep) EXPECT_EQ(WordsByCursor(a[0], a[1]), Brackets(words));
    return Brackets(words);
}

SAnsiString Decoded(const SAnsiString& text) {
    SSimpleBuffer buffer(1);
    if (!SStringHelper::fromString(text, buffer)) return "no";
    return {reinterpret_cast<const char*>(buffer.getBufferProtected()), buffer.getNBytes()};
}

SAnsiString Encoded(const SAnsiString& bytes) {
    return SStringHelper::toString(reinterpret_cast<const unsigned char*>(bytes.getString()),
                                   bytes.getLength());
}

// What a call makes of a text, with - before it when the call says that it found nothing.
template <class Function, class... More>
SAnsiString Changed(Function function, SAnsiString text, const More&... more) {
    if constexpr (std::is_same_v<bool, decltype(function(text, more...))>) {
        return function(text, more...) ? text : "-" + text;
    } else {
        return function(text, more...), text;
    }
}

SAnsiString Escaped(SAnsiString text, const SAnsiString& delimiter) {
    SStringHelper::escapeDelimiters(text, text, delimiter.getAt(0));
    return text;
}

using Helper = SStringHelper;
const tarntest::Calls kCalls = {
    {"trim left", [](const Arguments& a) { return Changed(&Helper::trimLeft, a[0], a[1]); }},
    {"trim right", [](const Arguments& a) { return Changed(&Helper::trimRight, a[0], a[1]); }},
    {"trim", [](const Arguments& a) { return Changed(&Helper::trim, a[0], a[1]); }},
    {"remove comments", [](const Arguments& a) { return Changed(&Helper::removeComments, a[0], a[1]); }},
    {"replace", [](const Arguments& a) { return Changed(&Helper::replaceSubString, a[0], a[1], a[2]); }},
    {"replace at start",
     [](const Arguments& a) { return Changed(&Helper::replaceSubStringAtStart, a[0], a[1], a[2]); }},
    {"replace at end",
     [](const Arguments& a) { return Changed(&Helper::replaceSubStringAtEnd, a[0], a[1], a[2]); }},
    {"escape", [](const Arguments& a) { return Escaped(a[0], a[1]); }},
    {"words", Words},
    {"to text", [](const Arguments& a) { return Encoded(a[0]); }},
    {"to bytes", [](const Arguments& a) { return Decoded(a[0]); }},
};

}  // namespace

TEST(StringHelper, AnswersAsInTheFile) {
    tarntest::ExpectCalls("strings/helper_calls.txt", kCalls);
    SAnsiString self("ab");
    SStringHelper::replaceSubString(self, self, self + self);
    EXPECT_EQ(self, "abab");
}

TEST(Cp932StringHelper, WorksInWholeCharacters) {
    tarntest::LocaleScope locale(tarntest::kLocale932);
    tarntest::ExpectCalls("strings/helper_calls_932.txt", kCalls);
}

TEST(Utf8StringHelper, WorksInWholeCharacters) {
    tarntest::ExpectCalls("strings/helper_calls.txt", kCalls);
    tarntest::ExpectCalls("strings/helper_calls_utf8.txt", kCalls);
}

TEST(MakeWords, TakesAnotherQuoteAndItsOwnWords) {
    SIArray<SAnsiString> words;
    SStringHelper::makeWords("a 'b \"c' \"d e", words, '\'', " ", true, false);
    EXPECT_EQ(Brackets(words), "[a][b \"c][\"d][e]");
    SStringHelper::makeWords(words[1], words, words[0], false, false);
    EXPECT_EQ(Brackets(words), "[b \"c]");
    const SAnsiString kept(words[0]);  // its block is shared and may not be written again
    SStringHelper::makeWords(words[0], words, " ", false, false);
    EXPECT_EQ(kept, "b \"c");
    EXPECT_EQ(Brackets(words), "[b][\"c]");
}

TEST(StringHelper, Joins) {
    SIArray<SAnsiString> list;
    EXPECT_EQ(SStringHelper::convertArrayToString(list), "");
    for (const char* member : {"b", "", "a"}) list.Add(member);
    EXPECT_EQ(SStringHelper::convertArrayToString(list), "b,,a");
    SISet<SAnsiString> set;
    for (const SAnsiString& member : list) set.Insert(member);
    EXPECT_EQ(SStringHelper::convertSetToString(set), ",a,b");
}

TEST(TextBytes, ReadsBackEveryLength) {
    std::mt19937 random(5);
    for (std::uint32_t count = 0; count <= 100; ++count) {
        std::string bytes(count, '\0');
        for (char& byte : bytes) byte = static_cast<char>(random());
        const SAnsiString text = Encoded({bytes.data(), count});
        EXPECT_EQ(text.getLength(), (count * 4 + 2) / 3);
        EXPECT_EQ(Decoded(text), SAnsiString(bytes.data(), count));
    }
}

TEST(TextBytes, KeepsToItsRoom) {
    unsigned char out[4] = {1, 2, 3, 4};
    std::uint32_t count = 9;
    EXPECT_FALSE(SStringHelper::fromString("AAAA", out, 2, count));
    EXPECT_TRUE(count == 0 && out[0] == 1);
    EXPECT_TRUE(SStringHelper::fromString("AAAA", out, 3, count));
    EXPECT_TRUE(count == 3 && out[2] == 0 && out[3] == 4);
}
