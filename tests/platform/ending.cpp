// A process that ends while its threads are in the middle of something. Another module's static destructor
// then wants what they held, and traces that it came through.
//
//     ending log|monitor|thread|writing LOG_FOLDER
#include <string>
#include <thread>

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

void StartHolder() {
    holder.start();
    WaitForSingleObject(isAtIt, INFINITE);
}

void UseMonitor() {
    const JTCSynchronized lock(monitor);
    monitor.wait(1);
    monitor.notifyAll();
    Trace();
}

void UseThread() {
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
DWORD WINAPI Write(void*) {
    TraceLog400::EventInfo event;
    event.importance = 2;
    for (;;) TraceLog400::Logger(TraceLog400::Logger::S, event) << "a line";
}

DWORD WINAPI Flush(void*) {
    TraceLog400::State::tick();
    return 0;
}

bool IsDeviceFree() {
    const HANDLE prober = CreateThread(nullptr, 0, &Flush, nullptr, 0, nullptr);
    const bool isFree = WaitForSingleObject(prober, 300) == WAIT_OBJECT_0;
    CloseHandle(prober);
    return isFree;
}

// Stops a thread again and again until it has the device's lock.
void HoldDevice() {
    const HANDLE writer = CreateThread(nullptr, 0, &Write, nullptr, 0, nullptr);
    for (;;) {
        Sleep(1);
        SuspendThread(writer);
        if (!IsDeviceFree()) return;
        ResumeThread(writer);
    }
}

void WriteALot() {
    for (int i = 0; i < 4; ++i) CloseHandle(CreateThread(nullptr, 0, &Write, nullptr, 0, nullptr));
    Sleep(20);
}

const struct {
    const char* name;
    void (*prepare)();
    void (*atTheEnd)();
} kCases[] = {
    {"log", &HoldDevice, &Trace},
    {"writing", &WriteALot, &Trace},
    {"monitor", &StartHolder, &UseMonitor},
    {"thread", &StartHolder, &UseThread},
};

}  // namespace

int main(int count, char** arguments) {
    const std::string wanted = count > 1 ? arguments[1] : "";
    SLogger::Initialize(CParamLineArgs(GetCommandLineA()));
    for (const auto& c : kCases) {
        if (wanted != c.name) continue;
        AtTheEnd(c.atTheEnd);
        c.prepare();
        return 0;
    }
    return 2;
}
