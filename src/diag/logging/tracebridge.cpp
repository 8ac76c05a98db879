#include "diag/logging/tracebridge.h"

#include <new>

#include "diag/assert/levels.h"
#include "diag/assert/tracefilter.h"
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

// The bridge in force, for the functions of the sink, which have no argument for it. It stays the same when that
// bridge terminates: a thread may be on its way to it.
std::atomic<const TraceBridge*> inForce{nullptr};

SAnsiString Place(const char* file, int line) {
    return SAnsiString(file != nullptr ? file : "[NULL]") + "(" + SStringConv::ToString(line) + ")";
}

void Complain(const SAnsiString& text) {
    Logger(Logger::Assert) << Utf8(text).text();
}

void ConfigureEngine(const TraceOptions& options, const char* directory) {
    TraceLog400::LogFileConfig files;
    files.directory = directory;
    files.size = options.maxFileSize;
    files.files = options.maxFiles;
    files.days = options.maxDays;
    files.apply();
    options.eval.apply();
    VoidKeptTraceAnswers();
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
            ReportUnlogged(notice.text.getString());
        }
    }
}

// Frames from WithStack up to the code that asserts: two here, the sink's function and those of the seam.
constexpr int kFramesOfAssertion = 6;
constexpr int kFramesOfUtf8Assertion = 5;

// An assertion's line in UTF-8, with the stack behind it when that is wanted. Not inlined: frames are counted.
[[gnu::noinline]] SAnsiString WithStack(const char* utf8, bool wantsStack, int ownFrames) {
    SAnsiString report(utf8);
    if (!wantsStack) return report;
    SAnsiString stack;
    SStackWalk::StackWalkAll(stack, ownFrames);
    report.concat("\nStack Dump:\n").concat(Utf8(stack).text());
    return report;
}

void ReportUnloggedUtf8(const SAnsiString& utf8) {
    CollectedText text;
    text.append(utf8.getString(), utf8.getLength());
    ReportUnlogged(text.text().getString());
}

[[gnu::noinline]] void ReportAssertion(const char* utf8, int ownFrames) {
    const TraceBridge& bridge = *inForce.load();
    const SAnsiString report = WithStack(utf8, bridge.CanStackDump(), ownFrames);
    const bool wantsDialog = bridge.IsNativeAssert();
    const bool hasDialog = wantsDialog && CanShowNativeAssert();
    if (!bridge.NeverWrites()) Logger(Logger::Assert) << report.getString();
    if (bridge.NeverWrites() || wantsDialog != hasDialog) ReportUnloggedUtf8(report);
    if (hasDialog) ShowNativeAssert(report.getString());
}

// Without memory for more the line alone is reported: an assertion never throws.
void OnAssertion(const char* text) {
    try {
        ReportAssertion(Utf8(text).text(), kFramesOfAssertion);
    } catch (const std::bad_alloc&) {
        ReportUnlogged(text);
    }
}

void OnUtf8Assertion(const char* text) {
    try {
        ReportAssertion(text, kFramesOfUtf8Assertion);
    } catch (const std::bad_alloc&) {
        ReportUnlogged(text);
    }
}

bool WantsAssertions() {
    return inForce.load()->ShouldAssert();
}

bool WantsTrace(int level, const char* file, int line) {
    return inForce.load()->ShouldTrace(level, file, line);
}

void OnTrace(int level, const char* file, int line, const char* text) {
    inForce.load()->Trace(level, text, file, line, 0);
}

SDiagnosticSink MakeSink() {
    SDiagnosticSink sink;
    sink.assertion = &OnAssertion;
    sink.assertionUtf8 = &OnUtf8Assertion;
    sink.shouldAssert = &WantsAssertions;
    sink.shouldTraceAt = &WantsTrace;
    sink.traceAt = &OnTrace;
    return sink;
}

const SDiagnosticSink bridgeSink = MakeSink();

// A request level may be open whatever the filter says, and a number that is no level is reported each time.
bool FilterExcludes(int level, const char* file, int line) {
    const TraceLevel& row = FindTraceLevel(level);
    return row.isRequest == 0 && !MakeEvent(row, file, line).passes_filter();
}

constexpr TraceFilter kEngineFilter{&bridgeSink, &FilterExcludes};

void WriteToChannel(const char* device, const EventInfo& event, const char* prefix, const char* text) {
    Logger(Logger::M, event, DeviceAdmin::get().device(device)) << prefix << Utf8(text).text();
}

}  // namespace

// What can fail comes before trace points and assertions are taken over.
bool TraceBridge::Initialize(const TraceOptions& options, const SAnsiString& directory) {
    try {
        ConfigureEngine(options, Utf8Name(directory).getString());
        if (!ValidateMapping()) {
            closeEngine();
            return false;
        }
        takeSwitches(options);
        WriteNotices(options);
    } catch (...) {
        closeEngine();
        throw;
    }
    directory_ = directory;
    inForce = this;
    UseTraceFilter(kEngineFilter);
    sinkBefore_ = InstallDiagnosticSink(&bridgeSink);
    openLevels(options.eval);
    return true;
}

void TraceBridge::Reconfigure(const TraceOptions& options) {
    ConfigureEngine(options, Utf8Name(directory_).getString());
    takeSwitches(options);
    openLevels(options.eval);
    WriteNotices(options);
}

void TraceBridge::Terminate() noexcept {
    InstallDiagnosticSink(sinkBefore_);
    closeEngine();
}

void TraceBridge::closeEngine() noexcept {
    clearSwitches();
    DeviceAdmin::get().close_all();
    VoidKeptTraceAnswers();
    directory_.empty();
}

// Devices are made first, because that can fail.
void TraceBridge::takeSwitches(const TraceOptions& options) {
    if (options.requestChannel) DeviceAdmin::get().create(DeviceInfo(kRequestDevice));
    if (options.sdkChannel) DeviceAdmin::get().create(DeviceInfo(kSdkDevice));
    requestChannel_ = options.requestChannel;
    sdkChannel_ = options.sdkChannel;
    never_ = options.never;
    noAssert_ = options.noAssert;
    stackDump_ = options.stackDump;
    nativeAssert_ = options.nativeAssert;
}

void TraceBridge::clearSwitches() {
    for (std::atomic<bool>* const one :
         {&requestChannel_, &sdkChannel_, &never_, &noAssert_, &stackDump_, &nativeAssert_})
        *one = false;
}

bool TraceBridge::isFlagged(int level, const TraceLog400::EvalConfig& eval) const {
    if (level == kSdkRequestLevel) return sdkChannel_;
    if (level == kRequestLevel && requestChannel_) return true;
    return eval.passes(MakeEvent(FindTraceLevel(level), nullptr, 0));
}

// Which levels any trace point could need; numbers that are no level stay open, because they are reported.
void TraceBridge::openLevels(const TraceLog400::EvalConfig& eval) const {
    std::uint32_t open = UINT32_MAX << kTerminatorLevel;
    for (int level = 0; level < kTerminatorLevel; ++level) {
        if (isFlagged(level, eval)) open |= 1U << level;
    }
    SLogger::openTraceLevels.store(open, std::memory_order_release);
}

bool TraceBridge::ShouldTrace(int level, const char* file, int line) const {
    const TraceLevel& row = FindTraceLevel(level);
    if (row.level == kTerminatorLevel) {
        Complain("TraceBridge::ShouldTrace: Invalid trace level specified at " + Place(file, line));
        return false;
    }
    const EventInfo event = MakeEvent(row, file, line);
    if (row.isRequest == 0) return event.would_trace();
    if (level == kRequestLevel) return requestChannel_ || event.would_trace();
    if (level == kSdkRequestLevel) return sdkChannel_;
    Complain(
        STraceHelper("TraceBridge::ShouldTrace: unhandled special trace level in %1 at line %2", file, line));
    return false;
}

bool TraceBridge::Trace(int level, const char* text, const char* file, int line, unsigned flags) const {
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

}  // namespace TarnLibA500
