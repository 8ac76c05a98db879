#include "command.h"
#include "options.h"
#include "system.h"
#include "tarnlib/sfilelock.h"
#include "tarnlib/sinstancelock.h"

#include <windows.h>

namespace tarn {
namespace {

using TarnLibA500::SAnsiString;
using TarnLibA500::SFileLock;
using TarnLibA500::SInstanceLock;
using TarnLibA500::SWCharString;

constexpr const char* kHelp =
    "-file F -stale N -tries N -run COMMAND [-repeat N]\n"
    "       tarn lock -instance NAME -run COMMAND\n\n"
    "Runs a command while no other process that agrees on the lock file F runs one: for short turns. Waiting "
    "is\n"
    "polling, a round every 100 ms. Or runs a command unless one runs under that name already, which may "
    "take\n"
    "as long as it likes.\n\n"
    "  -file F       the lock file: made for the time of the command, deleted after it\n"
    "  -stale N      a lock file that is the same for N rounds (N * 0.1 seconds) belongs to a holder that\n"
    "                died, and is deleted. Choose it longer than anybody's command ever takes; 0 counts as "
    "1\n"
    "  -tries N      gives up after N rounds (N * 0.1 seconds) in which another holds the lock; 0 gives up\n"
    "                at once\n"
    "  -run COMMAND  the command line, with the program first; \"cmd /c ...\" for what is no program\n"
    "  -repeat N     takes the lock, runs the command and gives the lock back N times (1), or until the\n"
    "                command fails\n"
    "  -instance N   any name: one process of the machine has it at a time, until it ends, however it "
    "ends\n\n"
    "Exit status: the command's; 1 when the lock was not to be had; 2 when the command could\n"
    "not be run, the lock file not be made or deleted, or somebody deleted it before the command ended.\n";

/// Lets the command decide about Ctrl+C: the lock is given back when it has ended.
BOOL WINAPI IgnoreInterrupt(DWORD event) {
    return event == CTRL_C_EVENT || event == CTRL_BREAK_EVENT;
}

unsigned long WaitForEnd(const PROCESS_INFORMATION& process) {
    DWORD status = kFailed;
    WaitForSingleObject(process.hProcess, INFINITE);
    GetExitCodeProcess(process.hProcess, &status);
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
    return status;
}

/// Runs a command line with our own input and outputs; returns its exit status.
unsigned long RunCommand(const std::string& command) {
    SWCharString line;
    line.fromUTF8(command.c_str());
    STARTUPINFOW startup = {};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process = {};
    // The system writes into the line.
    std::wstring writable(line.getString());
    if (!CreateProcessW(nullptr, writable.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup,
                        &process))
        throw Failure("cannot run " + command + ": " + SystemReason(GetLastError()));
    return WaitForEnd(process);
}

unsigned long RunUnder(SFileLock& lock, const std::string& command) {
    try {
        return RunCommand(command);
    } catch (...) {
        lock.unlock();
        throw;
    }
}

/// True when the lock is there; false when it was not to be had in time.
bool Take(SFileLock& lock, const std::string& file) {
    switch (lock.lock()) {
        case SFileLock::lockOk:
            return true;
        case SFileLock::lockOkBrokeStale:
            PrintError("tarn lock: " + file + " was left behind and has been deleted");
            return true;
        case SFileLock::lockTimedOut:
            return false;
        default:
            throw Failure("cannot make " + file + ": " + SystemReason(GetLastError()));
    }
}

void GiveBack(SFileLock& lock, const std::string& file) {
    switch (lock.unlock()) {
        case SFileLock::lockOk:
            return;
        case SFileLock::lockNotOwned:
            throw Failure(file + " was deleted while the command ran");
        default:
            throw Failure("cannot delete " + file);
    }
}

/// Without waiting, and without a file that could be left behind.
ExitStatus RunInstance(const std::string& name, const std::string& command) {
    SInstanceLock instance(name.c_str());
    switch (instance.take()) {
        case SInstanceLock::taken:
            SetConsoleCtrlHandler(IgnoreInterrupt, TRUE);
            return static_cast<ExitStatus>(RunCommand(command));
        case SInstanceLock::heldByAnother:
            PrintError("tarn lock: process " + std::to_string(instance.ownerProcess()) + " runs as " + name);
            return kNo;
        default:
            throw Failure("cannot take " + name + ": " + SystemReason(instance.lastError()));
    }
}

ExitStatus RunInTurn(const Options& options) {
    constexpr int kMostRounds = 65535;
    constexpr int kMostRepeats = 1'000'000'000;
    const std::string file = options.value("file");
    if (file.empty()) throw Failure("-file is missing");
    const auto stale = static_cast<unsigned short>(options.number("stale", 0, kMostRounds));
    const auto tries = static_cast<unsigned short>(options.number("tries", 0, kMostRounds));
    const int turns = options.has("repeat") ? options.number("repeat", 1, kMostRepeats) : 1;
    SetConsoleCtrlHandler(IgnoreInterrupt, TRUE);
    unsigned long status = 0;
    for (int turn = 0; turn < turns && status == 0; ++turn) {
        // Not unlocked automatically: without the lock that would delete another's.
        SFileLock lock(file.c_str(), stale, tries, false);
        if (!Take(lock, file)) {
            PrintError("tarn lock: gave up waiting for " + file);
            return kNo;
        }
        status = RunUnder(lock, options.value("run"));
        GiveBack(lock, file);
    }
    return static_cast<ExitStatus>(status);
}

ExitStatus RunLocked(const Words& arguments) {
    const Options options(arguments,
                          {.required = {"run"}, .values = {"file", "stale", "tries", "instance", "repeat"}});
    if (!options.has("instance")) return RunInTurn(options);
    for (const char* other : {"file", "stale", "tries", "repeat"}) {
        if (options.has(other)) throw Failure(std::string("-instance and -") + other + " exclude each other");
    }
    return RunInstance(options.value("instance"), options.value("run"));
}

}  // namespace

const Command kLockCommand = {"lock", "runs a command under a lock between processes", kHelp, RunLocked};

}  // namespace tarn
