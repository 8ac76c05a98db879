#include "tarnlib/sguid.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <thread>
#include <vector>

#include "support/assert_recorder.h"
#include "support/case_file.h"
#include "support/print_strings.h"

#include <windows.h>

using namespace TarnLibA500;

namespace {

constexpr GUID kGuid = {0x00112233, 0x4455, 0x6677, {0x88, 0x99, 0xAA, 0xBB, 0xCC, 0xDD, 0xEE, 0xFF}};
constexpr const char* kText = "ATMiEQBVRHdmiJmqu8zd7v8";

SAnsiString Parsed(const SAnsiString& text) {
    try {
        return SGUID(text).ToString();
    } catch (const SGUID::Error& failure) {
        EXPECT_EQ(failure.toString(), "\"" + text + "\" is no identifier.");
        return "";
    }
}

}  // namespace

TEST(Guid, TextsAreReadOrRefused) {
    for (const auto& c : tarntest::ReadCases("system/guid_texts.txt")) {
        const tarntest::AssertRecorder recorder;
        EXPECT_EQ(Parsed(c[0].c_str()), c[1].c_str()) << c[0];
    }
}

TEST(Guid, WrapsAndUnwraps) {
    const SGUID id(kGuid);
    EXPECT_EQ(id.ToString(), kText);
    EXPECT_EQ(SGUID::MakeQRTXCUID("abc^"), SGUID::MakeQRTXCUID(SAnsiString("abc^\0def", 8)));
    EXPECT_EQ(SGUID::MakeQRTXCUID("abc"), "B5ABUJg80k_w1pY.fSjhf3I");
    EXPECT_EQ(SGUID::Make3rdPartyGUID("abc").ToAnsiString(), "CJABUJg80k_w1pY.fSjhf3I");
    SGUID extended = SGUID::ExtendGUID(id, 0x01020304), base;
    EXPECT_EQ(extended.ToString(), "CQEEAwIBMyIRAFVEd2aImaq7zN3u.w");
    EXPECT_TRUE(extended.IsExtendedGUID() && !id.IsExtendedGUID());
    unsigned long number = 9;
    EXPECT_TRUE(SGUID::StripExtendedGUID(extended, extended, number));  // into itself
    EXPECT_EQ(extended.ToString(), kText);
    EXPECT_EQ(number, 0x01020304U);
    EXPECT_FALSE(SGUID::StripExtendedGUID(id, base = id, number));
    EXPECT_TRUE(base.IsNULL() && number == 0);
    extended = SGUID::ExtendGUID(SGUID(), 0xFFFFFFFF);
    EXPECT_TRUE(SGUID::StripExtendedGUID(extended, base = id, number));
    EXPECT_TRUE(base.IsNULL() && number == 0xFFFFFFFF && SGUID().ToString() == "NULL");
    tarntest::AssertRecorder recorder;
    EXPECT_TRUE(SGUID::ExtendGUID(SGUID::ExtendGUID(id, 1), 1).IsNULL());
    EXPECT_TRUE(recorder.sawLast("sguid", "false"));
}

TEST(Guid, ComparesOverTheLeftOnesLength) {
    const SGUID id(kGuid), null, extended = SGUID::ExtendGUID(id, 5), nothing = SGUID::ExtendGUID(null, 0);
    EXPECT_TRUE(id == SGUID(kText) && id != null && id < extended && extended > id && id.compare(null) == 1);
    EXPECT_EQ(SGUID("Cw").compare(SGUID("Cw")), 0);
    EXPECT_EQ(null.compare(SGUID("CQAAAAAA")), -1);
    EXPECT_EQ(nothing.compare(SGUID("CQAAAAAA")), 0);  // whatever stands behind what it has
    EXPECT_EQ(SGUID("AA").compare(null), 0);
}

TEST(Guid, MillionsWithoutARepeat) {
    constexpr int kThreads = 8;
    constexpr int kEach = 125000;
    std::vector<SGUID> all(kThreads * kEach);
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t)
        threads.emplace_back([&, t] {
            for (int i = 0; i < kEach; ++i) all[static_cast<std::size_t>(t * kEach + i)].Create();
        });
    for (std::thread& thread : threads) thread.join();
    std::sort(all.begin(), all.end());
    EXPECT_EQ(std::adjacent_find(all.begin(), all.end()), all.end());
    EXPECT_EQ(all[0].ToString().getLength(), 23U);
}
