#include "tarnlib/sassert.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

using namespace TarnLibA500;

namespace {

using Texts = std::vector<std::string>;
Texts seen;

void Remember(const char* text) {
    seen.push_back(text);
    SAssert("inner", 1, "raised while another is reported");
}

}  // namespace

TEST(Assertions, AreOneWholeLineAndDoNotRecurse) {
    const std::string narrow(5000, 'm');
    const std::wstring wide(5000, L'\x20AC');
    std::string utf8;
    for (std::size_t i = 0; i < wide.size(); ++i) utf8 += "\xE2\x82\xAC";
    SDiagnosticSink sink;
    sink.assertion = &Remember;
    const SDiagnosticSink* const before = InstallDiagnosticSink(&sink);
    SAssert("stime", 12, "IsValid()");
    SAssert("unit", 8, "x", L"wide \x0E01");
    SAssert(nullptr, 9, nullptr, static_cast<const char*>(nullptr));
    SAssert("unit", 1, "e", narrow.c_str());
    SAssert("unit", 1, "e", std::wstring(5000, L'm').c_str());
    sink.assertionUtf8 = &Remember;  // then nothing becomes "?"
    SAssert("unit", 1, "e", wide.c_str());
    sink.shouldAssert = [] { return false; };
    SAssert("unit", 1, "e");
    EXPECT_FALSE(SLogger::ShouldAssert());
    EXPECT_EQ(InstallDiagnosticSink(before), &sink);
    Texts expected = {"assert failure: (stime:12). (IsValid() : no message).",
                      "assert failure: (unit:8). (x : wide ?).", "assert failure: (:9). ( : no message)."};
    for (const std::string& message : {narrow, narrow, utf8})
        expected.push_back("assert failure: (unit:1). (e : " + message + ").");
    EXPECT_EQ(seen, expected);
}

TEST(Assertions, GoToStandardErrorAsOneLineWithoutASinkAndAreOn) {
    const std::string filling(2000, 'x');
    testing::internal::CaptureStderr();
    SAssert("unit", 3, "loaded", ("a\r\nassert failure: (forged:1)." + filling + "\x1B\t").c_str());
    EXPECT_EQ(
        testing::internal::GetCapturedStderr(),
        "assert failure: (unit:3). (loaded : a\\r\\nassert failure: (forged:1)." + filling + "\\x1B\t).\n");
    EXPECT_TRUE(SLogger::ShouldAssert());
    EXPECT_FALSE(ShouldTraceText(0, "unit"));
}
