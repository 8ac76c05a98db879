#include "diag/tracebridge.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "diag/open_bridge.h"
#include "diag/tracelevels.h"
#include "diag/tracetext.h"
#include "support/alloc_hooks.h"
#include "support/case_file.h"
#include "support/print_strings.h"
#include "tarnlib/sassert.h"
#include "tarnlib/sdescribeexception.h"
#include "tarnlib/slogger.h"
#include "tarnlib/straceobj.h"

#include <windows.h>

using namespace TarnLibA500;

namespace {

using tarntest::OpenBridge;
using tarntest::Succeeds;

using Lines = std::vector<std::string>;

}  // namespace

TEST(TraceBridges, MasksAndFiltersDecidePerLevel) {
    std::string before;  // nothing of it stays in effect
    for (const auto& fields : tarntest::ReadCases("trace_masks.txt")) {
        const OpenBridge bridge(before);
        bridge.change(fields[0]);
        before = fields[0];
        std::string on, mayBeOn;
        for (int level = 0; level < kTerminatorLevel; ++level) {
            on += SLogger::ShouldTrace(level, "src/unit.cpp", 3) ? '1' : '0';
            mayBeOn += SLogger::MayTrace(level) ? '1' : '0';
        }
        EXPECT_EQ(on, fields[1]) << fields[0];
        for (std::size_t i = 0; i < on.size(); ++i)
            EXPECT_LE(on[i], mayBeOn[i]) << fields[0] << " level " << i;
    }
}

TEST(TraceBridges, SayWhatIsWrongWithAnOption) {
    for (const auto& fields : tarntest::ReadCases("trace_notices.txt")) {
        const Lines texts = OpenBridge(fields[0]).texts();
        EXPECT_TRUE(fields[1].empty() ? texts.empty() : !texts.empty() && texts[0].rfind(fields[1], 0) == 0)
            << fields[0] << "\n"
            << testing::PrintToString(texts);
    }
}

TEST(TraceBridges, WriteRequestsToTheirChannels) {
    const OpenBridge bridge("-trace m -reqTrace");
    EXPECT_TRUE(TraceBridge::Trace(1, "get /a", "f.cpp", 7, TraceBridge::kPlace));
    EXPECT_TRUE(TraceBridge::Trace(3, "no such channel", "f.cpp", 7, 0));
    EXPECT_TRUE(TraceBridge::Trace(6, "two\r\nlines", "f.cpp", 7, TraceBridge::kMark | TraceBridge::kPlace));
    EXPECT_TRUE(TraceBridge::Trace(6, "no place", nullptr, 7, TraceBridge::kPlace));
    EXPECT_TRUE(TraceBridge::Trace(4, "off", "f.cpp", 7, 0));
    EXPECT_FALSE(TraceBridge::Trace(19, "text", "f.cpp", 7, 0));
    EXPECT_FALSE(TraceBridge::Trace(-1, "text", nullptr, 7, 0));
    EXPECT_FALSE(SLogger::ShouldTrace(19, "f.cpp", 7));
    EXPECT_FALSE(SLogger::ShouldTrace(-5, nullptr, 7));
    const std::string line = std::to_string(__LINE__ + 1);
    TARN_TRACE_AT(77, "f.cpp", "text");
    EXPECT_EQ(
        bridge.texts(),
        (Lines{"# (f.cpp:7) two\\r\\nlines", "no place", "Invalid or unimplemented tracing level at f.cpp(7)",
               "Invalid or unimplemented tracing level at [NULL](7)",
               "TraceBridge::ShouldTrace: Invalid trace level specified at f.cpp(7)",
               "TraceBridge::ShouldTrace: Invalid trace level specified at [NULL](7)",
               "TraceBridge::ShouldTrace: Invalid trace level specified at f.cpp(" + line + ")"}));
    EXPECT_EQ(bridge.texts(".request"), Lines{"REQUEST\t(f.cpp:7) get /a"});
}

TEST(TraceBridges, WriteWhatIsEmittedDirectlyWhereItIsWanted) {
    for (const auto& fields : tarntest::ReadCases("trace_texts.txt")) {
        const OpenBridge bridge(fields[0]);
        STraceObj(1, "f.cpp", 7)("one");
        STraceObj(3, "f.cpp", 7)("three");
        SAssert("unit", 1, "e", L"\x20AC");
        std::string texts;
        for (const char* const device : {"", ".sdk"}) {
            for (const std::string& text : bridge.texts(device)) texts += text.substr(0, 55) + "\n";
        }
        EXPECT_EQ(texts, fields[1]) << fields[0];
    }
}

TEST(TraceBridges, SayOnStandardErrorWhatNoLogTakes) {
    testing::internal::CaptureStderr();
    {
        const OpenBridge bridge("-nevertrace -keep perhaps -fileLogFilter a.cpp");
        SAssert("unit", 1, "e", L"\x20AC");
        EXPECT_TRUE(bridge.texts().empty());
    }
    const OpenBridge bridge("");
    for (unsigned long nth = 1; nth <= 2; ++nth) {  // an assertion never throws
        tarntest::FailAllocation(nth);
        SAssert("unit", 2, "e", "a message that is longer than the room that there is without memory");
        tarntest::FailAllocation(0);
    }
    const std::string expected =
        "TraceBridge::Initialize: Invalid argument perhaps provided to keep - must be 'on' or 'off'\n"
        "assert failure: (unit:1). (e : ?).\n"
        "assert failure: (unit:2). (e : a message";
    EXPECT_EQ(testing::internal::GetCapturedStderr().substr(0, expected.size()), expected);
}

TEST(LoggerStarts, LeaveNothingWhenMemoryFails) {
    const auto folder = tarntest::MakeScratchFolder("loggerstarts");
    const std::string line = "prog.exe -notracethread -reqTrace -keep off -loggingPath " + folder.string();
    const CParamLineArgs options(line.c_str());
    for (unsigned long nth = 1;; ++nth) {
        tarntest::FailAllocation(nth);
        const bool isStarted = Succeeds([&] { SLogger::Initialize(options); });
        tarntest::FailAllocation(0);
        if (isStarted) break;
        CollectedText state;
        TraceLog400::State::print(state);
        EXPECT_EQ(state.text().left(11), "writing: no") << nth;
        EXPECT_EQ(InstallDiagnosticSink(nullptr), nullptr) << nth;
    }
    SAssert("unit", 1, "opens the log");
    const tarntest::AllocationCount count;
    SLogger::Terminate();
    EXPECT_EQ(count.Taken(), 0U);
    EXPECT_TRUE(is_empty(folder));
}

TEST(Exceptions, AreDescribedWithoutMemory) {
    SAnsiString text;
    try {
        throw SAnsiString("a text that is taken over and then copied without its line end\r\n");
    } catch (...) {
        tarntest::FailAllocation(1);
        text = SDescribeException();
        tarntest::FailAllocation(0);
    }
    EXPECT_EQ(text, "out of memory");
}

TEST(TraceBridges, FindARowThatIsOutOfPlace) {
    const OpenBridge bridge("");
    const TraceLevel misplaced[] = {{0, 2, -1, -1, 0}, {2, 3, -1, -1, 1}, {19, -1, -1, -1, 1}};
    const TraceLevel unterminated[] = {{0, 2, -1, -1, 0}, {1, 3, -1, -1, 1}};
    EXPECT_FALSE(ValidateMapping(misplaced, 2));
    EXPECT_FALSE(ValidateMapping(unterminated, 1));
    EXPECT_EQ(bridge.texts(),
              (Lines{"ValidateMapping: TraceLog mapping is out of sync index 1 had trace_level 2",
                     "ValidateMapping: TraceLog mapping was incorrectly terminated - found level 1"}));
}

TEST(TraceBridges, TracePointsAllocateNothing) {
    const OpenBridge bridge("-trace m");
    const SAnsiString shared("a text that is longer than the room that an argument has for short ones");
    unsigned long taken = 0;
    for (int i = 0; i < 2; ++i) {  // the first opens the file
        const tarntest::AllocationCount count;
        TARN_TRACE_AT(4, "unit.cpp", "%1 %2 %3", 1, "off", shared);
        TARN_TRACE_AT(6, "unit.cpp", "%1 %2 %3", 1, "on", shared);
        taken = count.Taken();
    }
    EXPECT_EQ(taken, 0U);
    EXPECT_EQ(bridge.texts().size(), 2U);
}
