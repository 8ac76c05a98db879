#include "tarnlib/slogger.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "support/assert_recorder.h"
#include "support/places.h"
#include "support/print_strings.h"
#include "support/scratch_folder.h"
#include "tarnlib/senvironment.h"
#include "tarnlib/sstackwalk.h"
#include "tarnlib/straceobj.h"

#include <windows.h>

using namespace TarnLibA500;

namespace {

namespace fs = std::filesystem;

class Logging : public testing::Test {
  protected:
    void SetUp() override { folder_ = tarntest::MakeScratchFolder("slogger") / "log files"; }
    void TearDown() override {
        for (; started_ > 0; --started_) SLogger::Terminate();
        SEnvironment::Remove("ZQE_LOGGER_ENVIRONMENT");
        SEnvironment::Remove("TARN_HOSTILE");
    }
    void start(const std::string& options) {
        startWith("prog.exe " + options + " -loggingPath \"" + folder_.string() + "\"");
    }
    void startWith(const std::string& line) {
        EXPECT_TRUE(SLogger::Initialize(CParamLineArgs(line.c_str())));
        ++started_;
    }
    /// The options that load a plug-in of the tests' or of the examples'.
    std::string plugin(const std::string& name) const {
        fs::create_directories(folder_);
        fs::copy_file(tarntest::Beside("plugins") / name, folder_ / name,
                      fs::copy_options::overwrite_existing);
        return " -loggingPluginDir \"" + folder_.string() + "\"";
    }
    /// Stops, takes the log away and returns its lines.
    std::vector<std::string> stopAndRead() {
        const fs::path path = SLogger::GetLogFile().getString();
        stop();
        const std::vector<std::string> lines = Lines(path);
        fs::remove(path);
        return lines;
    }
    void stop() {
        SLogger::Terminate();
        --started_;
    }
    static std::vector<std::string> Lines(const fs::path& file) {
        std::vector<std::string> lines;
        std::ifstream log(file);
        for (std::string line; std::getline(log, line);) lines.push_back(line);
        return lines;
    }
    static int CountWith(const std::vector<std::string>& lines, const std::string& text) {
        return static_cast<int>(std::count_if(lines.begin(), lines.end(), [&](const std::string& line) {
            return line.find(text) != line.npos;
        }));
    }
    static bool WaitFor(int seconds, bool (*holds)()) {
        for (int i = 0; i < seconds * 20; ++i) {
            if (holds()) return true;
            Sleep(50);
        }
        return false;
    }
    void write(const std::string& name, const std::string& text) const {
        fs::create_directories(folder_);
        std::ofstream(folder_ / name, std::ios::binary) << text;
    }

    fs::path folder_;
    int started_ = 0;
};

}  // namespace

TEST_F(Logging, IsCountedAndTellsItsOptions) {
    EXPECT_EQ(SLogger::GetCmdLine(), "");
    SEnvironment::Set("ZQE_LOGGER_ENVIRONMENT", "-tracecmpname \"my part\" -trace d -stackdump");
    start("-trace s");
    EXPECT_EQ(
        SLogger::GetCmdLine(),
        ("prog.exe -tracecmpname \"my part\" -stackdump -trace s -loggingPath \"" + folder_.string() + "\"")
            .c_str());
    const std::string file = "my part_" + std::to_string(_getpid()) + ".log";
    EXPECT_EQ(SLogger::GetLogFile(), (folder_ / file).string().c_str());
    EXPECT_TRUE(SLogger::CanStackDump());
    EXPECT_FALSE(SLogger::IsNativeAssert());
    start("-trace d");  // counted, not read
    EXPECT_TRUE(SLogger::ShouldTrace(2, "f.cpp"));
    EXPECT_FALSE(SLogger::ShouldTrace(6, "f.cpp"));
    stop();
    EXPECT_TRUE(SLogger::ShouldTrace(2, "f.cpp"));
    stop();
    EXPECT_FALSE(SLogger::ShouldTrace(2, "f.cpp"));
    EXPECT_EQ(SLogger::GetLogFile(), "");
    tarntest::AssertRecorder recorder;
    SLogger::Terminate();
    EXPECT_TRUE(recorder.sawLast("slogger", "initializations > 0"));
}

TEST_F(Logging, CarriesTheContextOfARequest) {
    start("-trace d");
    EXPECT_FALSE(SLogger::HasLogContext());
    SLogger::BeforeIncomingCall("Order", "ActionID=A%3B1;user=\xFC");
    EXPECT_TRUE(SLogger::HasPassport());
    EXPECT_EQ(SLogger::GetActionID(), "A;1");
    EXPECT_EQ(SLogger::GetContextVar("user"), "\xFC");
    SLogger::SetContextVar("step", "2");
    SAnsiString sent, reply;
    SLogger::BeforeOutgoingCall("Pay", sent);
    EXPECT_NE(sent.find("step=2"), sent.end());
    SLogger::BeforeIncomingCall("Pay", sent);  // as the other process would see it
    EXPECT_EQ(SLogger::GetActionID(), "A;1");
    SLogger::SetContextVar("paid", "yes");
    SLogger::AfterIncomingCall(reply);
    EXPECT_EQ(SLogger::GetContextVar("paid"), "");
    SLogger::AfterOutgoingCall(reply);
    EXPECT_EQ(SLogger::GetContextVar("paid"), "yes");
    TARN_TRACE(6, "inside");
    SLogger::AfterIncomingCall(reply);
    EXPECT_FALSE(SLogger::HasLogContext());
    SLogger::BeforeOutgoingCall("", sent);
    SLogger::AfterOutgoingCallNoResponse();
    EXPECT_NE(sent.find("ActionID="), sent.end());
    EXPECT_GE(CountWith(stopAndRead(), "ActionID=A"), 3);
}

TEST_F(Logging, StructuredEntriesReachTheLogAndThePlugIns) {
    const fs::path journal = folder_.parent_path() / "journal.txt";
    write("log_xn_broken.dll", "not a module");
    start("-trace m -sampleJournal \"" + journal.string() + "\"" + plugin("log_xn_sample.dll"));
    SLog(loglevel_warning, logcategory_network, 4711, "a", nullptr, "b\nc");
    SLog(loglevel_error, static_cast<logcategory>(32), 1, "beyond the plug-in's categories");
    const std::vector<std::string> lines = stopAndRead();
    ASSERT_EQ(lines.size(), 4U);  // the failure, what follows from it, and two entries
    EXPECT_NE(lines[1].find("log_xn_broken.dll is not used: "), std::string::npos) << lines[1];
    EXPECT_NE(lines[2].find(" slogger Log: level=1 cat=2 msg=4711 p=a p=b\\nc"), std::string::npos)
        << lines[1];
    EXPECT_EQ(Lines(journal), std::vector<std::string>{"1/2/4711 a b c"});
}

#ifndef TARN_STATIC
namespace {

template <class Function>
Function InHostile(const char* name) {
    const HMODULE module = GetModuleHandleW(L"log_xn_hostile.dll");
    return reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(module, name)));
}

}  // namespace

TEST_F(Logging, SurvivesHostilePlugIns) {
    const struct {
        const char* behaviour;
        const char* inLog;
    } cases[] = {
        {"of-another-time", "is not used: it was built for version 2 of the interface"},
        {"throws-at-start", "log_xn_hostile.dll is not used: its function Initialize threw: not today"},
        {"throws-when-asked", "log_xn_hostile.dll is not used: its function GetParam threw: std::bad_alloc"},
        {"throws", "log_xn_hostile.dll is not used: its function Trace threw: broken"},
        {"throws-at-end", "log_xn_hostile.dll threw at its end: an exception of an unknown type"},
        {"logs", "p=from within"},
        {"waits-at-end", "p=entry"},
        {"restarts", "(!isChanging : no message)."},
    };
    for (const auto& c : cases) {
        SEnvironment::Set("TARN_HOSTILE", c.behaviour);
        start("-trace m" + plugin("log_xn_hostile.dll"));
        for (int i = 0; i < 3; ++i) SLog(loglevel_error, logcategory_general, 1, "entry");
        const std::vector<std::string> log = stopAndRead();
        const bool isOfEntries = std::string(c.inLog).starts_with("p=");
        const int found = CountWith(log, c.inLog);
        EXPECT_TRUE(isOfEntries ? found > 1 : found == 1) << c.behaviour << testing::PrintToString(log);
        EXPECT_EQ(GetModuleHandleW(L"log_xn_hostile.dll"), nullptr) << c.behaviour;
    }
}

TEST_F(Logging, OneThreadAtATimeIsInThePlugIns) {
    constexpr int kThreads = 4;
    constexpr int kEntries = 1000;
    start("-trace c -Password hunter2 -theKeyFile c:\\k.pem -passive -hostile no" +
          plugin("log_xn_hostile.dll"));
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([] {
            for (int i = 0; i < kEntries; ++i) SLog(loglevel_error, logcategory_general, 1, "entry");
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(InHostile<int (*)()>("Overlaps")(), 0);
    EXPECT_EQ(InHostile<int (*)()>("Calls")(), kThreads * kEntries);
    const std::string options = InHostile<const char* (*)()>("Options")();
    EXPECT_NE(options.find(" -Password **** -theKeyFile **** -passive "), options.npos) << options;
    const SAnsiString own = SLogger::GetCmdLine();
    EXPECT_NE(own.find("hunter2"), own.end());
}
#endif

static bool PassesPoint() {
    bool isPassed = false;
    TARN_TRACE_AT(8, "g.cpp", "%1", isPassed = true);
    return isPassed;
}

TEST_F(Logging, TakesUpAChangedIniFile) {
    write("trace.ini", "\xEF\xBB\xBFtrace = s \n# at the start\n");
    start("-trace c -keep perhaps");
    EXPECT_TRUE(SLogger::ShouldTrace(2, "f.cpp"));
    EXPECT_FALSE(SLogger::ShouldTrace(8, "f.cpp"));
    const SAnsiString file = SLogger::GetLogFile();
    write("trace.ini",
          "trace=d\nfileLogFilter=f.cpp\nmaxLogFileSize=x\ntracecmpname="
          "other\nNoAssert\nneverTrace\nnativeassert");
    EXPECT_TRUE(WaitFor(60, [] { return SLogger::ShouldTrace(4, "f.cpp"); }));
    EXPECT_FALSE(SLogger::ShouldTrace(4, "g.cpp"));
    EXPECT_FALSE(PassesPoint());
    EXPECT_TRUE(SLogger::ShouldAssert());
    EXPECT_FALSE(SLogger::IsNativeAssert());
    EXPECT_EQ(SLogger::GetLogFile(), file);  // the name cannot be changed under way
    fs::remove(folder_ / "trace.ini");
    EXPECT_TRUE(WaitFor(60, [] { return !SLogger::ShouldTrace(4, "f.cpp"); }));
    EXPECT_TRUE(PassesPoint());
    const char* const expected[] = {
        // each said once
        "Invalid argument perhaps provided to keep",       "Using ByFileLine predicate:\\n  f.cpp",
        "Invalid argument x provided to maxLogFileSize",   "the option tracecmpname is not taken from there",
        "the option nativeassert is not taken from there", "the option noassert is not taken from there",
        "the option nevertrace is not taken from there",   "true"};
    const std::vector<std::string> lines = stopAndRead();
    ASSERT_EQ(lines.size(), std::size(expected)) << testing::PrintToString(lines);
    for (std::size_t i = 0; i < lines.size(); ++i)
        EXPECT_NE(lines[i].find(expected[i]), std::string::npos) << lines[i];
}

TEST_F(Logging, TrustsNoIniFileInTheTemporaryDirectory) {
    const fs::path temp = folder_.parent_path();
    fs::create_directories(temp / "velmora" / "logging");
    std::ofstream(temp / "velmora" / "logging" / "trace.ini") << "trace=*";
    SAnsiString before;
    SEnvironment::Get("TMP", before);
    SEnvironment::Set("TMP", temp.string().c_str());
    startWith("prog.exe");
    EXPECT_NE(SLogger::GetLogFile().find("velmora\\logging\\tarn"), SLogger::GetLogFile().end());
    EXPECT_FALSE(SLogger::ShouldTrace(4, "f.cpp"));
    stop();
    startWith("prog.exe -traceinipath \"" + (temp / "velmora" / "logging" / "trace.ini").string() + "\"");
    EXPECT_TRUE(SLogger::ShouldTrace(4, "f.cpp"));
    SEnvironment::Set("TMP", before);
}

TEST_F(Logging, StaysWhereItWasWhenTheCurrentDirectoryChanges) {
    const fs::path before = fs::current_path();
    fs::current_path(folder_.parent_path());
    write("trace.ini", "trace=s");
    startWith("prog.exe -loggingPath \"log files\"");
    fs::current_path(before);
    EXPECT_TRUE(SLogger::ShouldTrace(2, "f.cpp"));
    EXPECT_EQ(SLogger::GetCmdLine(), ("prog.exe -loggingPath \"" + folder_.string() + "\"").c_str());
    SAssert("unit", 1, "e");
    EXPECT_TRUE(fs::exists(SLogger::GetLogFile().getString()));
}

TEST_F(Logging, GoesOnWithoutItsDirectory) {
    std::ofstream(folder_.parent_path() / "log files") << "a file in the way";
    testing::internal::CaptureStderr();
    start("-trace d");
    TARN_TRACE(4, "lost");
    SAssert("unit", 1, "lost too");
    stop();
    const std::string errors = testing::internal::GetCapturedStderr();
    EXPECT_NE(errors.find("The internal logger count not create the required directories\n"
                          "The specified path is not accessible or does not exist: " +
                          folder_.string()),
              std::string::npos)
        << errors;
}

TEST(StackWalks, NameTheExportedFunctionsOnTheStack) {
    SAnsiString all, fewer;
    EXPECT_TRUE(SStackWalk::StackWalkAll(all, 0));
    EXPECT_TRUE(SStackWalk::StackWalkAll(fewer, 1));
    EXPECT_LT(fewer.getLength(), all.getLength());
    EXPECT_NE(all.find("  0 tarn_"), all.end()) << all.getString();
    // Called back by an exported function: its name is on the stack.
    static SAnsiString inside;
    SDiagnosticSink sink;
    sink.assertion = [](const char*) { SStackWalk::StackWalkAll(inside, 0); };
    const SDiagnosticSink* const before = InstallDiagnosticSink(&sink);
    SAssert("unit", 1, "e");
    InstallDiagnosticSink(before);
#ifndef TARN_STATIC
    EXPECT_NE(inside.find("tarnlib-5-0.dll TarnLibA500::SAssert(char const*, int, char const*"), inside.end())
        << inside.getString();
#endif
}

TEST(StackWalks, StartFromAnExceptionToo) {
    CONTEXT context{};
    RtlCaptureContext(&context);
    EXCEPTION_RECORD record{};
    EXCEPTION_POINTERS pointers{&record, &context};
    SAnsiString text("before: ");
    EXPECT_TRUE(SStackWalk::StackWalkAll(text, 0, &pointers));
    EXPECT_EQ(text.left(17), "before:   0 tarn_") << text.getString();
    context.Eip = context.Ebp = 0;
    text.empty();
    EXPECT_FALSE(SStackWalk::StackWalkAll(text, 0, &pointers));
    EXPECT_EQ(text.left(57), "Could not generate the stack dump because of an error: " + text.mid(55, 2));
}
