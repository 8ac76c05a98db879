#include "tarnlib/senvironment.h"

#include "diag/assert/levels.h"
#include "strings/base/memory.h"
#include "strings/text/stringbuilder.h"
#include "system/systemtext.h"
#include "tarnlib/straceobj.h"

#include <windows.h>

// Parts the command line as it does for main and wmain. Documented, but declared in no public header.
extern "C" __declspec(dllimport) int __cdecl __wgetmainargs(int* count, wchar_t*** words,
                                                            wchar_t*** environment, int expandWildcards,
                                                            int* newMode);

namespace TarnLibA500 {
namespace {

constexpr DWORD kUsualUnits = 512;

// Asks with more and more room: the value may grow between two questions. The call returns the units written,
// or the room it needs, terminator included.
template <class Call>
SAnsiString WithRoom(Call call) {
    for (DWORD room = kUsualUnits;;) {
        StringBuilder<wchar_t, 1> text(room);
        const DWORD length = call(text.units(), room);
        if (length < room) {
            text.cut(length);
            return FromSystem(text.getString());
        }
        room = length + 1;
    }
}

// Without the value, which may be a secret.
bool Refused(const SAnsiString& name, DWORD error) {
    TARN_TRACE_AT(levels::kFailure, "senvironment", "cannot change the environment variable %1: %2", name,
                  SystemErrorText(error));
    return false;
}

// The words stay in the C runtime's memory until the process ends; asking twice would make them anew. The mode is
// the one that every program of this compiler has from its start.
wchar_t** ReadWords() {
    int count = 0;
    int newMode = 0;
    wchar_t** words = nullptr;
    wchar_t** environment = nullptr;
    if (__wgetmainargs(&count, &words, &environment, 0, &newMode) < 0 || words == nullptr)
        throw BadAllocation();
    return words;
}

}  // namespace

SIArray<SAnsiString> SEnvironment::GetArguments() {
    static wchar_t** const words = ReadWords();
    SIArray<SAnsiString> arguments;
    for (wchar_t** word = words; *word != nullptr; ++word) arguments.Add(FromSystem(*word));
    return arguments;
}

bool SEnvironment::Get(const SAnsiString& name, SAnsiString& value) {
    SWCharString wideName;
    if (!ToSystemExactly(name, wideName)) return false;
    bool isSet = true;
    const SAnsiString found = WithRoom([&](wchar_t* out, DWORD room) {
        SetLastError(ERROR_SUCCESS);
        const DWORD length = GetEnvironmentVariableW(wideName.getString(), out, room);
        isSet = length != 0 || GetLastError() == ERROR_SUCCESS;
        return length;
    });
    if (isSet) value = found;
    return isSet;
}

bool SEnvironment::Set(const SAnsiString& name, const SAnsiString& value) {
    SWCharString wideName;
    SWCharString wideValue;
    if (!ToSystemExactly(name, wideName) || !ToSystemExactly(value, wideValue))
        return Refused(name, ERROR_NO_UNICODE_TRANSLATION);
    return SetEnvironmentVariableW(wideName.getString(), wideValue.getString()) != 0 ||
           Refused(name, GetLastError());
}

bool SEnvironment::Remove(const SAnsiString& name) {
    SWCharString wideName;
    if (!ToSystemExactly(name, wideName)) return true;  // no variable has such a name
    if (SetEnvironmentVariableW(wideName.getString(), nullptr)) return true;
    const DWORD error = GetLastError();
    return error == ERROR_ENVVAR_NOT_FOUND || Refused(name, error);
}

SAnsiString SEnvironment::Expand(const SAnsiString& text) {
    const SWCharString wide = ToSystem(text);
    return WithRoom([&](wchar_t* out, DWORD room) -> DWORD {
        const DWORD needed = ExpandEnvironmentStringsW(wide.getString(), out, room);  // terminator included
        return needed <= room && needed != 0 ? needed - 1 : needed;
    });
}

}  // namespace TarnLibA500
