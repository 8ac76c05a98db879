#pragma once

#include <string>
#include <string_view>

#include "diag/assert/levels.h"
#include "system/systemtext.h"
#include "tarnlib/sstring.h"
#include "tarnlib/straceobj.h"

#include <windows.h>

/// Names of registry keys: as the system has them, and as people read them.
namespace TarnLibA500::registrypath {

/// The system's own name of a root or an open key, which is the same whatever way leads to the key:
/// "\REGISTRY\USER\S-1-5-21-...\Software". Empty, and no failure, for one that the system does not name, of
/// another machine for instance. Returns the system's error.
LONG SystemName(HKEY key, std::wstring& name);

/// True when a path is another one or goes on below it. Case is ignored as the system ignores it.
bool IsSameOrBelow(std::wstring_view path, std::wstring_view top);

/// Where something failed, for a trace: "HKEY_CURRENT_USER\Software\x", with a value ", value \"v\"" behind.
/// The key is a root or an open key.
SAnsiString Describe(HKEY key, const wchar_t* below, const wchar_t* value = nullptr);

/// Traces that something cannot be done, and where and why. "where" makes the text, when somebody reads it.
template <class Where>
void TraceFailure(const char* doing, LONG error, Where where, int level = levels::kFailure) {
    TARN_TRACE_AT(level, "registry", "cannot %1 %2: %3 (%4)", doing, where(),
                  SystemErrorText(static_cast<unsigned long>(error)), error);
}

}  // namespace TarnLibA500::registrypath
