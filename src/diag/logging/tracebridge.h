#pragma once

#include <atomic>

#include "diag/logging/traceoptions.h"
#include "tarnlib/sassert.h"

/// Between the front end and the tracing engine: what the levels, options and assertions of the one are in
/// the other.
namespace TarnLibA500 {

/// One is in force at a time, from Initialize to Terminate. Other threads may still be on their way through a
/// trace point or an assertion then, so it must live until they are out of it.
class TraceBridge {
  public:
    /// What Trace is to do besides writing the text.
    enum Flags : unsigned {
        kMark = 1,   ///< the event gets the engine's marker
        kPlace = 2,  ///< "(file:line) " stands before the text
    };

    TraceBridge() = default;
    TraceBridge(const TraceBridge&) = delete;
    TraceBridge& operator=(const TraceBridge&) = delete;

    /// Opens the engine in a directory with these options, and takes over assertions and trace points. False
    /// only when the mapping of the levels is broken. When it throws, the engine is closed again.
    bool Initialize(const TraceOptions& options, const SAnsiString& directory);
    /// Puts changed options into effect: all but the directory and the component's name.
    void Reconfigure(const TraceOptions& options);
    /// Gives back assertions and trace points, writes what is waiting and closes the files.
    void Terminate() noexcept;

    /// Whether a trace point is switched on. A number that is no level is reported and false.
    bool ShouldTrace(int level, const char* file, int line) const;
    /// Writes a text of a level when that is switched on; false for a number that is no level.
    bool Trace(int level, const char* text, const char* file, int line, unsigned flags) const;

    bool ShouldAssert() const { return !noAssert_; }
    bool NeverWrites() const { return never_; }
    bool CanStackDump() const { return stackDump_; }
    bool IsNativeAssert() const { return nativeAssert_; }

  private:
    bool isFlagged(int level, const TraceLog400::EvalConfig& eval) const;
    void openLevels(const TraceLog400::EvalConfig& eval) const;
    void takeSwitches(const TraceOptions& options);
    void clearSwitches();
    void closeEngine() noexcept;

    // Asked at trace points and assertions, from any thread.
    std::atomic<bool> requestChannel_{false};
    std::atomic<bool> sdkChannel_{false};
    std::atomic<bool> never_{false};
    std::atomic<bool> noAssert_{false};
    std::atomic<bool> stackDump_{false};
    std::atomic<bool> nativeAssert_{false};

    const SDiagnosticSink* sinkBefore_ = nullptr;
    SAnsiString directory_;  ///< in effect: it goes in again with every change
};

}  // namespace TarnLibA500
