#include "tarnlib/sversion.h"

#include <gtest/gtest.h>

#include "support/assert_recorder.h"
#include "support/case_file.h"

using namespace TarnLibA500;

TEST(Version, ComparesComponentsAsNumbers) {
    for (const auto& c : tarntest::ReadCases("strings/versions.txt")) {
        tarntest::AssertRecorder recorder;
        const int result = std::stoi(c[2]);
        const std::string both = "Could not compare version strings \"" + c[0] + "\" and \"" + c[1] + "\"";
        EXPECT_EQ(SVersion::CompareVersions(c[0].c_str(), c[1].c_str()), result) << c[0] << " " << c[1];
        EXPECT_EQ(recorder.count(), std::stoul(c[3])) << c[0] << " " << c[1];
        EXPECT_EQ(recorder.last().find(both) != std::string::npos, c[3] != "0") << recorder.last();
        EXPECT_EQ(SVersion::CompareVersions(c[1].c_str(), c[0].c_str()), -result) << c[0] << " " << c[1];
    }
}
