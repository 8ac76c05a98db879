#pragma once

#include "tarnlib/cparamlineargs.h"
#include "tarnlib/sassert.h"
#include "tarnlib/siarray.h"
#include "tarnlib/sstring.h"
#include "tarnlib/tarnapi.h"

/// The logging front end: starting and stopping, the options, structured entries, and the context of a
/// request.
///
/// A process parses its command line, initialises, works, and terminates. Options come from the command line
/// and from the environment variable ZQE_LOGGER_ENVIRONMENT (the command line wins); docs/logging.md explains
/// them, the levels and the log's lines. All functions may be called from any thread, Initialize and
/// Terminate not from a DLL's entry point or a static destructor: they start and stop a thread.
///
///     int main(int argc, char** argv) {
///         const CParamLineArgs args(argc, argv);
///         const SInstrumentationInitialize logging(args);
///         TARN_TRACE(6, "serving with %1 options", args.GetCount());   // not their values: there may be secrets
///         ...
///     }
///
/// Texts are in the process's code page, or in UTF-8 (SNarrowText), the log is UTF-8: a byte that is no character
/// becomes "?" there.
namespace TarnLibA500 {

/// How grave a structured entry is. The numbers are handed to the plug-in loggers as they are.
enum loglevel : int {
    loglevel_error = 0,        ///< something failed
    loglevel_warning = 1,      ///< something may fail soon, or was worked around
    loglevel_information = 2,  ///< what an operator wants to know of normal work
    loglevel_debug = 3         ///< for whoever looks for a fault
};

/// Which part of a system a structured entry concerns. The numbers are handed to the plug-in loggers as they
/// are.
enum logcategory : int {
    logcategory_general = 0,    ///< none of the others
    logcategory_security = 1,   ///< who may do what, and who tried
    logcategory_network = 2,    ///< connections and protocols
    logcategory_storage = 3,    ///< files and disks
    logcategory_first_own = 16  ///< processes number categories of their own from here
};

/// Starting and stopping the log, its options, structured entries, and the context of a request.
namespace SLogger {

using ::TarnLibA500::logcategory;
using ::TarnLibA500::loglevel;

/// Starts logging with the options of the environment alone. The result and failures are those of the other
/// form.
TARN_API bool Initialize();
/// Starts logging with the options of the environment and a command line. Wrong options are reported in the
/// log and ignored. True; also when logging was started before, in which case the options are not read again
/// and one more Terminate is needed. Without memory std::bad_alloc is thrown, and nothing is started. False,
/// reported by assertion, for a plug-in that calls it while logging starts or stops.
TARN_API bool Initialize(const CParamLineArgs& args);
/// Undoes one Initialize; with the last one everything is written, and the thread, the plug-ins and the files
/// are given back. One too many is reported by assertion. Never throws.
TARN_API void Terminate();

/// A structured entry: a level, a category, the number of a message and its arguments. It is traced at level
/// 0 when the unit "slogger" is switched on there, and handed to the plug-in loggers.
TARN_API void Log(loglevel level, logcategory category, unsigned long message,
                  const SIArray<SAnsiString>& arguments);

/// Begins a call that is received from another process: its name and the caller's context text. Until the end
/// of the call the thread works in the caller's context, which has an action ID in any case.
TARN_API void BeforeIncomingCall(const SAnsiString& call, const SAnsiString& context);
/// Ends it, hands out the context text for the reply, and takes the thread back to what it did before.
/// Outgoing calls that an exception left open are dropped.
TARN_API void AfterIncomingCall(SAnsiString& context);
/// Begins a call to another process: its name, and the context text to send. When it throws (std::bad_alloc)
/// no call has begun.
TARN_API void BeforeOutgoingCall(const SAnsiString& call, SAnsiString& context);
/// Ends it with the reply's context text, whose variables the thread takes, all but the action ID: that is
/// the caller's.
TARN_API void AfterOutgoingCall(const SAnsiString& context);
/// Ends it when there was no reply.
TARN_API void AfterOutgoingCallNoResponse();

/// The context variable "ActionID" of the thread's request; empty when there is none.
TARN_API SAnsiString GetActionID();
/// A variable of the thread's request; empty when it is missing.
TARN_API SAnsiString GetContextVar(const SAnsiString& name);
/// Sets a variable of the thread's request. An empty value removes it.
TARN_API void SetContextVar(const SAnsiString& name, const SAnsiString& value);
/// True when the thread works on a request.
TARN_API bool HasLogContext();
/// True when the request came with the context of another process.
TARN_API bool HasPassport();

/// The logging options in effect as one command line, "loggingPath" always among them: for child processes,
/// with every value as it was given, secrets too. Empty before Initialize.
TARN_API SAnsiString GetCmdLine();
/// The path of the log file; it is made by the first line. Empty before Initialize.
TARN_API SAnsiString GetLogFile();
/// Seconds since the tracing engine was loaded.
TARN_API unsigned long long GetMajorTick();

/// The switch "stackdump". False before Initialize.
TARN_API bool CanStackDump();
/// The switch "nativeassert". False before Initialize.
TARN_API bool IsNativeAssert();

}  // namespace SLogger

/// SLogger::Log with the arguments up to ten that are not null.
TARN_API void SLog(loglevel level, logcategory category, unsigned long message, const char* a0 = nullptr,
                   const char* a1 = nullptr, const char* a2 = nullptr, const char* a3 = nullptr,
                   const char* a4 = nullptr, const char* a5 = nullptr, const char* a6 = nullptr,
                   const char* a7 = nullptr, const char* a8 = nullptr, const char* a9 = nullptr);

/// Starts logging for as long as the object lives.
class TARN_API SInstrumentationInitialize {
  public:
    /// SLogger::Initialize with a command line.
    explicit SInstrumentationInitialize(const CParamLineArgs& args);
    /// SLogger::Terminate.
    ~SInstrumentationInitialize();
    SInstrumentationInitialize(const SInstrumentationInitialize&) = delete;
    SInstrumentationInitialize& operator=(const SInstrumentationInitialize&) = delete;
};

}  // namespace TarnLibA500
