#include "diag/logging/tracebridge.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <tuple>
#include <vector>

#include "diag/logging/open_bridge.h"
#include "diag/logging/osdesktop.h"
#include "diag/logging/tracelevels.h"
#include "diag/logging/tracetext.h"
#include "support/alloc_hooks.h"
#include "support/case_file.h"
#include "support/failing.h"
#include "support/print_strings.h"
#include "support/scratch_folder.h"
#include "tarnlib/sassert.h"
#include "tarnlib/sdescribeexception.h"
#include "tarnlib/slogger.h"
#include "tarnlib/straceobj.h"

#include <windows.h>

using namespace TarnLibA500;

namespace {

namespace fs = std::filesystem;
using tarntest::OpenBridge;
using tarntest::Succeeds;

bool Holds(const std::vector<std::string>& texts, const std::string& wanted) {
    for (const std::string& text : texts) {
        if (text.rfind(wanted, 0) == 0) return true;
    }
    return false;
}

}  // namespace

TEST(TraceBridges, MasksAndFiltersDecidePerLevel) {
    for (const auto& fields : tarntest::ReadCases("diag/trace_masks.txt")) {
        const OpenBridge bridge(fields[0]);
        std::string on, mayBeOn;
        for (int level = 0; level < kTerminatorLevel; ++level) {
            on += SLogger::ShouldTrace(level, "src/unit.cpp", 3) ? '1' : '0';
            mayBeOn += SLogger::MayTrace(level) ? '1' : '0';
            bool isPassed = false;
            TARN_TRACE_AT(level, "src/unit.cpp", "%1", isPassed = true);
            EXPECT_EQ(isPassed, on[level] == '1') << fields[0] << " level " << level;
        }
        char atPoint = '0';
        for (int passage = 0; passage < 2; ++passage) TARN_TRACE_AT(8, "src/unit.cpp", "%1", atPoint = '1');
        EXPECT_EQ(atPoint, on[8]) << fields[0];
        EXPECT_EQ(on, fields[1]) << fields[0];
        for (std::size_t i = 0; i < on.size(); ++i)
            EXPECT_LE(on[i], mayBeOn[i]) << fields[0] << " level " << i;
    }
}

TEST(TraceBridges, SayWhatIsWrongWithAnOption) {
    for (const auto& fields : tarntest::ReadCases("diag/trace_notices.txt")) {
        const OpenBridge bridge(fields[0]);
        EXPECT_TRUE(Holds(bridge.texts(), fields[1])) << fields[0] << "\n"
                                                      << testing::PrintToString(bridge.texts());
    }
    const OpenBridge bridge("-keep ON -maxLogFileSize 4294967296");
    EXPECT_TRUE(bridge.texts().empty());
}

TEST(TraceBridges, WriteRequestsToTheirChannels) {
    const OpenBridge bridge("-trace m -reqTrace");
    EXPECT_TRUE(bridge->Trace(1, "get /a", "f.cpp", 7, TraceBridge::kPlace));
    EXPECT_TRUE(bridge->Trace(3, "no such channel", "f.cpp", 7, 0));
    EXPECT_TRUE(bridge->Trace(6, "two\r\nlines", "f.cpp", 7, TraceBridge::kMark | TraceBridge::kPlace));
    EXPECT_TRUE(bridge->Trace(6, "no place", nullptr, 7, TraceBridge::kPlace));
    EXPECT_TRUE(bridge->Trace(4, "off", "f.cpp", 7, 0));
    EXPECT_FALSE(bridge->Trace(19, "text", "f.cpp", 7, 0));
    EXPECT_FALSE(bridge->Trace(-1, "text", nullptr, 7, 0));
    EXPECT_FALSE(SLogger::ShouldTrace(19, "f.cpp", 7) || SLogger::ShouldTrace(-5, nullptr, 7));
    TARN_TRACE_AT(77, "f.cpp", "text");
    EXPECT_EQ(bridge.texts(".request"), std::vector<std::string>{"REQUEST\t(f.cpp:7) get /a"});
    const std::vector<std::string> expected = {
        "# (f.cpp:7) two\\r\\nlines",
        "no place",
        "Invalid or unimplemented tracing level at f.cpp(7)",
        "Invalid or unimplemented tracing level at [NULL](7)",
        "TraceBridge::ShouldTrace: Invalid trace level specified at f.cpp(7)",
        "TraceBridge::ShouldTrace: Invalid trace level specified at [NULL](7)"};
    std::vector<std::string> texts = bridge.texts();
    EXPECT_NE(texts.back().find("Invalid trace level"),
              std::string::npos);  // of level 77, at a line of this file
    texts.pop_back();
    EXPECT_EQ(texts, expected);
}

TEST(TraceBridges, AskForRequestsThatAreEmittedDirectly) {
    const struct {
        const char* options;
        std::vector<std::string> inMain, inSdk;
    } cases[] = {{"-trace c", {}, {}},
                 {"-trace *", {"REQUEST\tone"}, {}},
                 {"-trace c- -sdkTrace", {}, {"SDKREQ\tthree"}}};
    for (const auto& c : cases) {
        const OpenBridge bridge(c.options);
        STraceObj(1, "f.cpp", 7)("one");
        STraceObj(3, "f.cpp", 7)("three");
        EXPECT_EQ(bridge.texts(), c.inMain) << c.options;
        EXPECT_EQ(bridge.texts(".sdk"), c.inSdk) << c.options;
    }
}

TEST(TraceBridges, TakeOverAssertions) {
    const struct {
        const char* options;
        const wchar_t* message;
        std::vector<std::string> texts;
    } cases[] = {{"-trace c-", nullptr, {"assert failure: (unit:1). (e : no message)."}},
                 {"", L"\x20AC", {"assert failure: (unit:1). (e : \xE2\x82\xAC)."}},
                 {"-noassert", nullptr, {}}};
    for (const auto& c : cases) {
        const OpenBridge bridge(c.options);
        SAssert("unit", 1, "e", c.message);
        EXPECT_EQ(bridge.texts(), c.texts) << c.options;
        EXPECT_EQ(SLogger::ShouldAssert(), !c.texts.empty());
    }
    const OpenBridge bridge("-stackdump");
    SAssert("stime", 12, "IsValid()");
    ASSERT_EQ(bridge.texts().size(), 1U);
    EXPECT_NE(bridge.texts()[0].find(" : no message).\\nStack Dump:\\n  0 "), std::string::npos)
        << bridge.texts()[0];
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
    const std::string said = testing::internal::GetCapturedStderr();
    EXPECT_EQ(
        said.find(
            "TraceBridge::Initialize: Invalid argument perhaps provided to keep - must be 'on' or 'off'\n"
            "assert failure: (unit:1). (e : ?).\n"
            "assert failure: (unit:2). (e : a message"),
        0U)
        << said;
}

namespace {

DWORD session = 0;
DWORD stationFlags = 0;
int boxes = 0;

BOOL WINAPI SessionOf(DWORD, DWORD* number) {
    *number = session;
    return TRUE;
}

BOOL WINAPI StationFlags(HANDLE, int, void* flags, DWORD, DWORD*) {
    static_cast<USEROBJECTFLAGS*>(flags)->dwFlags = stationFlags;
    return TRUE;
}

int WINAPI CountBox(HWND, const wchar_t*, const wchar_t*, UINT) {
    ++boxes;
    return IDIGNORE;
}

}  // namespace

TEST(TraceBridges, OpenADialogOnlyWhereSomebodySeesIt) {
    const tarntest::Instead sessions(osdesktop::sessionOf, &SessionOf);
    const tarntest::Instead stations(osdesktop::information, &StationFlags);
    const tarntest::Instead dialogs(osdesktop::messageBox, &CountBox);
    const OpenBridge bridge("-nativeassert");
    for (const auto& [number, flags, isShown] :
         {std::tuple(1, WSF_VISIBLE, 1), {1, 0, 0}, {0, WSF_VISIBLE, 0}}) {
        session = static_cast<DWORD>(number);
        stationFlags = static_cast<DWORD>(flags);
        boxes = 0;
        testing::internal::CaptureStderr();
        SAssert("unit", 1, "e");
        EXPECT_EQ(testing::internal::GetCapturedStderr(),
                  isShown ? "" : "assert failure: (unit:1). (e : no message).\n");
        EXPECT_EQ(boxes, isShown) << number << flags;
        EXPECT_TRUE(bridge->IsNativeAssert());
    }
    EXPECT_EQ(bridge.texts().size(), 3U);
}

TEST(LoggerStarts, LeaveNothingWhenMemoryFails) {
    const fs::path folder = tarntest::MakeScratchFolder("loggerstarts");
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
    const unsigned long taken = count.Taken();
    EXPECT_EQ(taken, 0U);
    EXPECT_EQ(SLogger::GetLogFile(), "");
    EXPECT_TRUE(fs::is_empty(folder));
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
    EXPECT_TRUE(ValidateMapping());
    const std::vector<std::string> expected = {
        "ValidateMapping: TraceLog mapping is out of sync index 1 had trace_level 2",
        "ValidateMapping: TraceLog mapping was incorrectly terminated - found level 1"};
    EXPECT_EQ(bridge.texts(), expected);
}

TEST(TraceBridges, TracePointsAllocateNothing) {
    const OpenBridge bridge("-trace m");
    const SAnsiString shared("a text that is longer than the room that an argument has for short ones");
    const auto trace = [&] {
        TARN_TRACE_AT(4, "unit.cpp", "%1 %2 %3", 1, "off", shared);
        TARN_TRACE_AT(6, "unit.cpp", "%1 %2 %3", 1, "on", shared);
    };
    trace();  // opens the file
    const tarntest::AllocationCount count;
    trace();
    const unsigned long taken = count.Taken();
    EXPECT_EQ(taken, 0U);
    EXPECT_EQ(bridge.texts().size(), 2U);
}
