#include "scm.h"

#include <cstdio>

#include "serve.h"

#include <windows.h>

namespace {

using TarnLibA500::CParamLineArgs;
using TarnLibA500::SWCharString;

constexpr DWORD kWaitHint = 15000;  // more than a start or a stop takes

// The control manager calls functions without an argument of ours: one service a process.
const CParamLineArgs* serviceArgs = nullptr;
StopSignal* serviceStop = nullptr;
SERVICE_STATUS_HANDLE statusHandle = nullptr;

void Report(DWORD state, DWORD exitCode = NO_ERROR) {
    SERVICE_STATUS status = {};
    status.dwServiceType = SERVICE_WIN32_OWN_PROCESS;
    status.dwCurrentState = state;
    status.dwControlsAccepted = state == SERVICE_RUNNING ? SERVICE_ACCEPT_STOP | SERVICE_ACCEPT_SHUTDOWN : 0;
    status.dwWin32ExitCode = exitCode == NO_ERROR ? NO_ERROR : ERROR_SERVICE_SPECIFIC_ERROR;
    status.dwServiceSpecificExitCode = exitCode;
    status.dwWaitHint = state == SERVICE_RUNNING || state == SERVICE_STOPPED ? 0 : kWaitHint;
    SetServiceStatus(statusHandle, &status);
}

DWORD WINAPI OnControl(DWORD control, DWORD, void*, void*) {
    if (control == SERVICE_CONTROL_INTERROGATE) return NO_ERROR;
    if (control != SERVICE_CONTROL_STOP && control != SERVICE_CONTROL_SHUTDOWN)
        return ERROR_CALL_NOT_IMPLEMENTED;
    Report(SERVICE_STOP_PENDING);
    serviceStop->raise();
    return NO_ERROR;
}

SWCharString ServiceName() {
    SWCharString name;
    name.fromMBCS(InstanceName(*serviceArgs).getString());
    return name;
}

void WINAPI ServiceMain(DWORD, wchar_t**) {
    const SWCharString name = ServiceName();
    statusHandle = RegisterServiceCtrlHandlerExW(name.getString(), OnControl, nullptr);
    if (statusHandle == nullptr) return;
    Report(SERVICE_START_PENDING);
    const ExitStatus status = Serve(*serviceArgs, *serviceStop, [] { Report(SERVICE_RUNNING); });
    Report(SERVICE_STOPPED, status);
}

}  // namespace

int RunAsService(const CParamLineArgs& args) {
    StopSignal stop(InstanceName(args));
    serviceArgs = &args;
    serviceStop = &stop;
    SWCharString name = ServiceName();
    const SERVICE_TABLE_ENTRYW table[] = {{name.detach(), ServiceMain}, {nullptr, nullptr}};
    if (StartServiceCtrlDispatcherW(table)) return kStopped;
    std::fprintf(stderr, "service: -service is for the system's service control manager alone\n");
    return kFailed;
}
