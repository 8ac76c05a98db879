#include "tarnlib/senvironment.h"

#include "strings/stringbuilder.h"
#include "system/systemtext.h"

#include <windows.h>

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

}  // namespace

bool SEnvironment::Get(const SAnsiString& name, SAnsiString& value) {
    const SWCharString wideName = ToSystem(name);
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
    return SetEnvironmentVariableW(ToSystem(name).getString(), ToSystem(value).getString()) != 0;
}

bool SEnvironment::Remove(const SAnsiString& name) {
    return SetEnvironmentVariableW(ToSystem(name).getString(), nullptr) != 0 ||
           GetLastError() == ERROR_ENVVAR_NOT_FOUND;
}

SAnsiString SEnvironment::Expand(const SAnsiString& text) {
    const SWCharString wide = ToSystem(text);
    return WithRoom([&](wchar_t* out, DWORD room) -> DWORD {
        const DWORD needed = ExpandEnvironmentStringsW(wide.getString(), out, room);  // terminator included
        return needed <= room && needed != 0 ? needed - 1 : needed;
    });
}

}  // namespace TarnLibA500
