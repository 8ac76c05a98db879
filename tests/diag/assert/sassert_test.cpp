#include "tarnlib/sassert.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace TarnLibA500;

namespace {

std::vector<std::string> seen;
bool wanted = true;

void Remember(const char* text) {
    seen.push_back(text);
    SAssert("inner", 1, "raised while another is reported");
}

class Assertions : public testing::Test {
  protected:
    void SetUp() override {
        seen.clear();
        wanted = true;
        sink_.assertion = &Remember;
        sink_.shouldAssert = [] { return wanted; };
        sink_.shouldTrace = [](int level, const char* unit) {
            return level <= 1 && std::string(unit) == "unit";
        };
        sink_.trace = [](int, const char*, const char* text) { seen.push_back(text); };
        before_ = InstallDiagnosticSink(&sink_);
    }
    void TearDown() override { EXPECT_EQ(InstallDiagnosticSink(before_), &sink_); }

    SDiagnosticSink sink_;
    const SDiagnosticSink* before_ = nullptr;
};

}  // namespace

TEST_F(Assertions, AreOneLineAndDoNotRecurse) {
    SAssert("stime", 12, "IsValid()");
    SAssert("unit", 7, "a != b", "because");
    SAssert("unit", 8, "x", L"wide \x0E01");
    SAssert(nullptr, 9, nullptr, static_cast<const char*>(nullptr));
    const std::vector<std::string> expected = {"assert failure: (stime:12). (IsValid() : no message).",
                                               "assert failure: (unit:7). (a != b : because).",
                                               "assert failure: (unit:8). (x : wide ?).",
                                               "assert failure: (:9). ( : no message)."};
    EXPECT_EQ(seen, expected);
}

TEST_F(Assertions, LongTextsAreWholeAndASinkCanSwitchThemOff) {
    const std::string message(5000, 'm');
    SAssert("unit", 1, "e", message.c_str());
    ASSERT_EQ(seen.size(), 1U);
    EXPECT_EQ(seen[0], "assert failure: (unit:1). (e : " + message + ").");
    SAssert("unit", 1, "e", std::wstring(5000, L'm').c_str());
    ASSERT_EQ(seen.size(), 2U);
    EXPECT_EQ(seen[1], seen[0]);
    sink_.assertionUtf8 = &Remember;  // then nothing becomes "?"
    const std::wstring wide(5000, L'\x20AC');
    SAssert("unit", 1, "e", wide.c_str());
    std::string utf8;
    for (std::size_t i = 0; i < wide.size(); ++i) utf8 += "\xE2\x82\xAC";
    ASSERT_EQ(seen.size(), 3U);
    EXPECT_EQ(seen[2], "assert failure: (unit:1). (e : " + utf8 + ").");
    wanted = false;
    SAssert("unit", 1, "e");
    EXPECT_FALSE(SLogger::ShouldAssert());
    EXPECT_EQ(seen.size(), 3U);
}

TEST_F(Assertions, TracesReachTheSinkWhenItWantsThem) {
    TraceText(1, "unit", "one");
    TraceText(2, "unit", "two");
    TraceText(1, "other", "three");
    EXPECT_EQ(seen, std::vector<std::string>{"one"});
}

TEST(AssertionsBuiltIn, GoToStandardErrorAsOneLineAndAreOn) {
    const std::string filling(2000, 'x');
    testing::internal::CaptureStderr();
    SAssert("unit", 3, "loaded", ("a\r\nassert failure: (forged:1)." + filling + "\x1B\t").c_str());
    EXPECT_EQ(
        testing::internal::GetCapturedStderr(),
        "assert failure: (unit:3). (loaded : a\\r\\nassert failure: (forged:1)." + filling + "\\x1B\t).\n");
    EXPECT_TRUE(SLogger::ShouldAssert());
    EXPECT_FALSE(ShouldTraceText(0, "unit"));
}
