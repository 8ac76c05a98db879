#include "tracelog/tracelog.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <regex>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "seam/osclock.h"
#include "support/alloc_hooks.h"
#include "support/case_file.h"
#include "support/failing.h"
#include "support/file_bytes.h"
#include "tracelog/osfile.h"

#include <windows.h>

using namespace TraceLog400;
using tarntest::Instead;

namespace {

namespace fs = std::filesystem;

class Text : public TextTarget {
  public:
    void append(const char* text, std::size_t bytes) override { whole.append(text, bytes); }
    std::string whole;
};

/// What the disk has room for at a time.
DWORD mostBytes = INFINITE;

BOOL WINAPI WriteSome(HANDLE file, const void* bytes, DWORD count, DWORD* written, OVERLAPPED* request) {
    return WriteFile(file, bytes, std::min(count, mostBytes), written, request);
}

/// Milliseconds that the clocks are ahead.
ULONGLONG passed = 0;

ULONGLONG WINAPI LaterTick() {
    return GetTickCount64() + passed;
}

void WINAPI LaterTime(FILETIME* time) {
    GetSystemTimeAsFileTime(time);
    const ULONGLONG later = osclock::UnitsOf(*time) + passed * 10'000;
    *time = {static_cast<DWORD>(later), static_cast<DWORD>(later >> 32)};
}

/// The engine, writing everything into a folder of its own.
class TraceLogs : public testing::Test {
  protected:
    void SetUp() override {
        DeviceAdmin::get().close_all();
        folder_ = tarntest::MakeScratchFolder("tracelog");
    }
    void TearDown() override {
        osfile::Calls::Fail(0, 0);
        mostBytes = INFINITE;
        DeviceAdmin::get().close_all();
    }
    void open(std::uint64_t size = 0, bool keep = true, bool buffered = false, unsigned files = 0,
              unsigned days = 0) const {
        const std::string folder = folder_.string();
        LogFileConfig{folder.c_str(), size, files, days}.apply();
        ActivationConfig activation;
        activation.component = "unit";
        activation.keep = keep;
        activation.buffered = buffered;
        activation.apply();
        EvalConfig masks;
        masks.assign_mask("*");
        masks.apply();
    }
    /// The files' contents; "#" in a name stands for this process, "@" for another one that lives.
    std::map<std::string, std::string> files() const {
        std::map<std::string, std::string> contents;
        for (const auto& entry : fs::directory_iterator(folder_))
            contents[Replaced(Replaced(entry.path().filename().string(), own_, "_#."), living_, "_@.")] =
                tarntest::ReadBytes(entry.path());
        return contents;
    }
    std::string log() const { return files()["unit_#.log"]; }
    static std::string Replaced(std::string text, const std::string& from, const std::string& to) {
        const std::size_t at = text.find(from);
        return at == text.npos ? text : text.replace(at, from.size(), to);
    }
    void take(const std::string& step);
    static void Write(const char* text) { Logger(Logger::S, Event()) << text; }
    static EventInfo Event() {
        EventInfo event;
        event.importance = 2;
        event.file = "src\\some\\unit.cpp";
        event.line = 12;
        return event;
    }
    static unsigned Count(const std::string& text, const std::string& sought) {
        unsigned count = 0;
        for (auto at = text.find(sought); at != text.npos; at = text.find(sought, at + 1)) ++count;
        return count;
    }
    /// Whole lines only; returns how many.
    static std::size_t CountWhole(const std::string& text) {
        static const std::regex beginning(
            R"(\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{3}[+-]\d\d:\d\d [-dlmhciwa] unit \d+ \d+ \[[^\]]*\] (-|[^ ]+) .*\r?)");
        EXPECT_TRUE(text.empty() || text.ends_with("\n")) << "torn: " << text.substr(text.rfind('\n') + 1);
        std::istringstream lines(text);
        std::size_t count = 0;
        for (std::string line; std::getline(lines, line); ++count) {
            EXPECT_TRUE(line.ends_with("\r") && std::regex_match(line.substr(0, 200), beginning))
                << line.substr(0, 200);
        }
        return count;
    }

    const Instead<decltype(WriteFile)> writing_{osfile::writeFile, WriteSome};
    const Instead<decltype(GetTickCount64)> ticking_{osclock::tickCount, LaterTick};
    const Instead<decltype(GetSystemTimeAsFileTime)> time_{osclock::systemTime, LaterTime};
    fs::path folder_;
    std::string said_;
    const std::string own_ = "_" + std::to_string(GetCurrentProcessId()) + ".";
    std::string living_ = "_none.";
    std::size_t lineBytes_ = 0;
    HANDLE held_ = nullptr;
};

/// A step of platform/tracelog_files.txt.
void TraceLogs::take(const std::string& step) {
    std::istringstream in(step);
    std::string verb, name, left;
    unsigned number = 0;
    in >> verb >> number;
    if (verb == "open") {
        unsigned files = 0, days = 0;
        in >> files >> days;
        open(number * lineBytes_ - (step.find("short") != step.npos), step.find("dropped") == step.npos,
             step.find("buffered") != step.npos, files, days);
    } else if (verb == "write") {
        for (; number > 0; --number) Write("a line");
    } else if (verb == "urgent") {
        Logger(Logger::Warning) << "at once";
        EventInfo urgent;
        urgent.attribute = 2;
        Logger(Logger::S, urgent) << "at once, too";
    } else if (verb == "tick") {
        State::tick();
    } else if (verb == "close") {
        DeviceAdmin::get().close_all();
    } else if (verb == "seconds") {
        passed += number * 1000;
    } else if (verb == "listen") {
        testing::internal::CaptureStderr();
    } else if (verb == "heard") {
        said_ = testing::internal::GetCapturedStderr();
    } else if (verb == "room") {
        mostBytes = number;
    } else if (verb == "full") {
        osfile::Calls::Fail(1, ERROR_DISK_FULL, true);
    } else if (verb == "works") {
        osfile::Calls::Fail(0, 0);
        mostBytes = INFINITE;
    } else if (verb == "said" || verb == "logged") {
        left.assign(std::istreambuf_iterator<char>(in.ignore()), {});
        EXPECT_EQ(Count(verb == "said" ? said_ : log(), left), number) << step << "\n" << said_ << log();
    } else if (verb == "release") {
        CloseHandle(held_);
    } else if (verb == "left") {
        for (const auto& [file, text] : files())
            left += " " + file + (text == "x" ? "" : "=" + std::to_string(CountWhole(text)));
        EXPECT_EQ(verb + left, step);
    } else {
        in >> name;
        const fs::path path = folder_ / Replaced(Replaced(name, "_#.", own_), "_@.", living_);
        if (verb == "old") {
            tarntest::WriteBytes(path, "x");
            fs::last_write_time(path, fs::file_time_type::clock::now() - std::chrono::hours(24 * number));
        } else {
            ASSERT_EQ(verb, "hold");
            held_ = CreateFileW(path.c_str(), GENERIC_READ, number, nullptr, OPEN_EXISTING, 0, nullptr);
        }
    }
}

}  // namespace

TEST_F(TraceLogs, ARecordIsOneLineWhateverItsText) {
    open();
    Context::Updater::set("name", "a\xC2\x85");
    Logger(Logger::S, Event()) << "text " << -9223372036854775807LL - 1;
    Context::Updater::clear();
    Logger(Logger::S, Event()) << std::string(70'000, 'x').c_str() << "not any more";
    Logger(Logger::XL, Event()) << (std::string(70'000, 'x') + "\xC3\xBC").c_str();
    std::vector<std::string> wanted = {" m unit ",
                                       "[name=a%C2%85] unit.cpp(12) text -9223372036854775808\r\n",
                                       "xxx...\r\n", "xxx\xC3\xBC\r\n"};
    for (const auto& fields : tarntest::ReadCases("platform/tracelog_texts.txt")) {
        Logger(Logger::S, Event()).write(fields[0].data(), fields[0].size());
        wanted.push_back("[] unit.cpp(12) " + fields[1] + "\r\n");
    }
    const std::string text = log();
    EXPECT_EQ(CountWhole(text), wanted.size() - 1);
    for (const std::string& part : wanted) EXPECT_NE(text.find(part), text.npos) << part;
}

TEST_F(TraceLogs, LeaveTheirFilesAsTheLimitsSay) {
    open();
    Write("a line");
    lineBytes_ = log().size();
    wchar_t command[] = L"cmd.exe /c exit";
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION other{};
    ASSERT_TRUE(CreateProcessW(nullptr, command, nullptr, nullptr, FALSE, CREATE_SUSPENDED, nullptr, nullptr,
                               &startup, &other));
    living_ = "_" + std::to_string(other.dwProcessId) + ".";
    for (const auto& fields : tarntest::ReadCases("platform/tracelog_files.txt")) {
        SCOPED_TRACE(fields[0]);
        SetUp();
        for (std::size_t i = 1; i < fields.size(); ++i) take(fields[i]);
    }
    TerminateProcess(other.hProcess, 0);
    CloseHandle(other.hThread);
    CloseHandle(other.hProcess);
}

TEST_F(TraceLogs, ALineThatComesAfterTheCloseIsNotWritten) {
    open();
    {
        Logger late(Logger::S, Event());
        DeviceAdmin::get().close_all();
        late << "too late";
    }
    EXPECT_TRUE(files().empty());
}

// The second start takes what the first has left for the third and all others.
TEST_F(TraceLogs, StartingAndStoppingTakesNoMoreEachTime) {
    long blocks = 0;
    const fs::path folder = folder_;
    for (int cycle = 0; cycle < 20; ++cycle) {
        folder_ = folder / std::to_string(cycle % 2);
        open();
        ByFileLine filter;
        filter.set("", cycle % 2 == 0 ? "a.cpp" : "b.cpp");
        EvalConfig masks;
        masks.assign_filter(filter);
        masks.apply();
        Logger(Logger::Warning) << "line";
        DeviceAdmin::get().close_all();
        if (cycle == 3) blocks = tarntest::LiveBlocks();
        if (cycle > 3) ASSERT_EQ(tarntest::LiveBlocks(), blocks);
    }
}

TEST_F(TraceLogs, WhateverCallFailsLinesAreWholeAndCounted) {
    for (unsigned long nth = 1; nth < 40; ++nth) {
        SetUp();
        open(500);
        testing::internal::CaptureStderr();
        osfile::Calls::Fail(nth, ERROR_ACCESS_DENIED);
        for (int i = 0; i < 12; ++i) Write("a line of some bytes");
        osfile::Calls::Fail(0, 0);
        DeviceAdmin::get().close_all();
        const std::string said = testing::internal::GetCapturedStderr();
        std::size_t lines = 0;
        for (const auto& [name, text] : files()) lines += CountWhole(text);
        EXPECT_TRUE(lines == 12 || said.find("cannot write the log ") != said.npos)
            << "call " << nth << ": " << lines;
        EXPECT_LE(lines, 12U);
    }
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
    int next[kThreads] =
        {};  // of each thread: its lines are in order, in the files' order too, the current one last
    for (const auto& [name, text] : files()) {
        std::istringstream lines(text);
        for (std::string line; std::getline(lines, line);) {
            int thread = 0, number = 0;
            ASSERT_EQ(std::sscanf(line.c_str(), "%*[^)]) thread %d line %d\r", &thread, &number), 2) << line;
            ASSERT_EQ(number, next[thread]++);
        }
    }
    for (const int count : next) EXPECT_EQ(count, kLines);
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
