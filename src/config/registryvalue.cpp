#include "config/registryvalue.h"

#include <cstring>

#include "system/systemtext.h"
#include "tarnlib/sassert.h"
#include "tarnlib/sstringconv.h"

namespace TarnLibA500::registryvalue {
namespace {

constexpr const char* kUnit = "registry";
constexpr DWORD kUsualBytes = 512;
constexpr DWORD kMaxBytes = 16 * 1024 * 1024;
constexpr DWORD kMaxKeyName = 256;  // units, terminator included
constexpr DWORD kMaxValueName = 16'384;

// A string may come without a terminator, and with more behind it.
std::wstring Units(const Raw& value) {
    std::wstring text(value.bytes.size() / sizeof(wchar_t), L'\0');
    if (!text.empty()) std::memcpy(text.data(), value.bytes.data(), text.size() * sizeof(wchar_t));
    return text.substr(0, text.find(L'\0'));
}

SAnsiString Expanded(const std::wstring& text) {
    wchar_t expanded[MAX_PATH];
    const DWORD numChars = ExpandEnvironmentStringsW(text.c_str(), expanded, MAX_PATH);
    if (numChars != 0 && numChars <= MAX_PATH) return FromSystem(expanded);
    SAssert(kUnit, __LINE__, "numChars && numChars <= MAX_PATH",
            "Registry::ReadValue: Buffer is not big enough to accomodate expanded string from registry");
    return SAnsiString();
}

using Enumerate = LONG (*)(HKEY, DWORD, wchar_t*, DWORD&);

LONG NameAt(Enumerate enumerate, DWORD room, HKEY key, DWORD index, std::wstring& name) {
    DWORD units = room;
    name.resize(units);
    const LONG error = enumerate(key, index, name.data(), units);
    name.resize(error == ERROR_SUCCESS ? units : 0);
    return error;
}

SAnsiString Number(const Raw& value) {
    DWORD number = 0;
    if (value.bytes.size() != sizeof number) return SAnsiString();
    std::memcpy(&number, value.bytes.data(), sizeof number);
    return SStringConv::ToString(number);
}

}  // namespace

LONG Read(HKEY key, const wchar_t* name, Raw& value) {
    DWORD bytes = kUsualBytes;
    for (;;) {
        value.bytes.resize(bytes);
        const DWORD room = bytes;
        const LONG error = osregistry::Query(key, name, value.type, value.bytes.data(), bytes);
        // The value may have grown since the system told its size.
        if (error == ERROR_MORE_DATA && bytes > room && bytes <= kMaxBytes) continue;
        value.bytes.resize(error == ERROR_SUCCESS ? bytes : 0);
        return error;
    }
}

SAnsiString TextOf(const Raw& value) {
    switch (value.type) {
        case REG_SZ:
            return FromSystem(Units(value).c_str());
        case REG_EXPAND_SZ:
            return Expanded(Units(value));
        case REG_DWORD:
            return Number(value);
        default:
            return SAnsiString();
    }
}

LONG KeyName(HKEY key, DWORD index, std::wstring& name) {
    return NameAt(&osregistry::EnumKey, kMaxKeyName, key, index, name);
}

LONG ValueName(HKEY key, DWORD index, std::wstring& name) {
    return NameAt(&osregistry::EnumValue, kMaxValueName, key, index, name);
}

}  // namespace TarnLibA500::registryvalue
