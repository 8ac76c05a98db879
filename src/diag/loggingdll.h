#pragma once

#include "diag/loggerimpl.h"
#include "tarnlib/cparamlineargs.h"
#include "tarnlib/siarray.h"
#include "tarnlib/simap.h"

namespace TarnLibA500 {

/// The route to loggers in modules of their own: finds them, loads them and hands every structured entry to
/// them.
class LoggingDLL {
  public:
    /// Loads every log_xn_*.dll of the directory, log_xn_system first. One that cannot be used is traced and
    /// left out. Nothing is loaded from a directory that is not an absolute path.
    void load(const SAnsiString& directory, const SAnsiString& options);
    /// Ends and unloads them.
    void unload();
    bool isEmpty() const { return loggers_.IsEmpty(); }

    void log(int level, int category, unsigned long message, const SAnsiString& text,
             const SIArray<SAnsiString>& arguments) const;

  private:
    void loadOne(const SAnsiString& path, const SAnsiString& name, const SAnsiString& options);

    SIMap<SAnsiString, CRefPtr<SLoggerImpl>> loggers_;  // by module name
};

/// The options of plug-ins as one command line: what the registry keeps for the product, the environment, and
/// the options of the process, the later ones winning.
SAnsiString PluginOptions(const CParamLineArgs& given);

}  // namespace TarnLibA500
