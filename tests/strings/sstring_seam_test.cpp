// What strings allocate, and that a failed allocation leaves them as they were.

#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "support/alloc_hooks.h"
#include "support/locale_scope.h"
#include "tarnlib/sstring.h"

using namespace TarnLibA500;

namespace {

unsigned long AllocationsOf(const std::function<void()>& work) {
    const unsigned long before = tarntest::AllocationsSoFar();
    work();
    return tarntest::AllocationsSoFar() - before;
}

const std::string kLong(500, 'L');

struct Secret : SAnsiString {
    using SAnsiString::SAnsiString, SString_t<char, 0>::getStringBuffer, SString_t<char, 0>::unlinkBuffer;
};

}  // namespace

TEST(StringAllocations, CopyingAndReadingNeverAllocate) {
    const SAnsiString original(kLong.c_str());
    const SAnsiStringCI other("LLM");
    char bytes[600];
    const unsigned long count = AllocationsOf([&] {
        SAnsiString shared(original);
        const SAnsiString& s = shared;
        SAnsiString empty, blank(""), none = empty.left(3);
        empty.trim().toLower().concat("");
        EXPECT_EQ(s.right(1000).getString(), original.getString());
        for (SAnsiString::iterator i = s.begin(); i != s.end(); ++i) EXPECT_TRUE(*i == 'L');
        EXPECT_TRUE(s.getAt(3) == s[4] && s.getNChars() == 500 && s.find("LM") == s.end() &&
                    s.findLast('L') != s.end());
        EXPECT_TRUE(s != "x" && s.compareNoCase("m") < 0 && other < "LLN" &&
                    s.toMBCS(bytes, sizeof bytes) == 501);
        EXPECT_EQ(s.getString(), original.getString());  // never detached
        SAnsiString moved(std::move(shared));
        empty = moved;
    });
    EXPECT_EQ(count, 0U);
}

TEST(StringAllocations, AppendingGrowsByDoubling) {
    // Blocks of 2 x old length + k + 1 code units: 20 growths carry a string from 35 units beyond a million.
    EXPECT_EQ(AllocationsOf([] {
                  SAnsiString s;
                  for (int i = 0; i < 1'000'000; ++i) s += 'x';
              }),
              16U);
    EXPECT_EQ(AllocationsOf([] {
                  SAnsiString s;
                  s.setSize(1'000'000);
                  for (int i = 0; i < 1'000'000; ++i) s += 'x';
              }),
              1U);
    EXPECT_EQ(AllocationsOf([] { SAnsiString("  x ").trim(); }),
              2U);  // the text, then both sides at once
}

TEST(StringTorture, AFailedAllocationLeavesTheStringAsItWas) {
    const tarntest::LocaleScope locale(tarntest::kLocale1252);
    struct Operation {
        const char* name;
        std::function<void(SAnsiString&)> run;
    };
    const Operation operations[] = {
        {"append", [](SAnsiString& s) { s += kLong.c_str(); }},
        {"append itself", [](SAnsiString& s) { s += s; }},
        {"append character", [](SAnsiString& s) { s += 'x'; }},
        {"insert", [](SAnsiString& s) { s.insertChars(2, kLong.c_str()); }},
        {"insert itself", [](SAnsiString& s) { s.insertChars(1, s); }},
        {"delete", [](SAnsiString& s) { s.deleteChars(1, 2); }},
        {"set", [](SAnsiString& s) { s.setAt(0, 'x'); }},
        {"assign", [](SAnsiString& s) { s = kLong.c_str(); }},
        {"trim", [](SAnsiString& s) { s.trim(); }},
        {"case", [](SAnsiString& s) { s.toUpper(); }},
        {"size", [](SAnsiString& s) { s.setSize(5000); }},
        {"detach", [](SAnsiString& s) { s.detach(); }},
        {"number", [](SAnsiString& s) { s << 1e300; }},
        {"sum", [](SAnsiString& s) { s = s + "tail"; }},
        {"from UTF-8", [](SAnsiString& s) { s.fromUTF8("\xC3\xA9t\xC3\xA9"); }},
    };
    const std::string text = "  \xE9t\xE9 ";
    for (const Operation& operation : operations) {
        for (const bool isShared : {false, true}) {
            bool failed = true;
            for (unsigned long nth = 1; failed; ++nth) {
                SAnsiString s(text.c_str());
                const SAnsiString sharer = isShared ? s : SAnsiString();
                tarntest::FailAllocation(nth);
                try {
                    operation.run(s);
                } catch (const std::bad_alloc& e) {
                    EXPECT_STREQ(e.what(), "bad allocation") << operation.name;
                }
                failed = tarntest::FailureHappened();
                tarntest::FailAllocation(0);
                if (failed) {
                    EXPECT_EQ(s, text.c_str()) << operation.name << ' ' << nth;
                }
                EXPECT_EQ(sharer, isShared ? text.c_str() : "") << operation.name;
                ASSERT_LT(nth, 50U) << operation.name;
            }
        }
    }
}

TEST(StringWipe, OverwritesTheWholeBlockBeforeItIsFreed) {
    for (const bool wipe : {false, true}) {
        Secret secret("password");
        char freed[sizeof(Secret::SStringBuffer) + 9 + 32] = {};
        tarntest::CopyWhenFreed(secret.getStringBuffer(), freed, sizeof freed);
        secret.unlinkBuffer(wipe);
        const std::string characters(freed + sizeof(Secret::SStringBuffer), freed + sizeof freed);
        EXPECT_EQ(characters == std::string(9 + 32, '#'), wipe);
        EXPECT_EQ(characters.find("password"), wipe ? std::string::npos : 0);
    }
}

TEST(StringTorture, NothingLeaks) {
    const long before = tarntest::LiveBlocks();
    {
        SAnsiString a(kLong.c_str());
        SAnsiString b(a + a);
        b.insertChars(3, a);
        a = b.left(4) + b.right(3);
        b.trim().toUpper() = a;
    }
    EXPECT_EQ(tarntest::LiveBlocks(), before);
}
