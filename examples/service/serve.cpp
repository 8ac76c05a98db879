#include "serve.h"

#include <cstdio>

#include "settings.h"
#include "tarnlib/sdescribeexception.h"
#include "tarnlib/sfile.h"
#include "tarnlib/sinstancelock.h"
#include "tarnlib/slogger.h"
#include "tarnlib/straceobj.h"
#include "workers.h"

#include <windows.h>

namespace {

constexpr unsigned long kLookMilliseconds = 250;  // between two looks at the ini file

// To people at a console, and to the log.
void Tell(const SAnsiString& text) {
    std::fprintf(stderr, "service: %s\n", text.getString());
    TARN_TRACE(9, "%1", text);
}

// The ini file's text, by which a change is seen; what could not be read is no change.
SAnsiString TextOf(const SAnsiString& file, const SAnsiString& before) {
    try {
        return SFile(file, SFile::readOnly, SFile::readWriteMask, SFile::denyNothing).readString();
    } catch (const SFileException&) {
        return before;
    }
}

// A wrong file leaves the settings as they were, until it changes again.
void Renew(const SAnsiString& file, SharedSettings& shared) {
    Settings settings = shared.get();
    SAnsiString why;
    if (!ReadSettings(file, settings, why)) {
        Tell("the settings stay as they were: " + why);
        return;
    }
    shared.set(settings);
    TARN_TRACE(6, "%1 was read again", file);
}

void RenewUntilStopped(const SAnsiString& file, SAnsiString text, SharedSettings& shared,
                       const StopSignal& stop) {
    while (!stop.wait(kLookMilliseconds)) {
        const SAnsiString now = TextOf(file, text);
        if (now == text) continue;
        text = now;
        Renew(file, shared);
    }
}

ExitStatus Work(const SAnsiString& file, const Settings& settings, StopSignal& stop,
                const std::function<void()>& onRunning) {
    const SAnsiString text = TextOf(file, SAnsiString());
    SharedSettings shared(settings);
    Workers workers(shared, stop);
    workers.start(settings.workers);
    TARN_TRACE(6, "running with %1 workers", settings.workers);
    onRunning();
    RenewUntilStopped(file, text, shared, stop);
    if (!workers.join(shared.get().stopMilliseconds)) {
        Tell("a worker did not stop in time");
        SLogger::Terminate();
        TerminateProcess(GetCurrentProcess(), kCutOff);  // what it holds cannot be waited for
    }
    TARN_TRACE(6, "stopped");
    return kStopped;
}

// False when there is another, or when the system does not tell, which people read.
bool IsOnlyOne(SInstanceLock& instance) {
    const SInstanceLock::Result result = instance.take();
    SAnsiString text;
    if (result == SInstanceLock::heldByAnother)
        text << "already running, process " << instance.ownerProcess();
    if (result == SInstanceLock::failed) text << "the instance lock failed: error " << instance.lastError();
    if (!text.isEmpty()) Tell(text);
    return result == SInstanceLock::taken;
}

ExitStatus ServeLogged(const CParamLineArgs& args, const SAnsiString& file, StopSignal& stop,
                       const std::function<void()>& onRunning) {
    // Free again when the process ends, however it ends.
    SInstanceLock instance(InstanceName(args));
    if (!IsOnlyOne(instance)) return kRefused;
    Settings settings;
    SAnsiString why;
    if (ReadSettings(file, settings, why)) return Work(file, settings, stop, onRunning);
    Tell(why);
    return kFailed;
}

}  // namespace

SAnsiString InstanceName(const CParamLineArgs& args) {
    SAnsiString name;
    return args.Lookup("name", name) && !name.isEmpty() ? name : SAnsiString("tarn-example-service");
}

ExitStatus Serve(const CParamLineArgs& args, StopSignal& stop, const std::function<void()>& onRunning) {
    const SAnsiString file = FindSettingsFile(args);
    const SInstrumentationInitialize logging(WithLoggingOptions(args, file));
    try {
        return ServeLogged(args, file, stop, onRunning);
    } catch (...) {
        Tell(SDescribeException());
        return kFailed;
    }
}
