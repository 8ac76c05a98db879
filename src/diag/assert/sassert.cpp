#include "tarnlib/sassert.h"

#include <atomic>
#include <cstdio>
#include <memory>

#include "diag/assert/narrowreports.h"
#include "diag/assert/tracefilter.h"
#include "diag/assert/unlogged.h"
#include "seam/osmemory.h"
#include "seam/ostext.h"

#include <windows.h>

namespace TarnLibA500 {

std::atomic<bool> reportsAreUtf8{false};

namespace {

constexpr const char* kNoMessage = "no message";
constexpr std::size_t kUsualTextBytes = 1024;

const SDiagnosticSink kBuiltInSink;
std::atomic<const SDiagnosticSink*> installedSink{nullptr};
std::atomic<const TraceFilter*> traceFilter{nullptr};

// Trivially destructible on purpose: destructors of thread-local objects run after their storage is gone
// here.
thread_local bool reportingOnThisThread = false;

// Marks the thread as reporting, also when a sink throws.
class ReportingMark {
  public:
    ReportingMark() { reportingOnThisThread = true; }
    ~ReportingMark() { reportingOnThisThread = false; }
    ReportingMark(const ReportingMark&) = delete;
    ReportingMark& operator=(const ReportingMark&) = delete;
};

const SDiagnosticSink& CurrentSink() {
    const SDiagnosticSink* sink = installedSink.load(std::memory_order_acquire);
    return sink != nullptr ? *sink : kBuiltInSink;
}

const char* OrNothing(const char* text) {
    return text != nullptr ? text : "";
}

void DeliverText(const SDiagnosticSink& sink, const char* text) {
    (sink.assertion != nullptr ? sink.assertion : &ReportUnlogged)(text);
}

int Format(char* out, std::size_t size, const char* file, int line, const char* expression,
           const char* message) {
    return std::snprintf(out, size, "assert failure: (%s:%d). (%s : %s).", OrNothing(file), line,
                         OrNothing(expression), message != nullptr ? message : kNoMessage);
}

using Bytes = std::unique_ptr<char, decltype(&osmemory::Free)>;

// Null without memory: reports never throw.
Bytes Allocate(int bytes) {
    void* const room = bytes > 0 ? osmemory::Allocate(static_cast<std::size_t>(bytes)) : nullptr;
    return Bytes(static_cast<char*>(room), &osmemory::Free);
}

template <class Deliver>
void Report(const char* file, int line, const char* expression, const char* message, Deliver deliver) {
    char usual[kUsualTextBytes];
    const int length = Format(usual, sizeof usual, file, line, expression, message);
    if (length < static_cast<int>(sizeof usual)) return deliver(usual);
    const Bytes whole = Allocate(length + 1);
    if (whole == nullptr) return deliver(usual);  // cut, but reported
    Format(whole.get(), static_cast<std::size_t>(length) + 1, file, line, expression, message);
    deliver(whole.get());
}

/// A wide message in bytes, or as much of it as needs no memory when there is none.
class NarrowMessage {
  public:
    NarrowMessage(const wchar_t* message, UINT codePage) {
        if (convert(message, -1, codePage, usual_, sizeof usual_) != 0) return;
        const int bytes = convert(message, -1, codePage, nullptr, 0);
        whole_ = Allocate(bytes);
        if (whole_ != nullptr) {
            convert(message, -1, codePage, whole_.get(), bytes);
        } else {
            constexpr int kUnitsThatFit = sizeof usual_ / 3 - 1;  // a unit takes 3 bytes at most
            usual_[convert(message, kUnitsThatFit, codePage, usual_, sizeof usual_)] = '\0';
        }
    }
    const char* text() const { return whole_ != nullptr ? whole_.get() : usual_; }

  private:
    static int convert(const wchar_t* message, int units, UINT codePage, char* out, int room) {
        return ostext::FromWide(codePage, 0, message, units, out, room);
    }

    char usual_[kUsualTextBytes];
    Bytes whole_ = Allocate(0);
};

// One report at a time and thread, and only where they are wanted.
template <class Action>
void WhenWanted(Action report) {
    if (reportingOnThisThread) return;
    const ReportingMark mark;
    if (SLogger::ShouldAssert()) report(CurrentSink());
}

}  // namespace

const SDiagnosticSink* InstallDiagnosticSink(const SDiagnosticSink* sink) {
    const SDiagnosticSink* const before = installedSink.exchange(sink, std::memory_order_acq_rel);
    // The new sink is asked for every level; it may close those it never wants.
    const bool asks = sink != nullptr && (sink->shouldTraceAt != nullptr || sink->shouldTrace != nullptr);
    SLogger::openTraceLevels.store(asks ? UINT32_MAX : 0, std::memory_order_release);
    VoidKeptTraceAnswers();
    return before;
}

void UseTraceFilter(const TraceFilter& filter) noexcept {
    traceFilter.store(&filter, std::memory_order_release);
}

const TraceFilter* TraceFilterInForce() noexcept {
    const TraceFilter* const filter = traceFilter.load(std::memory_order_acquire);
    return filter != nullptr && filter->sink == &CurrentSink() ? filter : nullptr;
}

void VoidKeptTraceAnswers() noexcept {
    SLogger::traceSettings.fetch_add(1, std::memory_order_acq_rel);
}

namespace SLogger {
std::atomic<std::uint32_t> openTraceLevels{0};
std::atomic<std::uint32_t> traceSettings{1};

bool ShouldTrace(int level, const char* file, int line) {
    const SDiagnosticSink& sink = CurrentSink();
    if (sink.shouldTraceAt != nullptr) return sink.shouldTraceAt(level, file, line);
    return sink.shouldTrace != nullptr && sink.shouldTrace(level, OrNothing(file));
}

bool ShouldTrace(int level, const char* file) {
    return ShouldTrace(level, file, 0);
}

bool ShouldAssert() {
    const SDiagnosticSink& sink = CurrentSink();
    return sink.shouldAssert == nullptr || sink.shouldAssert();
}
}  // namespace SLogger

void SAssert(const char* file, int line, const char* expression, const char* message) {
    WhenWanted([&](const SDiagnosticSink& sink) {
        Report(file, line, expression, message, [&](const char* text) { DeliverText(sink, text); });
    });
}

void SAssert(const char* file, int line, const char* expression) {
    SAssert(file, line, expression, static_cast<const char*>(nullptr));
}

void SAssert(const char* file, int line, const char* expression, const wchar_t* message) {
    if (message == nullptr) return SAssert(file, line, expression);
    WhenWanted([&](const SDiagnosticSink& sink) {
        const bool takesUtf8 = sink.assertionUtf8 != nullptr;
        const NarrowMessage narrow(message, takesUtf8 || reportsAreUtf8 ? CP_UTF8 : CP_ACP);
        Report(file, line, expression, narrow.text(), [&](const char* text) {
            if (takesUtf8) return sink.assertionUtf8(text);
            DeliverText(sink, text);
        });
    });
}

bool ShouldTraceText(int level, const char* unit) {
    return SLogger::MayTrace(level) && SLogger::ShouldTrace(level, unit);
}

void TraceText(int level, const char* unit, const char* text) {
    if (ShouldTraceText(level, unit)) EmitTraceText(level, unit, 0, text);
}

void EmitTraceText(int level, const char* file, int line, const char* text) {
    const SDiagnosticSink& sink = CurrentSink();
    if (sink.traceAt != nullptr) {
        sink.traceAt(level, file, line, OrNothing(text));
    } else if (sink.trace != nullptr) {
        sink.trace(level, OrNothing(file), OrNothing(text));
    }
}

}  // namespace TarnLibA500
