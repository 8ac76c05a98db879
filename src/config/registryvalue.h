#pragma once

#include <string>
#include <vector>

#include "system/osregistry.h"
#include "tarnlib/sstring.h"

/// Values and names of keys that are open.
namespace TarnLibA500::registryvalue {

/// A value as the registry has it.
struct Raw {
    DWORD type = REG_NONE;
    std::vector<BYTE> bytes;
};

/// Reads a value of any length up to 16 MiB; the result is the system's error code.
LONG Read(HKEY key, const wchar_t* name, Raw& value);

/// A string, an expanded string or a number as text; empty for other types and for a number that is not 4
/// bytes.
SAnsiString TextOf(const Raw& value);

/// The name at an index; the result is the system's error code, ERROR_NO_MORE_ITEMS behind the last one.
LONG KeyName(HKEY key, DWORD index, std::wstring& name);
LONG ValueName(HKEY key, DWORD index, std::wstring& name);

}  // namespace TarnLibA500::registryvalue
