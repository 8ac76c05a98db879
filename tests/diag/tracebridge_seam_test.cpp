#include "diag/tracebridge.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "diag/loggeroptions.h"
#include "diag/traceini.h"
#include "diag/tracelevels.h"
#include "files/osfiles.h"
#include "support/alloc_hooks.h"
#include "support/case_file.h"
#include "support/file_bytes.h"
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

/// The engine in a folder of its own, open for as long as the object lives.
class OpenBridge {
  public:
    explicit OpenBridge(const std::string& options) : folder_(tarntest::MakeScratchFolder("tracebridge")) {
        CParamLineTracker tracker(ParseLoggerOptions((options + " -tracecmpname unit").c_str()));
        TraceOptions read = ReadTraceOptions(tracker);
        read.noThread = true;  // every line is written at once
        EXPECT_TRUE(TraceBridge::Initialize(read, folder_.string().c_str()));
    }
    ~OpenBridge() { TraceBridge::Terminate(); }
    OpenBridge(const OpenBridge&) = delete;
    OpenBridge& operator=(const OpenBridge&) = delete;

    /// The texts of a device's lines: what stands behind the place.
    std::vector<std::string> texts(const std::string& device = "") const {
        std::vector<std::string> texts;
        const std::string process = std::to_string(GetCurrentProcessId());
        std::ifstream log(folder_ / ("unit_" + process + device + ".log"));
        for (std::string line; std::getline(log, line);) texts.push_back(afterPlace(line));
        return texts;
    }

  private:
    static std::string afterPlace(const std::string& line) {
        const std::size_t context = line.find("] ");
        return context == line.npos ? line : line.substr(line.find(' ', context + 2) + 1);
    }

    fs::path folder_;
};

/// False when memory fails under way.
template <class Action>
bool Succeeds(Action action) {
    try {
        action();
        return true;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

bool Holds(const std::vector<std::string>& texts, const std::string& wanted) {
    for (const std::string& text : texts) {
        if (text.rfind(wanted, 0) == 0) return true;
    }
    return false;
}

}  // namespace

TEST(TraceBridges, MasksAndFiltersDecidePerLevel) {
    for (const auto& fields : tarntest::ReadCases("trace_masks.txt")) {
        const OpenBridge bridge(fields[0]);
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
        const OpenBridge bridge(fields[0]);
        EXPECT_TRUE(Holds(bridge.texts(), fields[1])) << fields[0] << "\n"
                                                      << testing::PrintToString(bridge.texts());
    }
    const OpenBridge bridge("-keep ON -maxLogFileSize 4294967296");
    EXPECT_TRUE(bridge.texts().empty());
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
    EXPECT_EQ(bridge.texts(".request"), std::vector<std::string>{"REQUEST\t(f.cpp:7) get /a"});
    const std::vector<std::string> expected = {"# (f.cpp:7) two\\r\\nlines", "no place",
                                               "Invalid or unimplemented tracing level at f.cpp(7)",
                                               "Invalid or unimplemented tracing level at [NULL](7)"};
    EXPECT_EQ(bridge.texts(), expected);
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

TEST(TraceBridges, ReportLevelsThatAreNone) {
    const OpenBridge bridge("-trace c- -sdkTrace");
    EXPECT_FALSE(SLogger::ShouldTrace(19, "f.cpp", 7));
    EXPECT_FALSE(SLogger::ShouldTrace(-5, nullptr, 7));
    TARN_TRACE_AT(77, "f.cpp", "text");
    const std::vector<std::string> texts = bridge.texts();
    ASSERT_EQ(texts.size(), 3U);
    EXPECT_EQ(texts[0], "TraceBridge::ShouldTrace: Invalid trace level specified at f.cpp(7)");
    EXPECT_EQ(texts[1], "TraceBridge::ShouldTrace: Invalid trace level specified at [NULL](7)");
}

TEST(TraceBridges, TakeOverAssertions) {
    {
        const OpenBridge bridge("-trace c-");
        SAssert("stime", 12, "IsValid()");
        EXPECT_EQ(bridge.texts(),
                  std::vector<std::string>{"assert failure: (stime:12). (IsValid() : no message)."});
    }
    {
        const OpenBridge bridge("-noassert");
        EXPECT_FALSE(SLogger::ShouldAssert());
        SAssert("stime", 12, "IsValid()");
        EXPECT_TRUE(bridge.texts().empty());
    }
    {
        const OpenBridge bridge("");
        SAssert("unit", 1, "e", L"\x20AC");
        EXPECT_EQ(bridge.texts(), std::vector<std::string>{"assert failure: (unit:1). (e : \xE2\x82\xAC)."});
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

TEST(LoggerStarts, LeaveNothingWhenMemoryFails) {
    const fs::path folder = tarntest::MakeScratchFolder("loggerstarts");
    const std::string line = "prog.exe -notracethread -reqTrace -keep off -loggingPath " + folder.string();
    const CParamLineArgs options(line.c_str());
    bool isStarted = false;
    for (unsigned long nth = 1; !isStarted; ++nth) {
        tarntest::FailAllocation(nth);
        try {
            isStarted = SLogger::Initialize(options);
        } catch (const std::bad_alloc&) {
        }
        tarntest::FailAllocation(0);
        if (!isStarted) EXPECT_EQ(InstallDiagnosticSink(nullptr), nullptr) << nth;
    }
    SAssert("unit", 1, "opens the log");
    tarntest::FailAllocation(1);
    EXPECT_NO_THROW(SLogger::Terminate());
    tarntest::FailAllocation(0);
    EXPECT_EQ(SLogger::GetLogFile(), "");
    EXPECT_TRUE(fs::is_empty(folder));
}

TEST(TraceIniFiles, KeepWhatIsInEffectUntilTheNewIsRead) {
    const fs::path file = tarntest::MakeScratchFolder("traceini") / "trace.ini";
    TraceIni ini(file.string().c_str());
    SAnsiString value;
    EXPECT_FALSE(ini.update());
    tarntest::WriteBytes(file, "\xEF\xBB\xBFtrace=\xC3\xBC\n");
    EXPECT_TRUE(ini.update());
    EXPECT_TRUE(ini.options().Lookup("trace", value));
    EXPECT_EQ(value, "\xFC");
    tarntest::WriteBytes(file, "trace=s\nkeep=off\n");
    bool isRead = false;
    for (unsigned long nth = 1; !isRead; ++nth) {
        EXPECT_EQ(ini.options().GetCount(), 1U) << nth;
        tarntest::FailAllocation(nth);
        try {
            isRead = ini.update();
        } catch (const std::bad_alloc&) {
        }
        tarntest::FailAllocation(0);
        EXPECT_EQ(osfiles::OpenHandles(), 0);
    }
    EXPECT_EQ(ini.options().GetCount(), 2U);
    tarntest::WriteBytes(file, "trace=d");
    for (unsigned long call = 1; call <= 3; ++call) {  // attributes, opening, reading
        osfiles::FailCall(call, ERROR_ACCESS_DENIED);
        EXPECT_EQ(ini.update(), call == 1);  // said once
        EXPECT_NE(ini.problem().find("trace.ini: cannot be read (5): "), ini.problem().end()) << call;
        EXPECT_EQ(ini.options().GetCount(), 2U) << call;
    }
    osfiles::FailCall(0, 0);
    EXPECT_TRUE(ini.update());
    EXPECT_TRUE(ini.problem().isEmpty());
    EXPECT_EQ(ini.options().GetCount(), 1U);
    tarntest::WriteBytes(file, "trace=d\n#" + std::string(64 * 1024, '#'));
    EXPECT_TRUE(ini.update());
    EXPECT_NE(ini.problem().find("what is beyond 65536 bytes is not read"), ini.problem().end());
}

TEST(CallContexts, GoOnAfterCallsWithoutAnEnd) {
    constexpr int kAbandoned = 300;  // by exceptions
    const OpenBridge bridge("-trace d");
    SAnsiString sent, reply;
    for (const bool isInCall : {true, false}) {
        if (isInCall) SLogger::BeforeIncomingCall("in", "ActionID=A");
        for (int i = 0; i < kAbandoned; ++i) SLogger::BeforeOutgoingCall("abandoned", sent);
        SLogger::BeforeOutgoingCall("last", sent);
        SLogger::AfterOutgoingCall("ActionID=B;x=1");
        EXPECT_EQ(SLogger::GetContextVar("x"), "1");
        if (!isInCall) break;
        EXPECT_EQ(SLogger::GetActionID(), "A");  // the caller's, whatever a reply says
        SLogger::AfterIncomingCall(reply);
        EXPECT_FALSE(SLogger::HasLogContext());
        EXPECT_NE(bridge.texts().back().find("<- Incoming: in ("), std::string::npos);
    }
    for (int i = 0; i < kAbandoned; ++i) SLogger::AfterOutgoingCallNoResponse();
    EXPECT_EQ(SLogger::GetActionID(), "");  // it was made for those calls
    for (int i = 0; i < kAbandoned; ++i) SLogger::BeforeIncomingCall("abandoned", "");
    SLogger::BeforeIncomingCall("last", "ActionID=C");
    EXPECT_EQ(SLogger::GetActionID(), "C");
    for (int i = 0; i <= kAbandoned; ++i) SLogger::AfterIncomingCall(reply);
    SLogger::SetContextVar("ActionID", "");
    SLogger::SetContextVar("x", "");
    EXPECT_FALSE(SLogger::HasLogContext());
}

TEST(CallContexts, AreThoseOfTheThreadWhereverMemoryFails) {
    SAnsiString sent, reply;
    bool hasFailed = true;
    for (unsigned long nth = 1; hasFailed; ++nth) {
        SLogger::BeforeIncomingCall("outer", "ActionID=outer;x=1");
        tarntest::FailAllocation(nth);
        const bool isIn = Succeeds([&] { SLogger::BeforeIncomingCall("inner", "ActionID=inner"); });
        const bool isOut = Succeeds([&] { SLogger::BeforeOutgoingCall("other", sent); });
        if (isOut) Succeeds([&] { SLogger::AfterOutgoingCall("y=2;ActionID=other"); });
        if (isIn) Succeeds([&] { SLogger::AfterIncomingCall(reply); });
        hasFailed = tarntest::FailureHappened();
        tarntest::FailAllocation(0);
        EXPECT_EQ(SLogger::GetActionID(), "outer") << nth;
        EXPECT_EQ(SLogger::GetContextVar("x"), "1") << nth;
        SLogger::AfterIncomingCall(reply);
        EXPECT_FALSE(SLogger::HasLogContext()) << nth;
    }
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
