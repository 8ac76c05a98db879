#include "diag/logging/tracebridge.h"

#include <atomic>
#include <new>

#include "diag/assert/levels.h"
#include "diag/assert/unlogged.h"
#include "diag/logging/nativeassert.h"
#include "diag/logging/tracelevels.h"
#include "diag/logging/tracetext.h"
#include "tarnlib/sassert.h"
#include "tarnlib/sstackwalk.h"
#include "tarnlib/sstringconv.h"
#include "tarnlib/straceparameter.h"

namespace TarnLibA500 {
namespace {

using TraceLog400::DeviceAdmin;
using TraceLog400::DeviceInfo;
using TraceLog400::EventInfo;
using TraceLog400::Logger;

constexpr const char* kRequestDevice = "request";
constexpr const char* kSdkDevice = "sdk";
constexpr const char* kOptionsUnit = "traceoptions";

// The switches that are asked at trace points and assertions, from any thread.
struct Switches {
    std::atomic<bool> requestChannel{false};
    std::atomic<bool> sdkChannel{false};
    std::atomic<bool> never{false};
    std::atomic<bool> noAssert{false};
    std::atomic<bool> stackDump{false};
    std::atomic<bool> nativeAssert{false};
};
Switches switches;

SAnsiString Place(const char* file, int line) {
    return SAnsiString(file != nullptr ? file : "[NULL]") + "(" + SStringConv::ToString(line) + ")";
}

void Complain(const SAnsiString& text) {
    Logger(Logger::Assert) << Utf8(text).text();
}

bool IsFlagged(int level, const TraceLog400::EvalConfig& eval) {
    if (level == kSdkRequestLevel) return switches.sdkChannel;
    if (level == kRequestLevel && switches.requestChannel) return true;
    return eval.passes(MakeEvent(FindTraceLevel(level), nullptr, 0));
}

// Which levels any trace point could need; numbers that are no level stay open, because they are reported.
void OpenLevels(const TraceLog400::EvalConfig& eval) {
    std::uint32_t open = UINT32_MAX << kTerminatorLevel;
    for (int level = 0; level < kTerminatorLevel; ++level) {
        if (IsFlagged(level, eval)) open |= 1U << level;
    }
    SLogger::openTraceLevels.store(open, std::memory_order_release);
}

// Devices are made first, because that can fail.
void TakeSwitches(const TraceOptions& options) {
    if (options.requestChannel) DeviceAdmin::get().create(DeviceInfo(kRequestDevice));
    if (options.sdkChannel) DeviceAdmin::get().create(DeviceInfo(kSdkDevice));
    switches.requestChannel = options.requestChannel;
    switches.sdkChannel = options.sdkChannel;
    switches.never = options.never;
    switches.noAssert = options.noAssert;
    switches.stackDump = options.stackDump;
    switches.nativeAssert = options.nativeAssert;
}

void ClearSwitches() {
    for (std::atomic<bool>* const one : {&switches.requestChannel, &switches.sdkChannel, &switches.never,
                                         &switches.noAssert, &switches.stackDump, &switches.nativeAssert})
        *one = false;
}

void ConfigureEngine(const TraceOptions& options, const char* directory) {
    TraceLog400::LogFileConfig files;
    files.directory = directory;
    files.size = options.maxFileSize;
    files.files = options.maxFiles;
    files.days = options.maxDays;
    files.apply();
    options.eval.apply();
    const Utf8 component(options.component);
    TraceLog400::ActivationConfig activation;
    activation.never = options.never;
    activation.always_close = options.alwaysClose;
    activation.keep = options.keep;
    activation.buffered = !options.noThread && !options.alwaysClose;  // the thread drives the engine
    activation.component = component.text();
    activation.apply();
}

void WriteNotice(const OptionNotice& notice) {
    const Utf8 text(notice.text);
    switch (notice.kind) {
        case OptionNotice::Information:
            Logger(Logger::M) << text.text();
            break;
        case OptionNotice::Deprecated:
            Logger(Logger::Warning) << text.text();
            break;
        case OptionNotice::Abandoned:
            Logger(Logger::Assert) << text.text();
            break;
        case OptionNotice::Loss:  // whatever the mask is: it may be what was refused
            Logger(Logger::M, MakeEvent(FindTraceLevel(levels::kLoss), kOptionsUnit, 0)) << text.text();
            break;
    }
}

// Where nothing is written, what went wrong is still said.
void WriteNotices(const TraceOptions& options) {
    for (const OptionNotice& notice : options.notices) {
        if (!options.never) {
            WriteNotice(notice);
        } else if (notice.kind != OptionNotice::Information) {
            TraceBridge::UnloadedAssert(notice.text.getString());
        }
    }
}

// An assertion's line in UTF-8, with the stack behind it when that is wanted.
SAnsiString WithStack(const char* utf8) {
    SAnsiString report(utf8);
    if (!switches.stackDump) return report;
    constexpr int kOwnFrames = 4;  // this one and the way here through the seam
    SAnsiString stack;
    SStackWalk::StackWalkAll(stack, kOwnFrames);
    report.concat("\nStack Dump:\n").concat(Utf8(stack).text());
    return report;
}

void ReportAssertion(const char* utf8) {
    const SAnsiString report = WithStack(utf8);
    if (switches.never) {
        CollectedText text;
        text.append(report.getString(), report.getLength());
        TraceBridge::UnloadedAssert(text.text().getString());
    } else {
        Logger(Logger::Assert) << report.getString();
    }
    if (switches.nativeAssert) ShowNativeAssert(report.getString());
}

// Without memory for more the line alone is reported: an assertion never throws.
void OnAssertion(const char* text) {
    try {
        ReportAssertion(Utf8(text).text());
    } catch (const std::bad_alloc&) {
        TraceBridge::UnloadedAssert(text);
    }
}

void OnUtf8Assertion(const char* text) {
    try {
        ReportAssertion(text);
    } catch (const std::bad_alloc&) {
        TraceBridge::UnloadedAssert(text);
    }
}

bool WantsAssertions() {
    return !switches.noAssert;
}

void OnTrace(int level, const char* file, int line, const char* text) {
    TraceBridge::Trace(level, text, file, line, 0);
}

SDiagnosticSink MakeSink() {
    SDiagnosticSink sink;
    sink.assertion = &OnAssertion;
    sink.assertionUtf8 = &OnUtf8Assertion;
    sink.shouldAssert = &WantsAssertions;
    sink.shouldTraceAt = &TraceBridge::ShouldTrace;
    sink.traceAt = &OnTrace;
    return sink;
}

const SDiagnosticSink bridgeSink = MakeSink();
const SDiagnosticSink* sinkBefore = nullptr;

// The settings that were put into effect last: the directory goes in again with every change.
SAnsiString& directoryInEffect = *new SAnsiString;

void CloseEngine() noexcept {
    ClearSwitches();
    DeviceAdmin::get().close_all();
    directoryInEffect.empty();
}

void WriteToChannel(const char* device, const EventInfo& event, const char* prefix, const char* text) {
    Logger(Logger::M, event, DeviceAdmin::get().device(device)) << prefix << Utf8(text).text();
}

}  // namespace

// What can fail comes before trace points and assertions are taken over.
bool TraceBridge::Initialize(const TraceOptions& options, const SAnsiString& directory) {
    try {
        ConfigureEngine(options, Utf8Name(directory).getString());
        if (!ValidateMapping()) {
            CloseEngine();
            return false;
        }
        TakeSwitches(options);
        WriteNotices(options);
    } catch (...) {
        CloseEngine();
        throw;
    }
    directoryInEffect = directory;
    sinkBefore = InstallDiagnosticSink(&bridgeSink);
    OpenLevels(options.eval);
    return true;
}

void TraceBridge::Reconfigure(const TraceOptions& options) {
    ConfigureEngine(options, Utf8Name(directoryInEffect).getString());
    TakeSwitches(options);
    OpenLevels(options.eval);
    WriteNotices(options);
}

void TraceBridge::Terminate() noexcept {
    InstallDiagnosticSink(sinkBefore);
    CloseEngine();
}

bool TraceBridge::ShouldTrace(int level, const char* file, int line) {
    const TraceLevel& row = FindTraceLevel(level);
    if (row.level == kTerminatorLevel) {
        Complain("TraceBridge::ShouldTrace: Invalid trace level specified at " + Place(file, line));
        return false;
    }
    const EventInfo event = MakeEvent(row, file, line);
    if (row.isRequest == 0) return event.would_trace();
    if (level == kRequestLevel) return switches.requestChannel || event.would_trace();
    if (level == kSdkRequestLevel) return switches.sdkChannel;
    Complain(
        STraceHelper("TraceBridge::ShouldTrace: unhandled special trace level in %1 at line %2", file, line));
    return false;
}

bool TraceBridge::Trace(int level, const char* text, const char* file, int line, unsigned flags) {
    SAnsiString placed;
    if ((flags & kPlace) != 0 && file != nullptr) {
        placed = STraceHelper("(%1:%2) %3", file, line, text);
        text = placed.getString();
    }
    const TraceLevel& row = FindTraceLevel(level);
    EventInfo event = MakeEvent(row, file, line);
    event.marker = flags & kMark;
    const bool isRequest = level == kRequestLevel || level == kSdkRequestLevel;
    if (isRequest && !ShouldTrace(level, file, line)) return true;  // events ask the engine themselves
    if (row.isRequest == 0) {
        Logger(Logger::S, event) << Utf8(text).text();
    } else if (level == kRequestLevel) {
        WriteToChannel(kRequestDevice, event, "REQUEST\t", text);
    } else if (level == kSdkRequestLevel) {
        WriteToChannel(kSdkDevice, event, "SDKREQ\t", text);
    } else {
        Complain("Invalid or unimplemented tracing level at " + Place(file, line));
        return false;
    }
    return true;
}

void TraceBridge::UnloadedAssert(const char* text) {
    ReportUnlogged(text);
}

bool TraceBridge::CanStackDump() {
    return switches.stackDump;
}

bool TraceBridge::IsNativeAssert() {
    return switches.nativeAssert;
}

}  // namespace TarnLibA500
