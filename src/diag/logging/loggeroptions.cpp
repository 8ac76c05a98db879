#include "diag/logging/loggeroptions.h"

#include "tarnlib/senvironment.h"

namespace TarnLibA500 {
namespace {

constexpr const char* kMask = "****";

bool NamesSecret(const SAnsiString& name) {
    const SAnsiStringCI anyCase(name);
    for (const char* word : {"pass", "pwd", "secret", "token", "key"}) {
        if (!anyCase.find(word).isAtEnd()) return true;
    }
    return false;
}

}  // namespace

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

CParamLineArgs WithoutSecrets(const CParamLineArgs& options) {
    CParamLineArgs masked;
    masked.SetProgramName(options.GetProgramName());
    for (std::uint32_t i = 0; i < options.GetCount(); ++i) {
        const bool isSecret = NamesSecret(options.GetName(i)) && !options.GetValue(i).isEmpty();
        masked.SetArg(options.GetName(i), isSecret ? SAnsiString(kMask) : options.GetValue(i));
    }
    return masked;
}

}  // namespace TarnLibA500
