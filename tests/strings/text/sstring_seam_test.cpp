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
    const tarntest::AllocationCount count;
    work();
    return count.Taken();
}

const std::string kLong(500, 'L');

template <class String>
struct Secret : String {
    using String::String, String::Base::getStringBuffer, String::Base::unlinkBuffer;
};
using AnsiSecret = Secret<SAnsiString>;
using WideSecret = Secret<SWCharString>;

template <class Hidden>
void ExpectWiped(Hidden secret, bool wipe) {
    constexpr std::size_t kHeader = sizeof(*secret.getStringBuffer());
    const std::size_t bytes = secret.getStringBuffer()->capacity * sizeof(*secret.getString());
    std::string freed(kHeader + bytes, '\0');
    tarntest::CopyWhenFreed(secret.getStringBuffer(), freed.data(), static_cast<unsigned long>(freed.size()));
    secret.unlinkBuffer(wipe);
    EXPECT_EQ(freed.substr(kHeader) == std::string(bytes, '#'), wipe);
    EXPECT_EQ(freed[kHeader], wipe ? '#' : 'p');
}

}  // namespace

TEST(StringAllocations, CopyingAndReadingNeverAllocate) {
    const SAnsiString original(kLong.c_str());
    const SAnsiStringCI other("LLM");
    char bytes[600];
    EXPECT_EQ(original.getNChars(), 500U);  // who counts characters first makes the table of the code page
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

// A block is full with one unit less than it has: the last one is the terminator's.
TEST(StringAllocations, ATextAsLongAsItsBlockGetsAnother) {
    const std::pair<const char*, std::function<void(SAnsiString&, std::uint32_t)>> fills[] = {
        {"copyFrom", [](SAnsiString& s, std::uint32_t n) { s.copyFrom(kLong.c_str(), n); }},
        {"concat", [](SAnsiString& s, std::uint32_t n) { s.concat(kLong.c_str(), n - s.getLength()); }},
        {"setSize", [](SAnsiString& s, std::uint32_t n) { s.setSize(n); }},
        {"insertChars",
         [](SAnsiString& s, std::uint32_t n) {
             s.insertChars(1, kLong.substr(0, n - s.getLength()).c_str());
         }},
        {"single units",
         [](SAnsiString& s, std::uint32_t n) {
             while (s.getLength() < n) s += 'x';
         }},
    };
    for (const auto& [name, fill] : fills) {
        AnsiSecret s("ab");
        const std::uint32_t capacity = s.getStringBuffer()->capacity;
        fill(s, capacity - 1);
        EXPECT_EQ(s.getStringBuffer()->capacity, capacity) << name;
        fill(s, capacity);
        EXPECT_GT(s.getStringBuffer()->capacity, capacity) << name;
    }
}

TEST(StringTorture, AFailedAllocationLeavesTheStringAsItWas) {
    const tarntest::LocaleScope locale(tarntest::kLocale1252);
    const std::pair<const char*, std::function<void(SAnsiString&)>> operations[] = {
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
        {"parts", [](SAnsiString& s) { s = s.left(2) + s.right(1); }},
        {"from UTF-8", [](SAnsiString& s) { s.fromUTF8("\xC3\xA9t\xC3\xA9"); }},
    };
    const std::string text = "  \xE9t\xE9 ";
    const long before = tarntest::LiveBlocks();
    for (const auto& [name, run] : operations) {
        for (const bool isShared : {false, true}) {
            bool failed = true;
            for (unsigned long nth = 1; failed; ++nth) {
                SAnsiString s(text.c_str());
                const SAnsiString sharer = isShared ? s : SAnsiString();
                failed = tarntest::FailsAt(nth, [&, &edit = run] { edit(s); });
                if (failed) EXPECT_EQ(s, text.c_str()) << name << ' ' << nth;
                EXPECT_EQ(sharer, isShared ? text.c_str() : "") << name;
                ASSERT_LT(nth, 50U) << name;
            }
        }
        EXPECT_EQ(tarntest::LiveBlocks(), before) << name;
    }
}

TEST(StringWipe, OverwritesTheWholeBlockBeforeItIsFreed) {
    for (const bool wipe : {false, true}) {
        ExpectWiped(AnsiSecret("password"), wipe);
        ExpectWiped(WideSecret(L"password"), wipe);
    }
}
