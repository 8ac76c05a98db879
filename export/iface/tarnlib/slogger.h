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
///         TARN_TRACE(6, "serving %1", args.GetCmdLine());
///         ...
///     }
///
/// Texts are in the process's code page, the log is UTF-8.
namespace TarnLibA500 {

/// How grave a structured entry is, and which part of a system it concerns. The numbers are handed to the
/// plug-in loggers as they are; processes add categories of their own from logcategory_first_own on.
enum loglevel : int {
    loglevel_error = 0,
    loglevel_warning = 1,
    loglevel_information = 2,
    loglevel_debug = 3
};
enum logcategory : int {
    logcategory_general = 0,
    logcategory_security = 1,
    logcategory_network = 2,
    logcategory_storage = 3,
    logcategory_first_own = 16
};

namespace SLogger {

using ::TarnLibA500::logcategory;
using ::TarnLibA500::loglevel;

/// Starts logging with the options of the environment alone, or with those of a command line too. Wrong
/// options are reported in the log and ignored. True; also when logging was started before, in which case the
/// options are not read again and one more Terminate is needed.
TARN_API bool Initialize();
TARN_API bool Initialize(const CParamLineArgs& args);
/// Undoes one Initialize; with the last one everything is written, and the thread, the plug-ins and the files
/// are given back. One too many is reported by assertion.
TARN_API void Terminate();

/// A structured entry: a level, a category, the number of a message and its arguments. It is traced at level
/// 0 when the unit "slogger" is switched on there, and handed to the plug-in loggers.
TARN_API void Log(loglevel level, logcategory category, unsigned long message,
                  const SIArray<SAnsiString>& arguments);

/// Bracket a call that is received from another process: its name, the caller's context text, and the text
/// for the reply. Between them the thread works in the caller's context, which has an action ID in any case.
TARN_API void BeforeIncomingCall(const SAnsiString& call, const SAnsiString& context);
TARN_API void AfterIncomingCall(SAnsiString& context);
/// Bracket a call to another process: its name, the context text to send, and the reply's context text.
TARN_API void BeforeOutgoingCall(const SAnsiString& call, SAnsiString& context);
TARN_API void AfterOutgoingCall(const SAnsiString& context);
/// The same when there was no reply.
TARN_API void AfterOutgoingCallNoResponse();

/// The context variable "ActionID" of the thread's request; empty when there is none.
TARN_API SAnsiString GetActionID();
/// Variables of the thread's request; empty when missing. An empty value removes.
TARN_API SAnsiString GetContextVar(const SAnsiString& name);
TARN_API void SetContextVar(const SAnsiString& name, const SAnsiString& value);
/// True when the thread works on a request.
TARN_API bool HasLogContext();
/// True when the request came with the context of another process.
TARN_API bool HasPassport();

/// The logging options in effect as one command line, "loggingPath" always among them. Empty before
/// Initialize.
TARN_API SAnsiString GetCmdLine();
/// The path of the log file; it is made by the first line. Empty before Initialize.
TARN_API SAnsiString GetLogFile();
/// Seconds since the tracing engine was loaded.
TARN_API unsigned long long GetMajorTick();

/// The switches "stackdump" and "nativeassert". False before Initialize.
TARN_API bool CanStackDump();
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
    explicit SInstrumentationInitialize(const CParamLineArgs& args);
    ~SInstrumentationInitialize();
    SInstrumentationInitialize(const SInstrumentationInitialize&) = delete;
    SInstrumentationInitialize& operator=(const SInstrumentationInitialize&) = delete;
};

}  // namespace TarnLibA500
