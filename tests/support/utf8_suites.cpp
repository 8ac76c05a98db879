#include <gtest/gtest.h>

#include <string_view>

#include "tarnlib/snarrowtext.h"

namespace {

/// Suites whose names begin with Utf8 run where narrow text is UTF-8.
class Utf8Suites : public testing::EmptyTestEventListener {
    void OnTestSuiteStart(const testing::TestSuite& suite) override {
        if (std::string_view(suite.name()).starts_with("Utf8")) TarnLibA500::SNarrowText::UseUtf8();
    }
    void OnTestSuiteEnd(const testing::TestSuite&) override { TarnLibA500::SNarrowText::FollowLocale(); }
};

const bool isInstalled = (testing::UnitTest::GetInstance()->listeners().Append(new Utf8Suites), true);

}  // namespace
