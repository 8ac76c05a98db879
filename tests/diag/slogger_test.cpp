#include "tarnlib/slogger.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "support/assert_recorder.h"
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
    }
    void start(const std::string& options) {
        const std::string line = "prog.exe " + options + " -loggingPath \"" + folder_.string() + "\"";
        EXPECT_TRUE(SLogger::Initialize(CParamLineArgs(line.c_str())));
        ++started_;
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
    const std::string path = SLogger::GetLogFile().getString();
    stop();
    int inContext = 0;
    for (const std::string& line : Lines(path)) inContext += line.find("ActionID=A") != line.npos ? 1 : 0;
    EXPECT_GE(inContext, 3);
}

TEST_F(Logging, StructuredEntriesReachTheLogAndThePlugIns) {
    const fs::path plugins = fs::path(TARN_TEST_PLUGINS);
    const fs::path journal = folder_.parent_path() / "journal.txt";
    fs::create_directories(folder_);
    write("log_xn_broken.dll", "not a module");
    fs::copy_file(plugins / "log_xn_sample.dll", folder_ / "log_xn_sample.dll");
    start("-trace m -sampleJournal \"" + journal.string() + "\" -loggingPluginDir \"" + folder_.string() +
          "\"");
    SLog(loglevel_warning, logcategory_network, 4711, "a", nullptr, "b c");
    SLog(loglevel_error, static_cast<logcategory>(32), 1, "beyond the plug-in's categories");
    const std::string path = SLogger::GetLogFile().getString();
    stop();
    const std::vector<std::string> lines = Lines(path);
    ASSERT_EQ(lines.size(), 4U);  // the failure, what follows from it, and two entries
    EXPECT_NE(lines[1].find("log_xn_broken.dll is not used: "), std::string::npos) << lines[1];
    EXPECT_NE(lines[2].find(" slogger Log: level=1 cat=2 msg=4711 p=a p=b c"), std::string::npos) << lines[1];
    EXPECT_EQ(Lines(journal), std::vector<std::string>{"1/2/4711 a b c"});
}

TEST_F(Logging, TakesUpAChangedIniFile) {
    write("trace.ini", "# at the start\n trace = s \n");
    start("-trace c");
    EXPECT_TRUE(SLogger::ShouldTrace(2, "f.cpp"));
    EXPECT_FALSE(SLogger::ShouldTrace(8, "f.cpp"));
    const SAnsiString file = SLogger::GetLogFile();
    write("trace.ini", "trace=d\nfileLogFilter=f.cpp\nkeep=perhaps\ntracecmpname=other");
    EXPECT_TRUE(WaitFor(10, [] { return SLogger::ShouldTrace(4, "f.cpp"); }));
    EXPECT_FALSE(SLogger::ShouldTrace(4, "g.cpp"));
    EXPECT_EQ(SLogger::GetLogFile(), file);  // the name cannot be changed under way
    fs::remove(folder_ / "trace.ini");
    EXPECT_TRUE(WaitFor(10, [] { return !SLogger::ShouldTrace(4, "f.cpp"); }));
    EXPECT_TRUE(SLogger::ShouldTrace(8, "g.cpp"));
    const std::string path = SLogger::GetLogFile().getString();
    stop();
    ASSERT_EQ(Lines(path).size(), 2U);  // said once, about the one change
    EXPECT_NE(Lines(path)[0].find("Using ByFileLine predicate:\\n  f.cpp"), std::string::npos);
    EXPECT_NE(Lines(path)[1].find("Invalid argument perhaps provided to keep"), std::string::npos);
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
