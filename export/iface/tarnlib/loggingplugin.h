#pragma once

/// What a logging plug-in exports: a DLL named log_xn_*.dll in the directory of the option
/// "loggingPluginDir". All functions are extern "C" with the compiler's usual calling convention.
/// GetDLLVersion, Initialize, Trace and Terminate must be there.
///
/// Texts are in the process's code page, or in UTF-8 where the process has chosen that (SNarrowText). The
/// functions are called by one thread at a time, between Initialize and Terminate. None should throw: a plug-in
/// that does is traced and left out. A plug-in may use the library and log itself; such entries are traced, but
/// not handed to the plug-ins. It must not start or stop logging. While its Trace does not return, entries of
/// other threads wait for up to 10 seconds and are then handed over no more until it does.
///
///     extern "C" __declspec(dllexport) void Trace(int level, int category, unsigned long message,
///                                                 const char* text, const char* const* arguments,
///                                                 unsigned count) {
///         std::fprintf(journal, "%d %lu %s\n", level, message, text);
///     }
namespace TarnLibA500::LoggingPlugin {

/// The version of this interface.
inline constexpr int kInterfaceVersion = 1;

/// "GetDLLVersion": the interface version that the plug-in was built for. Others than kInterfaceVersion are
/// not loaded.
using GetDLLVersionFunction = int (*)();
/// "Initialize": the options in effect as a command line, with "****" in place of the value of each option
/// whose name contains "pass", "pwd", "secret", "token" or "key". 0 when the plug-in cannot work; it is unloaded
/// then.
using InitializeFunction = int (*)(const char* options);
/// "Trace": one structured entry, with its numbers, as one line of text, and as its arguments.
using TraceFunction = void (*)(int level, int category, unsigned long message, const char* text,
                               const char* const* arguments, unsigned count);
/// "Terminate": the last call.
using TerminateFunction = void (*)();
/// "GetParam": a parameter of the plug-in as text, to be given back with FreeString; null for an unknown
/// name. "numcategories" is the number of log categories that it takes: entries with a higher one are not
/// handed over. Without it, all are.
using GetParamFunction = char* (*)(const char* name);
/// "GetParamList" (may be missing): the names of all parameters, separated by commas, for FreeString.
using GetParamListFunction = char* (*)();
/// "FreeString" (missing only when GetParam always returns null): frees a text of the plug-in.
using FreeStringFunction = void (*)(char* text);

}  // namespace TarnLibA500::LoggingPlugin
