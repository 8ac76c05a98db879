#include <gtest/gtest.h>

#include <new>

#include "support/alloc_hooks.h"
#include "support/assert_recorder.h"
#include "tarnlib/stringhelper.h"
#include "tarnlib/strtok.h"
#include "tarnlib/swordcursor.h"

using namespace TarnLibA500;

TEST(StrTokSeam, ReportsFailingMemoryAndLosesNothing) {
    RSStrTok tokenizer("name=value");
    tokenizer.SetToken("=");
    tarntest::AssertRecorder recorder;
    SAnsiString piece("old");
    EXPECT_TRUE(tarntest::FailsAt(1, [&] { piece = tokenizer.Next(); }));
    EXPECT_TRUE(recorder.sawLast("nvpairs", "FALSE"));
    EXPECT_EQ(piece, "");
    EXPECT_EQ(tokenizer.Next(), "name");
    EXPECT_EQ(tokenizer.rest(), "value");
}

TEST(WordsSeam, UseTheirMemoryAgain) {
    const SAnsiString lines[] = {"the quick brown fox", "jumps over the"}, blank(" ");
    SIArray<SAnsiString> words;
    SStringHelper::makeWords(lines[0], words, blank, false, false);
    const tarntest::AllocationCount count;
    SStringHelper::makeWords(lines[1], words, blank, false, false);
    std::uint32_t bytes = 0;
    for (SWordCursor word(lines[0], blank); word.next();) bytes += word.getLength();
    EXPECT_EQ(count.Taken(), 0U);
    EXPECT_EQ(bytes, 16U);
    EXPECT_TRUE(words.GetSize() == 3 && words[2] == "the");
}

TEST(WordsSeam, NothingOfTheOldWordsIsLeftWhenMemoryFails) {
    const SAnsiString text("new new new new new new"), blank(" ");
    for (unsigned long nth = 1; nth < 9; ++nth) {
        SIArray<SAnsiString> words;
        words.SetSize(16);  // room for new words
        words.SetSize(0);
        for (int i = 0; i < 5; ++i) words.Add("old");
        const SIArray<SAnsiString> sharer(words);
        tarntest::FailsAt(nth, [&] { SStringHelper::makeWords(text, words, blank, false, false); });
        for (const SAnsiString& word : words) EXPECT_EQ(word, "new");
    }
}
