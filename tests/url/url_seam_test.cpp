// What URLs allocate, and what is left when memory fails.

#include <gtest/gtest.h>

#include "support/alloc_hooks.h"
#include "support/locale_scope.h"
#include "tarnlib/coburl.h"
#include "tarnlib/frsurl.h"
#include "tarnlib/squerystring.h"
#include "tarnlib/swebencode.h"

using namespace TarnLibA500;

namespace {

// Nodes of maps and arrays come from operator new, whose failure says so in its own words.
template <class Work>
bool FailsAt(unsigned long nth, Work work) {
    tarntest::FailAllocation(nth);
    tarntest::Succeeds(work);
    const bool failed = tarntest::FailureHappened();
    tarntest::FailAllocation(0);
    return failed;
}

}  // namespace

TEST(UrlSeam, TextWithNothingToEscapeIsShared) {
    const SAnsiString plain("Abc.9_"), words("a b");
    SQueryString pattern("%order%[0-9]_%shipped%");
    pattern.parse();
    const SAnsiString text("the order 55 was shipped");
    const tarntest::AllocationCount count;
    for (const auto encode : {&SWebEncode::URLEncodeSimple, &SWebEncode::URLDecodeEx, &SWebEncode::HTMLEncode,
                              &SWebEncode::JavaScriptEncode, &SWebEncode::HTMLNonBreakableSpace})
        EXPECT_EQ(encode(plain).getString(), plain.getString());
    EXPECT_EQ(SWebEncode::URLEncode(plain, MBCSCodesetConverter::UTF8).getString(), plain.getString());
    EXPECT_TRUE(pattern.like(text));
    EXPECT_EQ(count.Taken(), 0U);
    EXPECT_EQ(SWebEncode::URLEncodeSimple(words), "a+b");
    EXPECT_EQ(count.Taken(), 1U);
}

TEST(UrlSeam, PropertiesTakeLittleMemory) {
    constexpr int kCount = 50;
    const tarntest::LocaleScope locale(tarntest::kLocale1252);
    SIArray<SAnsiStringCI> names;
    SAnsiString query;
    for (int i = 0; i < kCount; ++i) {
        SAnsiString name("property.");
        names.Add(name << i);
        query << (i != 0 ? "&" : "") << name << "=a+b+" << i;
    }
    CObUrl url;
    const tarntest::AllocationCount setting;
    for (int i = 0; i < kCount; ++i) url.SetPropLong(names[static_cast<unsigned>(i)], i);
    EXPECT_LE(setting.Taken(), 3U * kCount);
    const tarntest::AllocationCount getting;
    long sum = 0, value = 0;
    for (const SAnsiStringCI& name : names) sum += url.GetPropLong(name, value) ? value : 0;
    EXPECT_EQ(getting.Taken(), 0U);
    EXPECT_EQ(sum, kCount * (kCount - 1) / 2);
    const CObUrl first("?a=+");  // makes the tables of the code page
    CObUrl parsed;
    const tarntest::AllocationCount parsing;
    parsed.SetQueryString(query);
    EXPECT_LE(parsing.Taken(), 3U * kCount);
    EXPECT_EQ(parsed.GetNameValuePairMap().GetCount(), static_cast<unsigned>(kCount));
    const tarntest::AllocationCount making;
    parsed.MakeURL();
    EXPECT_EQ(making.Taken(), 1U);
}

TEST(UrlSeam, NothingIsHalfDoneWhenMemoryFails) {
    CObUrl other("q?b=3&c=%20");
    for (unsigned long nth = 1, failed = 1; failed != 0; ++nth) {
        CObUrl url("p?a=1&b=2");
        FRSUrl file("S", "a/b.txt");
        CNameValuePairs pairs("a=1&b=2");
        SAnsiString name, value("v");
        const SAnsiString query("q?a=4&d=5"), text("frs://T/c/d.x");
        failed = FailsAt(nth, [&] { url.SetQueryString(query); });
        if (failed != 0) EXPECT_EQ(url.MakeURL(), "p?a=1&b=2");
        const bool addFailed = FailsAt(nth, [&] { url.Add(other); });
        if (addFailed) EXPECT_EQ(url.GetNameValuePairMap().Contains("c"), false);
        if (FailsAt(nth, [&] { file = text; }))
            EXPECT_EQ(file.MakeURL() + file.GetDir(), "frs://S/a/b.txta/");
        if (FailsAt(nth, [&] { pairs.Next(name, value); })) {
            EXPECT_TRUE(name.isEmpty() && value == "v");
            EXPECT_TRUE(pairs.Next(name, value) && name == "a" && value == "1");
        }
        SQueryString pattern("a%[b]_c");
        if (FailsAt(nth, [&] { pattern.parse(); })) EXPECT_TRUE(pattern.like("axbyc"));
    }
}
