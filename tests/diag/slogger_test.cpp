#include "tarnlib/slogger.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <thread>
#include <vector>

#include "support/assert_recorder.h"
#include "support/case_file.h"
#include "support/file_bytes.h"
#include "support/print_strings.h"
#include "tarnlib/senvironment.h"
#include "tarnlib/sstackwalk.h"
#include "tarnlib/straceobj.h"

#include <windows.h>

using namespace TarnLibA500;

namespace {

namespace fs = std::filesystem;

class Logging : public testing::Test {
  protected:
    void SetUp() override { fs::create_directories(folder_); }
    void TearDown() override {
        for (; started_ > 0; --started_) SLogger::Terminate();
        SEnvironment::Remove("ZQE_LOGGER_ENVIRONMENT");
        SEnvironment::Remove("TARN_HOSTILE");
    }
    void start(const std::string& options) {
        startWith(options + " -loggingPath \"" + folder_.string() + "\"");
    }
    void startWith(const std::string& options) {
        EXPECT_TRUE(SLogger::Initialize(CParamLineArgs(("prog.exe " + options).c_str())));
        ++started_;
    }
    /// The options that load a plug-in of the tests' or of the examples'.
    std::string plugin(const std::string& name) const {
        fs::copy_file(fs::path(TARN_TEST_PLUGINS) / name, folder_ / name,
                      fs::copy_options::overwrite_existing);
        return " -loggingPluginDir \"" + folder_.string() + "\"";
    }
    /// Takes the lines of the log with it.
    std::vector<std::string> stop() {
        const fs::path path = SLogger::GetLogFile().getString();
        SLogger::Terminate();
        --started_;
        std::vector<std::string> lines = tarntest::ReadLines(path);
        std::error_code ignored;
        fs::remove(path, ignored);
        return lines;
    }

    const fs::path folder_ = tarntest::MakeScratchFolder("slogger") / "log files";
    const fs::path ini_ = folder_ / "trace.ini";
    int started_ = 0;
};

/// How many lines hold a text.
auto Count(const std::vector<std::string>& lines, const std::string& text) {
    return std::count_if(lines.begin(), lines.end(),
                         [&](const std::string& line) { return line.find(text) != line.npos; });
}

/// Every line holds its text, and there are no others.
void ExpectLines(const std::vector<std::string>& lines, const std::vector<std::string>& texts) {
    ASSERT_EQ(lines.size(), texts.size()) << testing::PrintToString(lines);
    for (std::size_t i = 0; i < lines.size(); ++i)
        EXPECT_NE(lines[i].find(texts[i]), std::string::npos) << lines[i];
}

}  // namespace

TEST_F(Logging, IsCountedAndTellsItsOptions) {
    SEnvironment::Set("ZQE_LOGGER_ENVIRONMENT", "-tracecmpname \"my part\" -trace d -stackdump");
    start("-trace s");
    const std::string options = "prog.exe -tracecmpname \"my part\" -stackdump -trace s -loggingPath ";
    EXPECT_EQ(SLogger::GetCmdLine(), (options + "\"" + folder_.string() + "\"").c_str());
    const std::string file = "my part_" + std::to_string(GetCurrentProcessId()) + ".log";
    EXPECT_EQ(SLogger::GetLogFile(), tarntest::Text(folder_ / file));
    start("-trace d");  // counted, not read
    EXPECT_FALSE(SLogger::ShouldTrace(6, "f.cpp"));
    for (const bool isOn : {true, false}) {
        SLogger::Terminate();
        EXPECT_EQ(SLogger::ShouldTrace(2, "f.cpp"), isOn);
    }
    started_ = 0;
    EXPECT_EQ(SLogger::GetLogFile(), "");
    tarntest::AssertRecorder recorder;
    SLogger::Terminate();
    EXPECT_TRUE(recorder.sawLast("slogger", "initializations > 0"));
}

TEST_F(Logging, CarriesTheContextOfARequest) {
    start("-trace d");
    SLogger::BeforeIncomingCall("Order", "ActionID=A%3B1;user=\xFC");
    EXPECT_TRUE(SLogger::HasPassport());
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
    EXPECT_GE(Count(stop(), "ActionID=A"), 3);
}

TEST_F(Logging, StructuredEntriesReachTheLogAndThePlugIns) {
    const fs::path journal = folder_.parent_path() / "journal.txt";
    tarntest::WriteBytes(folder_ / "log_xn_broken.dll", "not a module");
    start("-trace m -sampleJournal \"" + journal.string() + "\"" + plugin("log_xn_sample.dll"));
    SLog(loglevel_warning, logcategory_network, 4711, "a", nullptr, "b\nc");
    SLog(loglevel_error, static_cast<logcategory>(32), 1, "beyond the plug-in's categories");
    ExpectLines(stop(), {"", "log_xn_broken.dll is not used: ",  // behind the failure itself
                         " slogger Log: level=1 cat=2 msg=4711 p=a p=b\\nc", ""});
    EXPECT_EQ(tarntest::ReadLines(journal), std::vector<std::string>{"1/2/4711 a b c"});
}

#ifndef TARN_STATIC
TEST_F(Logging, SurvivesHostilePlugIns) {
    for (const auto& c : tarntest::ReadCases("plugins_hostile.txt")) {
        SEnvironment::Set("TARN_HOSTILE", c[0].c_str());
        start("-trace m" + plugin("log_xn_hostile.dll"));
        for (int i = 0; i < 3; ++i) SLog(loglevel_error, logcategory_general, 1, "entry");
        const std::vector<std::string> log = stop();
        EXPECT_EQ(Count(log, c[2]), std::stoi(c[1])) << c[0] << "\n" << testing::PrintToString(log);
        EXPECT_EQ(GetModuleHandleW(L"log_xn_hostile.dll"), nullptr) << c[0];
    }
}

TEST_F(Logging, OneThreadAtATimeIsInThePlugIns) {
    start("-trace c -Password hunter2 -theKeyFile c:\\k.pem -passive -hostile no" +
          plugin("log_xn_hostile.dll"));
    const auto log = [] {
        for (int i = 0; i < 1000; ++i) SLog(loglevel_error, logcategory_general, 1, "entry");
    };
    std::vector<std::jthread> threads;
    for (int t = 0; t < 4; ++t) threads.emplace_back(log);
    threads.clear();  // when they have ended
    const SAnsiString own = SLogger::GetCmdLine();
    EXPECT_NE(own.find("hunter2"), own.end());
    stop();
    SAnsiString seen;
    SEnvironment::Get("TARN_HOSTILE_SAW", seen);
    EXPECT_EQ(seen.left(34), "4000 calls, 0 in another, options ");
    EXPECT_NE(seen.find(" -Password **** -theKeyFile **** -passive "), seen.end()) << seen.getString();
}
#endif

TEST_F(Logging, TakesUpAChangedIniFile) {
    tarntest::WriteBytes(ini_, "\xEF\xBB\xBFtrace = s \n# at the start\nfileLogFilter=g.cpp\n");
    start("-trace c -keep perhaps");
    EXPECT_TRUE(SLogger::ShouldTrace(2, "g.cpp"));
    EXPECT_FALSE(SLogger::ShouldTrace(2, "f.cpp") || SLogger::ShouldTrace(8, "g.cpp"));
    const SAnsiString file = SLogger::GetLogFile();
    tarntest::WriteBytes(ini_,
                         "trace=d\nmaxLogFileSize=x\ntracecmpname=other\nNoAssert\nneverTrace\nnativeassert");
    for (int i = 0; i < 1200 && !SLogger::ShouldTrace(4, "f.cpp"); ++i) Sleep(50);
    EXPECT_TRUE(SLogger::ShouldTrace(4, "f.cpp"));
    EXPECT_TRUE(SLogger::ShouldAssert());
    EXPECT_FALSE(SLogger::IsNativeAssert());
    EXPECT_EQ(SLogger::GetLogFile(), file);  // the name cannot be changed under way
    ExpectLines(
        stop(),  // each said once
        {"Using ByFileLine predicate:\\n  g.cpp", "Invalid argument perhaps provided to keep",
         "Invalid argument x provided to maxLogFileSize", "the option tracecmpname is not taken from there",
         "the option nativeassert is not taken from there", "the option noassert is not taken from there",
         "the option nevertrace is not taken from there"});
}

TEST_F(Logging, TrustsNoIniFileInTheTemporaryDirectory) {
    const fs::path temp = folder_.parent_path();
    const fs::path ini = temp / "velmora" / "logging" / "trace.ini";
    fs::create_directories(ini.parent_path());
    tarntest::WriteBytes(ini, "trace=*");
    SAnsiString before;
    SEnvironment::Get("TMP", before);
    SEnvironment::Set("TMP", tarntest::Text(temp));
    startWith("");
    EXPECT_NE(SLogger::GetLogFile().find("velmora\\logging\\tarn"), SLogger::GetLogFile().end());
    EXPECT_FALSE(SLogger::ShouldTrace(4, "f.cpp"));
    stop();
    startWith("-traceinipath \"" + ini.string() + "\"");
    EXPECT_TRUE(SLogger::ShouldTrace(4, "f.cpp"));
    SEnvironment::Set("TMP", before);
}

TEST_F(Logging, StaysWhereItWasWhenTheCurrentDirectoryChanges) {
    const fs::path before = fs::current_path();
    fs::current_path(folder_.parent_path());
    tarntest::WriteBytes(ini_, "trace=s");
    startWith("-loggingPath \"log files\"");
    fs::current_path(before);
    EXPECT_TRUE(SLogger::ShouldTrace(2, "f.cpp"));
    EXPECT_EQ(SLogger::GetCmdLine(), ("prog.exe -loggingPath \"" + folder_.string() + "\"").c_str());
    SAssert("unit", 1, "e");
    EXPECT_TRUE(fs::exists(SLogger::GetLogFile().getString()));
}

TEST_F(Logging, GoesOnWithoutItsDirectory) {
    fs::remove(folder_);
    tarntest::WriteBytes(folder_, "a file in the way");
    testing::internal::CaptureStderr();
    start("-trace d");
    TARN_TRACE(4, "lost");
    SAssert("unit", 1, "lost too");
    stop();
    const std::string expected =
        "The internal logger count not create the required directories\n"
        "The specified path is not accessible or does not exist: ";
    const std::string errors = testing::internal::GetCapturedStderr();
    EXPECT_NE(errors.find(expected + folder_.string()), errors.npos) << errors;
}

TEST(StackWalks, NameTheExportedFunctionsOnTheStack) {
    static SAnsiString all, fewer;
    SDiagnosticSink sink;
    sink.assertion = [](const char*) {  // called back by an exported function
        EXPECT_TRUE(SStackWalk::StackWalkAll(all, 0));
        EXPECT_TRUE(SStackWalk::StackWalkAll(fewer, 1));
    };
    const SDiagnosticSink* const before = InstallDiagnosticSink(&sink);
    SAssert("unit", 1, "e");
    InstallDiagnosticSink(before);
    EXPECT_LT(fewer.getLength(), all.getLength());
    EXPECT_EQ(all.left(9), "  0 tarn_");
#ifndef TARN_STATIC
    EXPECT_NE(all.find("tarnlib-5-0.dll TarnLibA500::SAssert(char const*, int, char const*"), all.end())
        << all.getString();
#endif
}

TEST(StackWalks, StartFromAnExceptionToo) {
    CONTEXT context{};
    RtlCaptureContext(&context);
    EXCEPTION_RECORD record{};
    EXCEPTION_POINTERS pointers{&record, &context};
    SAnsiString text("before: ");
    EXPECT_TRUE(SStackWalk::StackWalkAll(text, 0, &pointers));
    EXPECT_EQ(text.left(17), "before:   0 tarn_");
    context.Eip = context.Ebp = 0;
    text.empty();
    EXPECT_FALSE(SStackWalk::StackWalkAll(text, 0, &pointers));
    EXPECT_EQ(text.left(57), "Could not generate the stack dump because of an error: " + text.mid(55, 2));
}
