#include "tarnlib/stringhelper.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "support/case_file.h"
#include "support/locale_scope.h"
#include "tarnlib/swordcursor.h"

using namespace TarnLibA500;

namespace {

std::string Brackets(const SIArray<SAnsiString>& words) {
    std::string text;
    for (const SAnsiString& word : words) text += std::string("[") + word.getString() + "]";
    return text;
}

std::string Words(const char* text, const char* separators, bool quoted = false, bool keep = false) {
    SIArray<SAnsiString> words;
    words.Add("old");
    SStringHelper::makeWords(text, words, separators, quoted, keep);
    return Brackets(words);
}

std::string WordsByCursor(const char* text, const char* separators) {
    std::string words;
    for (SWordCursor word(text, separators); word.next();) {
        EXPECT_TRUE(word.is(word.toString().getString()) && !word.is("?"));
        EXPECT_EQ(word.getRest(), word.getWord() + word.getLength());
        words += std::string("[") + std::string(word.getWord(), word.getLength()) + "]";
    }
    return words;
}

std::vector<unsigned char> Decoded(const SAnsiString& text) {
    SSimpleBuffer buffer(1);
    if (!SStringHelper::fromString(text, buffer)) return {'n', 'o'};
    const unsigned char* const bytes = buffer;
    return {bytes, bytes + buffer.getNBytes()};
}

}  // namespace

TEST(MakeWords, Splits) {
    for (const auto& c : tarntest::ReadCases("words.txt")) {
        const bool quoted = c[2].find('q') != std::string::npos;
        const bool keep = c[2].find('k') != std::string::npos;
        EXPECT_EQ(Words(c[0].c_str(), c[1].c_str(), quoted, keep), c[3]) << c[0];
        if (!quoted && !keep) EXPECT_EQ(WordsByCursor(c[0].c_str(), c[1].c_str()), c[3]) << c[0];
    }
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

TEST(StringHelper, Trims) {
    const struct {
        const char *text, *set, *left, *right, *both;
    } cases[] = {
        {"-+a-b+-", "+-", "a-b+-", "-+a-b", "a-b"},
        {"+-+", "+-", "", "", ""},
        {" a ", "", " a ", " a ", " a "},
        {"", "x", "", "", ""},
    };
    for (const auto& c : cases) {
        SAnsiString left(c.text), right(c.text), both(c.text);
        SStringHelper::trimLeft(left, c.set);
        SStringHelper::trimRight(right, c.set);
        SStringHelper::trim(both, c.set);
        EXPECT_EQ(left, c.left) << c.text;
        EXPECT_EQ(right, c.right) << c.text;
        EXPECT_EQ(both, c.both) << c.text;
    }
}

TEST(StringHelper, RemovesComments) {
    for (const auto& c : tarntest::ReadCases("comments.txt")) {
        SAnsiString text(c[0].c_str());
        SStringHelper::removeComments(text, "");
        EXPECT_EQ(text, c[0].c_str());
        SStringHelper::removeComments(text, c[1].c_str());
        EXPECT_EQ(text, c[2].c_str());
    }
}

TEST(StringHelper, Replaces) {
    for (const auto& c : tarntest::ReadCases("replaced.txt")) {
        const SAnsiString text(c[0].c_str()), what(c[1].c_str()), by(c[2].c_str());
        SAnsiString all(text), start(text), end(text);
        SStringHelper::replaceSubString(all, what, by);
        EXPECT_EQ(all, c[3].c_str()) << c[0];
        EXPECT_EQ(SStringHelper::replaceSubStringAtStart(start, what, by), c[4] != c[0]) << c[0];
        EXPECT_EQ(start, c[4].c_str()) << c[0];
        EXPECT_EQ(SStringHelper::replaceSubStringAtEnd(end, what, by), c[5] != c[0]) << c[0];
        EXPECT_EQ(end, c[5].c_str()) << c[0];
    }
    SAnsiString self("ab");
    SStringHelper::replaceSubString(self, self, self + self);
    EXPECT_EQ(self, "abab");
}

TEST(StringHelper, EscapesAndJoins) {
    SAnsiString text("a;b\\c;");
    SStringHelper::escapeDelimiters(text, text, ';');
    EXPECT_EQ(text, "a\\;b\\\\c\\;");
    SIArray<SAnsiString> list;
    EXPECT_EQ(SStringHelper::convertArrayToString(list), "");
    for (const char* member : {"b", "", "a"}) list.Add(member);
    EXPECT_EQ(SStringHelper::convertArrayToString(list), "b,,a");
    SISet<SAnsiString> set;
    for (const SAnsiString& member : list) set.Insert(member);
    EXPECT_EQ(SStringHelper::convertSetToString(set), ",a,b");
}

TEST(TextBytes, KnownTexts) {
    const struct {
        std::vector<unsigned char> bytes;
        const char* text;
    } cases[] = {
        {{}, ""},
        {{0x00}, "AA"},
        {{0xFF}, ".w"},
        {{0xFF, 0xFE}, "..4"},
        {{0x4D, 0x61, 0x6E}, "TWFu"},
        {{0xFB, 0xFF, 0xBE}, "_.__"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(SStringHelper::toString(c.bytes.data(), static_cast<unsigned>(c.bytes.size())), c.text);
        EXPECT_EQ(Decoded(c.text), c.bytes) << c.text;
    }
}

TEST(TextBytes, ReadsBackEveryLength) {
    std::mt19937 random(5);
    for (std::uint32_t count = 0; count <= 100; ++count) {
        std::vector<unsigned char> bytes(count);
        for (unsigned char& byte : bytes) byte = static_cast<unsigned char>(random());
        const SAnsiString text = SStringHelper::toString(bytes.data(), count);
        EXPECT_EQ(text.getLength(), (count * 4 + 2) / 3);
        EXPECT_EQ(Decoded(text), bytes);
    }
}

TEST(TextBytes, RefusesWhatIsNoSuchText) {
    const std::vector<unsigned char> no{'n', 'o'};
    for (const char* text : {"A", "AAAAA", "A+", "AA=", "AA AA", "\xE4\xE4"})
        EXPECT_EQ(Decoded(text), no) << text;
    unsigned char out[4] = {1, 2, 3, 4};
    std::uint32_t count = 9;
    EXPECT_FALSE(SStringHelper::fromString("AAAA", out, 2, count));
    EXPECT_EQ(count, 0U);
    EXPECT_EQ(out[0], 1);
    EXPECT_TRUE(SStringHelper::fromString("AAAA", out, 3, count));
    EXPECT_EQ(count, 3U);
    EXPECT_EQ(out[2], 0);
    EXPECT_EQ(out[3], 4);
    EXPECT_EQ(Decoded("Af"), std::vector<unsigned char>{1});  // low bits that are left over do not matter
}

TEST(Cp932StringHelper, WorksInWholeCharacters) {
    tarntest::LocaleScope locale(tarntest::kLocale932);
    EXPECT_EQ(Words("\x83\x5C\\\x95\x5C", "\\"), "[\x83\x5C][\x95\x5C]");
    EXPECT_EQ(Words("a\x81\x41\x83\x41\x62", "\x81\x41", false, true), "[a][\x81\x41][\x83\x41\x62]");
    EXPECT_EQ(WordsByCursor("a\x81\x41\x83\x41\x62 \x83\x5C\\", " \x81\x41\\"),
              "[a][\x83\x41\x62][\x83\x5C]");
    SAnsiString text("\x83\x5C\\x");
    SStringHelper::replaceSubString(text, "\\", "/");
    EXPECT_EQ(text, "\x83\x5C/x");
    EXPECT_FALSE(SStringHelper::replaceSubStringAtStart(text, "\x83", "?"));
    text = "\x83\x5C";
    EXPECT_FALSE(SStringHelper::replaceSubStringAtEnd(text, "\\", "/"));
    SStringHelper::trimRight(text, "\\");
    EXPECT_EQ(text, "\x83\x5C");
    SStringHelper::escapeDelimiters(text, text, '\\');
    EXPECT_EQ(text, "\x83\x5C");
    text = "\x95\x5C \x83\x5C# c";
    SStringHelper::removeComments(text, "\\");
    SStringHelper::removeComments(text, "#");
    EXPECT_EQ(text, "\x95\x5C \x83\x5C");
}
