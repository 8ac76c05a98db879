#include "tarnlib/strtok.h"

#include <gtest/gtest.h>

#include <string>

#include "support/assert_recorder.h"
#include "support/case_file.h"
#include "support/locale_scope.h"

using namespace TarnLibA500;

namespace {

template <class Tokenizer>
std::string Pieces(Tokenizer tokenizer) {
    std::string pieces;
    while (!tokenizer.IsEmpty()) pieces += std::string("[") + tokenizer.Next().getString() + "]";
    return pieces + (tokenizer.Next().isEmpty() ? "" : "!");
}

RSStrTok WithToken(const char* text, const char* token) {
    RSStrTok tokenizer(text);
    tokenizer.SetToken(token);
    return tokenizer;
}

void ExpectPieces(const std::string& file) {
    for (const auto& c : tarntest::ReadCases(file)) {
        EXPECT_EQ(Pieces(SStrTok(c[0].c_str(), c[1].c_str())), c[2]) << c[0];
        EXPECT_EQ(Pieces(WithToken(c[0].c_str(), c[1].c_str())), c[2]) << c[0];
    }
}

}  // namespace

TEST(StrTok, CutsAtTheWholeToken) {
    ExpectPieces("strings/tokens.txt");
    EXPECT_EQ(Pieces(WithToken("whole", "")), "[whole]");
    const SAnsiString zero("a\0b", 3);
    EXPECT_EQ(SStrTok(zero, SAnsiString("\0b", 2)).Next(), zero);  // never found
    SStrTok inside(SAnsiString("x") + zero + "y", zero);
    EXPECT_TRUE(inside.Next() == "x" && inside.Next() == "y" && inside.IsEmpty());
    EXPECT_EQ(Pieces(RSStrTok(SAnsiString("whole"))), "[whole]");
}

TEST(StrTok, LeftAndRightLookWithoutCutting) {
    SStrTok tokenizer("one=two=three", "=");
    EXPECT_TRUE(tokenizer.RightStr() == "two=three" && tokenizer.LeftStr() == "one");
    EXPECT_EQ(tokenizer.Next(), "one");
    EXPECT_EQ(tokenizer.GetString(), "two=three");
    EXPECT_EQ(tokenizer.LeftStr(), "two");
    tokenizer.SetToken(SAnsiString("no"));
    EXPECT_TRUE(tokenizer.LeftStr() == "two=three" && tokenizer.RightStr() == "");
    tokenizer.Set(SAnsiString("x,y"), SAnsiString(","));
    tokenizer.SetToken('y');
    EXPECT_EQ(tokenizer.Next(), "x,");
}

TEST(StrTok, ReportsMissingTextAndToken) {
    tarntest::AssertRecorder recorder;
    SStrTok tokenizer("a;b", ";");
    EXPECT_EQ(recorder.count(), 0U);
    tokenizer.SetToken(static_cast<const char*>(nullptr));
    EXPECT_TRUE(recorder.sawLast("strtok", "Token != NULL"));
    tokenizer.SetToken("");
    EXPECT_TRUE(recorder.sawLast("strtok", "!SString( Token ).isEmpty()"));
    EXPECT_EQ(tokenizer.Next(), "a;b");
    tokenizer.SetString(static_cast<const char*>(nullptr));
    EXPECT_TRUE(recorder.sawLast("strtok", "String != NULL"));
    EXPECT_TRUE(tokenizer.IsEmpty());
}

TEST(StrTok, TokenOfOneCallStays) {
    RSStrTok tokenizer("k=v;k2=v2;last");
    EXPECT_EQ(tokenizer.Next('='), "k");
    EXPECT_EQ(tokenizer.rest(), "v;k2=v2;last");
    EXPECT_EQ(tokenizer.LeftStr(";"), "v");
    EXPECT_EQ(tokenizer.RightStr('='), "v2;last");  // cuts k2 and drops it
    EXPECT_TRUE(tokenizer.IsEmpty());
    tokenizer.Set("a=b=c=d");
    EXPECT_EQ(tokenizer.RightStr(), "b");
    EXPECT_EQ(tokenizer.Next(), "c");
    EXPECT_EQ(tokenizer.RightStr("="), "");
}

TEST(Utf8StrTok, TokenMatchesWholeCharacters) {
    ExpectPieces("strings/tokens.txt");
    ExpectPieces("strings/tokens_utf8.txt");
}

TEST(Cp932StrTok, TokenNeverMatchesATrailByte) {
    tarntest::LocaleScope locale(tarntest::kLocale932);
    ExpectPieces("strings/tokens_932.txt");
}
