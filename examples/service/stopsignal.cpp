#include "stopsignal.h"

#include <atomic>
#include <system_error>

#include <windows.h>

using TarnLibA500::SAnsiString;
using TarnLibA500::SWCharString;

namespace {

std::atomic<StopSignal*> consoleSignal = nullptr;

BOOL WINAPI OnConsoleEvent(DWORD event) {
    if (StopSignal* const signal = consoleSignal) signal->raise();
    // The system ends the process as soon as this returns from one of the others: give the main thread its time.
    if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT) Sleep(INFINITE);
    return TRUE;
}

SWCharString EventName(const SAnsiString& name) {
    SWCharString wide;
    wide.fromMBCS(("Local\\" + name + ".stop").getString());
    return wide;
}

}  // namespace

StopSignal::StopSignal(const SAnsiString& name)
    : event_(CreateEventW(nullptr, TRUE, FALSE, EventName(name).getString())) {
    if (event_ == nullptr)
        throw std::system_error(static_cast<int>(GetLastError()), std::system_category(), "the stop event");
}

StopSignal::~StopSignal() {
    consoleSignal = nullptr;
    CloseHandle(event_);
}

void StopSignal::raise() noexcept {
    SetEvent(event_);
}

bool StopSignal::wait(unsigned long milliseconds) const noexcept {
    return WaitForSingleObject(event_, milliseconds) == WAIT_OBJECT_0;
}

void StopSignal::takeConsoleEvents() {
    consoleSignal = this;
    SetConsoleCtrlHandler(OnConsoleEvent, TRUE);
}

bool StopSignal::raiseOf(const SAnsiString& name) {
    const HANDLE event = OpenEventW(EVENT_MODIFY_STATE, FALSE, EventName(name).getString());
    if (event == nullptr) return false;
    SetEvent(event);
    CloseHandle(event);
    return true;
}
