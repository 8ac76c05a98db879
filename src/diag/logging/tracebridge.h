#pragma once

#include "diag/logging/traceoptions.h"

/// Between the front end and the tracing engine: what the levels, options and assertions of the one are in
/// the other.
namespace TarnLibA500 {

class TraceBridge {
  public:
    /// What Trace is to do besides writing the text.
    enum Flags : unsigned {
        kMark = 1,   ///< the event gets the engine's marker
        kPlace = 2,  ///< "(file:line) " stands before the text
    };

    /// Opens the engine in a directory with these options, and takes over assertions and trace points. False
    /// only when the mapping of the levels is broken. When it throws, the engine is closed again.
    static bool Initialize(const TraceOptions& options, const SAnsiString& directory);
    /// Puts changed options into effect: all but the directory and the component's name.
    static void Reconfigure(const TraceOptions& options);
    /// Gives back assertions and trace points, writes what is waiting and closes the files.
    static void Terminate() noexcept;

    /// Whether a trace point is switched on. A number that is no level is reported and false.
    static bool ShouldTrace(int level, const char* file, int line);
    /// Writes a text of a level when that is switched on; false for a number that is no level.
    static bool Trace(int level, const char* text, const char* file, int line, unsigned flags);

    /// Reports a text while the engine is not open: to a debugger and on standard error.
    static void UnloadedAssert(const char* text);

    static bool CanStackDump();
    static bool IsNativeAssert();
};

}  // namespace TarnLibA500
