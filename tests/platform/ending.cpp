// A process that ends while its threads are in the middle of something. Another module's static destructor
// then wants what they held, and traces that it came through.
//
//     ending log|writing|threads|strings -loggingPath FOLDER
#include <filesystem>
#include <fstream>
#include <string>

#include "jtc/jtc.h"
#include "tarnlib/slogger.h"
#include "tarnlib/straceobj.h"
#include "tracelog/tracelog.h"

#include <windows.h>

using namespace TarnLibA500;

extern "C" __declspec(dllimport) void AtTheEnd(void (*say)());

namespace {

JTCMonitor& monitor = *new JTCMonitor;
HANDLE isAtIt = CreateEventW(nullptr, TRUE, FALSE, nullptr);

void Trace() {
    TARN_TRACE(6, "came through");
}

/// Takes the monitor and keeps it.
class Holder : public JTCThread {
  public:
    void run() override {
        const JTCSynchronized lock(monitor);
        const JTCSynchronized own(*this);
        SetEvent(isAtIt);
        Sleep(INFINITE);
    }
};
Holder& holder = *new Holder;

// One thread holds it, and another sleeps for it.
void HoldMonitor() {
    holder.start();
    WaitForSingleObject(isAtIt, INFINITE);
    (new Holder)->start();
    Sleep(50);
}

void UseMonitorAndThread() {
    const JTCSynchronized lock(monitor);
    monitor.wait(1);
    monitor.notifyAll();
    holder.setPriority(JTCThread::kHigh);
    holder.join();
    holder.join(60'000);
    { const JTCInitialize last; }
    if (holder.isAlive()) return;
    delete &holder;
    SLogger::Terminate();
    SLogger::Initialize(CParamLineArgs(GetCommandLineA()));
    Trace();
}

// Fills lines until it is stopped, mostly with the lock of the device.
DWORD WINAPI Write(void* isWriting) {
    TraceLog400::EventInfo event;
    event.importance = 2;
    for (int line = 0;; ++line) {
        TraceLog400::Logger(TraceLog400::Logger::S, event) << "a line";
        if (line == 100) SetEvent(isWriting);
    }
}

LONG CALLBACK StayInDebugOutput(EXCEPTION_POINTERS* exception) {
    const DWORD code = exception->ExceptionRecord->ExceptionCode;
    if (code != DBG_PRINTEXCEPTION_C && code != DBG_PRINTEXCEPTION_WIDE_C) return EXCEPTION_CONTINUE_SEARCH;
    SetEvent(isAtIt);
    Sleep(INFINITE);
    return EXCEPTION_CONTINUE_SEARCH;
}

// Has a thread stay where the device, with its lock, tells the debugger that it cannot write.
void HoldDevice() {
    const std::filesystem::path folder =
        std::filesystem::path(SLogger::GetLogFile().getString()).parent_path();
    std::filesystem::remove_all(folder);
    std::ofstream(folder) << "in the way";
    AddVectoredExceptionHandler(1, &StayInDebugOutput);
    CloseHandle(CreateThread(nullptr, 0, &Write, nullptr, 0, nullptr));
    WaitForSingleObject(isAtIt, INFINITE);
    std::filesystem::remove(folder);
}

void StartFour(LPTHREAD_START_ROUTINE work) {
    for (int i = 0; i < 4; ++i) {
        const HANDLE isAtWork = CreateEventW(nullptr, TRUE, FALSE, nullptr);
        CloseHandle(CreateThread(nullptr, 0, work, isAtWork, 0, nullptr));
        WaitForSingleObject(isAtWork, INFINITE);  // Wine does not end a thread that is only just beginning
    }
}

constexpr int kTexts = 300;
const std::string& letters = *new std::string(3 * kTexts, 'x');
SAnsiString* const madeEarlier = new SAnsiString[kTexts];

// All from small blocks: under Wine the C heap waits for ever for a thread that is gone.
void Fill(SAnsiString* texts) {
    for (std::uint32_t i = 0; i < kTexts; ++i) texts[i] = SAnsiString(letters.c_str(), 3 * i);
}

// Makes and frees texts until it is stopped, often in their store.
DWORD WINAPI MakeTexts(void* isMaking) {
    for (;; SetEvent(isMaking)) {
        SAnsiString texts[kTexts];
        Fill(texts);
    }
}

void FreeAndMakeTexts() {
    for (int i = 0; i < 10; ++i) {
        SAnsiString texts[kTexts];
        Fill(texts);
    }
    for (int i = 0; i < kTexts; ++i) madeEarlier[i].empty();
    Trace();
}

const struct {
    const char* name;
    void (*prepare)();
    void (*atTheEnd)();
} kCases[] = {
    {"log", &HoldDevice, &Trace},
    {"writing", [] { StartFour(&Write); }, &Trace},
    {"threads", &HoldMonitor, &UseMonitorAndThread},
    {"strings", [] { Fill(madeEarlier), StartFour(&MakeTexts); }, &FreeAndMakeTexts},
};

}  // namespace

int main(int count, char** arguments) {
    const std::string wanted = count > 1 ? arguments[1] : "";
    SLogger::Initialize(CParamLineArgs(GetCommandLineA()));
    for (const auto& [name, prepare, atTheEnd] : kCases) {
        if (wanted != name) continue;
        AtTheEnd(atTheEnd);
        prepare();
        return 0;
    }
    return 2;
}
