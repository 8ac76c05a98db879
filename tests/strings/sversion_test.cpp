#include "tarnlib/sversion.h"

#include <gtest/gtest.h>

#include "support/assert_recorder.h"

using namespace TarnLibA500;

TEST(Version, ComparesComponentsAsNumbers) {
    const struct {
        const char *a, *b;
        int result;
        unsigned reports;
    } cases[] = {
        {"1.2", "1.2.0", -1, 0},       {"1,10", "1.9", 1, 0}, {"1 2", "1.2", 0, 0},
        {"5.0.2147483647", "5", 1, 0}, {"", "0", -1, 0},      {"1..2", "1.2", 0, 0},
        {"1.-1", "1.0", -1, 0},        {"1.x", "1.x", 0, 0},  {"1.2a", "1.1", -1, 1},
        {"1.a", "1.b", 0, 2},          {"2.a", "1.b", 1, 0},  {"1.2147483648", "1.1", -1, 1},
    };
    for (const auto& c : cases) {
        tarntest::AssertRecorder recorder;
        EXPECT_EQ(SVersion::CompareVersions(c.a, c.b), c.result) << c.a << " " << c.b;
        EXPECT_EQ(recorder.count(), c.reports) << c.a << " " << c.b;
        EXPECT_EQ(SVersion::CompareVersions(c.b, c.a), -c.result) << c.a << " " << c.b;
    }
}

TEST(Version, NamesBothTextsInTheReport) {
    static std::string report;
    SDiagnosticSink sink;
    sink.assertion = [](const char* text) { report = text; };
    const SDiagnosticSink* const before = InstallDiagnosticSink(&sink);
    SVersion::CompareVersions("1.x", "1.2");
    InstallDiagnosticSink(before);
    EXPECT_NE(report.find("Could not compare version strings \"1.x\" and \"1.2\""), report.npos) << report;
}
