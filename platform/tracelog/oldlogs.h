#pragma once

#include <string>

#include <windows.h>

/// Full and forgotten logs, which would fill a directory in time.
namespace TraceLog400::detail {

/// 0: no limit.
struct OldLogLimits {
    unsigned files;  ///< how many stay, the current ones of this process included
    unsigned days;   ///< of 24 hours since a file was last written
};

/// The first file that could not be removed; no error when there is none.
struct OldLogFailure {
    std::wstring path;
    DWORD error = ERROR_SUCCESS;
};

/// Removes logs of this component from the directory in effect, the oldest first, until the limits hold. Only
/// files go that have a name of the engine's making (of the given device, or of one that every process may
/// have), whose process has ended or is this one, and which nobody has open; the current files of this
/// process stay. Logs of other living processes are not counted either: each looks after its own.
OldLogFailure RemoveOldLogs(const OldLogLimits& limits, const std::wstring& device);

}  // namespace TraceLog400::detail
