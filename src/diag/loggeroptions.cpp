#include "diag/loggeroptions.h"

#include "tarnlib/senvironment.h"

namespace TarnLibA500 {

CParamLineArgs ParseLoggerOptions(const SAnsiString& text) {
    // The first word of a command line names its program.
    return CParamLineArgs(SAnsiString("some_application ") + text);
}

CParamLineArgs MergedLoggerOptions(const CParamLineArgs& commandLine) {
    SAnsiString text;
    SEnvironment::Get("ZQE_LOGGER_ENVIRONMENT", text);
    CParamLineArgs merged = ParseLoggerOptions(text);
    merged.MergeArgs(commandLine);
    return merged;
}

}  // namespace TarnLibA500
