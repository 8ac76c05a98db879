#include "tracelog/tracelog.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <string>
#include <thread>
#include <vector>

#include "support/scratch_folder.h"
#include "tracelog/osfile.h"

#include <windows.h>

using namespace TraceLog400;

namespace {

namespace fs = std::filesystem;

class Text : public TextTarget {
  public:
    void append(const char* text, std::size_t bytes) override { whole.append(text, bytes); }
    std::string whole;
};

/// The engine, writing everything into a folder of its own.
class TraceLogs : public testing::Test {
  protected:
    void SetUp() override { folder_ = tarntest::MakeScratchFolder("tracelog"); }
    void TearDown() override {
        osfile::FailCall(0, 0);
        DeviceAdmin::get().close_all();
    }
    void open(std::uint64_t size = 0, bool keep = true, bool buffered = false) const {
        const std::string folder = folder_.string();
        LogFileConfig files;
        files.directory = folder.c_str();
        files.size = size;
        files.apply();
        ActivationConfig activation;
        activation.component = "unit";
        activation.keep = keep;
        activation.buffered = buffered;
        activation.apply();
        EvalConfig masks;
        masks.assign_mask("*");
        masks.apply();
    }
    std::map<std::string, std::string> files() const {
        std::map<std::string, std::string> contents;
        for (const auto& entry : fs::directory_iterator(folder_)) {
            std::ifstream file(entry.path(), std::ios::binary);
            const std::string name = entry.path().filename().string();
            contents[name.substr(name.find('.'))].assign(std::istreambuf_iterator<char>(file), {});
        }
        return contents;
    }
    static void Write(const char* text) { Logger(Logger::S, Event()) << text; }
    static EventInfo Event() {
        EventInfo event;
        event.importance = 2;
        event.file = "src\\some\\unit.cpp";
        event.line = 12;
        return event;
    }
    /// Whole lines only; returns how many.
    static std::size_t CountWhole(const std::string& text) {
        static const std::regex line(
            R"(\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{3}[+-]\d\d:\d\d [-dlmhciwa] unit \d+ \d+ \[[^\]]*\] (-|[^ ]+) .*)");
        std::size_t count = 0;
        for (std::size_t start = 0; start < text.size(); ++count) {
            const std::size_t end = text.find("\r\n", start);
            EXPECT_NE(end, text.npos) << "torn: " << text.substr(start);
            if (end == text.npos) break;
            const std::string beginning = text.substr(start, std::min<std::size_t>(end - start, 200));
            EXPECT_TRUE(std::regex_match(beginning, line)) << beginning;
            start = end + 2;
        }
        return count;
    }

    fs::path folder_;
};

}  // namespace

TEST_F(TraceLogs, ARecordIsOneLineWhateverItsText) {
    open();
    Logger(Logger::S, Event()).write("a\r\nb\0c\x1B\x7F\td", 10) << " " << -9223372036854775807LL - 1;
    Logger(Logger::S, Event()) << std::string(70'000, 'x').c_str() << "not any more";
    Logger(Logger::XL, Event()) << (std::string(70'000, 'x') + "\xC3\xBC").c_str();
    const std::string text = files()[".log"];
    EXPECT_EQ(CountWhole(text), 3U);
    EXPECT_NE(text.find(" m unit "), text.npos);
    EXPECT_NE(text.find("] unit.cpp(12) a\\r\\nb\\x00c\\x1B\\x7F\td -9223372036854775808\r\n"), text.npos)
        << text.substr(0, 200);
    EXPECT_NE(text.find("xxx...\r\n"), text.npos);
    EXPECT_NE(text.find("xxx\xC3\xBC\r\n"), text.npos);
}

TEST_F(TraceLogs, AFullFileIsRenamedAndNothingIsLost) {
    open(2000);
    fs::create_directory(folder_ / ("unit_" + std::to_string(GetCurrentProcessId()) + ".001.log"));  // taken
    for (int i = 0; i < 50; ++i) Write("a line of some bytes");
    fs::remove(folder_ / ("unit_" + std::to_string(GetCurrentProcessId()) + ".001.log"));
    std::size_t lines = 0;
    for (const auto& [name, text] : files()) {
        lines += CountWhole(text);
        EXPECT_LE(text.size(), 2000U) << name;
    }
    EXPECT_EQ(lines, 50U);
    EXPECT_EQ(files().count(".002.log"), 1U);
    EXPECT_GE(files().size(), 3U);
}

TEST_F(TraceLogs, AFileThatCannotBeRenamedGoesOn) {
    open(500);
    Write("first");
    const HANDLE holder =
        CreateFileW((folder_ / ("unit_" + std::to_string(GetCurrentProcessId()) + ".log")).c_str(),
                    GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0, nullptr);
    for (int i = 0; i < 20; ++i) Write("more");
    CloseHandle(holder);
    EXPECT_EQ(files().size(), 1U);
    EXPECT_EQ(CountWhole(files()[".log"]), 21U);
}

TEST_F(TraceLogs, FilesThatAreNotKeptGo) {
    open(500, false);
    for (int i = 0; i < 50; ++i) Write("a line of some bytes");
    EXPECT_EQ(files().size(), 2U);  // the newest full one and the current one
    DeviceAdmin::get().close_all();
    EXPECT_TRUE(files().empty());
}

TEST_F(TraceLogs, LinesWaitOnlyWhileTheyMay) {
    open(0, true, true);
    Write("waits");
    EXPECT_TRUE(files().empty());
    State::tick();
    EXPECT_EQ(CountWhole(files()[".log"]), 1U);
    Logger(Logger::Warning) << "at once";
    EXPECT_EQ(CountWhole(files()[".log"]), 2U);
}

TEST_F(TraceLogs, WhateverCallFailsLinesAreWholeAndCounted) {
    for (unsigned long nth = 1; nth < 40; ++nth) {
        SetUp();
        open(500);
        testing::internal::CaptureStderr();
        osfile::FailCall(nth, ERROR_ACCESS_DENIED);
        for (int i = 0; i < 12; ++i) Write("a line of some bytes");
        osfile::FailCall(0, 0);
        DeviceAdmin::get().close_all();
        const std::string said = testing::internal::GetCapturedStderr();
        std::size_t lines = 0;
        for (const auto& [name, text] : files()) lines += CountWhole(text);
        EXPECT_TRUE(lines == 12 || said.find("cannot write the log ") != said.npos)
            << "call " << nth << ": " << lines;
        EXPECT_LE(lines, 12U);
    }
}

TEST_F(TraceLogs, AFullDiskIsSaidOnceAndTheLossIsCounted) {
    open();
    Write("before");
    testing::internal::CaptureStderr();
    osfile::FailCall(1, ERROR_DISK_FULL, true);
    for (int i = 0; i < 100; ++i) {
        if (i == 50) Sleep(1100);  // tried again, and still full
        Write("lost");
    }
    osfile::FailCall(0, 0);
    Sleep(1100);
    Write("after");
    const std::string said = testing::internal::GetCapturedStderr();
    EXPECT_EQ(said.find("cannot write the log "), said.rfind("cannot write the log "));
    EXPECT_NE(said.find("(112); lines are lost until this works again"), said.npos) << said;
    const std::string text = files()[".log"];
    EXPECT_EQ(CountWhole(text), 3U);
    EXPECT_NE(text.find(" w unit "), text.npos);
    EXPECT_NE(text.find("100 lines were lost\r\n"), text.npos) << text;
}

TEST_F(TraceLogs, EightThreadsLoseAndTearNothing) {
    constexpr int kThreads = 8;
    constexpr int kLines = 20'000;
    open(4 << 20, true, true);
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([t] {
            for (int i = 0; i < kLines; ++i) Logger(Logger::S, Event()) << "thread " << t << " line " << i;
        });
    }
    for (std::thread& thread : threads) thread.join();
    State::tick();
    std::map<std::string, int> last;  // of each thread: its lines are in order, in the files' order too
    const std::map<std::string, std::string> all = files();
    std::string whole;
    for (const auto& [name, text] : all) whole += name == ".log" ? "" : text;
    whole += all.at(".log");
    std::size_t count = 0;
    for (std::size_t at = whole.find(") thread "); at != whole.npos;
         at = whole.find(") thread ", at + 1), ++count) {
        const std::size_t line = whole.find(" line ", at);
        EXPECT_EQ(std::strtol(whole.c_str() + line + 6, nullptr, 10),
                  last[whole.substr(at + 9, line - at - 9)]++);
    }
    EXPECT_EQ(count, static_cast<std::size_t>(kThreads) * kLines);
    EXPECT_EQ(std::count(whole.begin(), whole.end(), '\n'), kThreads * kLines);
}

TEST(TraceContexts, SurviveHostileTexts) {
    Text text;
    Context::Updater::set("name;=%", "a]\r\nb\xC3\xBC");
    Interceptors::before_outgoing_call(Scope::Builder().label("call"), text);
    Interceptors::after_outgoing_call_no_response();
    EXPECT_EQ(text.whole.find("name%3B%3D%25=a%5D%0D%0Ab\xC3\xBC;ActionID="), 0U) << text.whole;
    const std::string tooLong(9000, 'x');
    for (const std::string& hostile :
         {std::string("%"), std::string("=x;;=;a=%4;b=%zz;\x01=1;c"), "x=" + tooLong}) {
        Text reply;
        Interceptors::before_incoming_call(Scope::Builder().label("call").context(hostile.c_str()));
        EXPECT_FALSE(Context::Info::came_from_outside()) << hostile.substr(0, 40);
        Interceptors::after_incoming_call(reply);
        EXPECT_EQ(reply.whole.find("ActionID="), 0U);
    }
    for (int i = 0; i < 100; ++i)
        Context::Updater::set(("v" + std::to_string(i)).c_str(), tooLong.substr(0, 1000).c_str());
    Text large;
    Interceptors::before_outgoing_call(Scope::Builder().label("call"), large);
    Interceptors::after_outgoing_call("name%3B%3D%25=");  // an empty value removes
    EXPECT_LE(large.whole.size(), 8U * 1024);
    EXPECT_FALSE(Context::Info::get("name;=%", text));
    Context::Updater::clear();
    EXPECT_FALSE(Context::Info::has());
}
