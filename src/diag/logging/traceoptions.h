#pragma once

#include "diag/logging/paramlinetracker.h"
#include "tarnlib/siarray.h"
#include "tracelog/tracelog.h"

/// The logging options as values, and what is to be said about them.
namespace TarnLibA500 {

/// Something that reading the options brought up, to be written once the log is open.
struct OptionNotice {
    enum Kind {
        Information,  ///< what is in effect
        Deprecated,   ///< an option that has a successor
        Abandoned,    ///< an option that is no more
        Loss          ///< a value that is not taken, or what does not work as asked
    };
    Kind kind = Information;
    SAnsiString text;
    bool operator==(const OptionNotice& other) const { return kind == other.kind && text == other.text; }
};

struct TraceOptions {
    TraceLog400::EvalConfig eval;        ///< mask and file filter
    unsigned long long maxFileSize = 0;  ///< bytes, 0: no limit
    unsigned maxFiles = 0;               ///< files of the component that stay, 0: no limit
    unsigned maxDays = 0;                ///< since a file was last written, 0: no limit
    bool keep = true;
    bool never = false;
    bool alwaysClose = false;
    bool requestChannel = false;
    bool sdkChannel = false;
    bool noAssert = false;
    bool stackDump = false;
    bool nativeAssert = false;
    bool verbose = false;
    bool noThread = false;
    bool noIni = false;
    SAnsiString directory;  ///< empty: the default one
    SAnsiString component;
    SAnsiString iniPath;  ///< empty: trace.ini in the log directory
    SAnsiString pluginDirectory;
    SIArray<OptionNotice> notices;
};

/// Reads the options. Each that is used counts as consumed; one with a wrong value is ignored with a notice.
TraceOptions ReadTraceOptions(CParamLineTracker& given);

}  // namespace TarnLibA500
