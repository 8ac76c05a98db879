#pragma once

#include "tarnlib/cparamlineargs.h"

/// The sources of logging options.
namespace TarnLibA500 {

/// Options as they stand in the environment or the registry: a command line without its first word.
CParamLineArgs ParseLoggerOptions(const SAnsiString& text);

/// The options of the environment variable, overridden by those of the process's command line.
CParamLineArgs MergedLoggerOptions(const CParamLineArgs& commandLine);

/// The options for others' eyes: "****" stands in place of the value of every option whose name contains
/// "pass", "pwd", "secret", "token" or "key", in any case.
CParamLineArgs WithoutSecrets(const CParamLineArgs& options);

}  // namespace TarnLibA500
