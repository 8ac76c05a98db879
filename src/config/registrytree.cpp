// Keys with all that is below them: deleted and copied.
#include <string>
#include <vector>

#include "config/registrypath.h"
#include "config/registryvalue.h"
#include "oscodes/oscodes.h"
#include "tarnlib/registry.h"
#include "tarnlib/sassert.h"

namespace TarnLibA500 {
namespace {

using osregistry::Key;
using registrypath::Describe;

constexpr const char* kUnit = "registry";
constexpr int kMaxDepth = 512;  // the system's own limit

// Whether a step was done; when not, what could not be done is traced, with the key or value below an open
// key.
bool IsDone(LONG error, const char* doing, HKEY key, const wchar_t* below = L"",
            const wchar_t* value = nullptr) {
    if (error == ERROR_SUCCESS) return true;
    registrypath::TraceFailure(doing, error, [&] { return Describe(key, below, value); });
    return false;
}

// A link is a key with a value of this name, in which the place stands that it leads to.
LONG LookForLink(HKEY key, bool& isLink) {
    DWORD type = REG_NONE, bytes = 0;
    const LONG error = osregistry::Query(key, L"SymbolicLinkValue", type, nullptr, bytes);
    isLink = error == ERROR_SUCCESS && type == REG_LINK;
    return oscodes::IsMissing(error) ? ERROR_SUCCESS : error;
}

// Opens a key below another, and a link for what it is: what it leads to is somebody else's.
LONG OpenEntry(HKEY key, const wchar_t* below, REGSAM access, int depth, Key& entry, bool& isLink) {
    if (depth == kMaxDepth) return ERROR_TOO_MANY_NAMES;
    const LONG error = osregistry::OpenEntry(key, below, access, entry.room());
    return error == ERROR_SUCCESS ? LookForLink(entry.get(), isLink) : error;
}

bool DeleteBelow(HKEY key, int depth) {
    std::wstring name;
    LONG error = ERROR_SUCCESS;
    while ((error = registryvalue::KeyName(key, 0, name)) == ERROR_SUCCESS) {
        const wchar_t* const below = name.c_str();
        bool isLink = false;
        Key child;
        error = OpenEntry(key, below, KEY_READ | DELETE, depth, child, isLink);
        if (!IsDone(error, "open", key, below)) return false;
        if (isLink) {
            error = osregistry::DeleteOpened(child.get());
        } else {
            if (!DeleteBelow(child.get(), depth + 1)) return false;
            child.close();
            error = osregistry::DeleteKey(key, below);
        }
        if (!IsDone(error, "delete", key, below)) return false;
    }
    return error == ERROR_NO_MORE_ITEMS || IsDone(error, "list the keys of", key);
}

using NameAt = LONG (*)(HKEY, DWORD, std::wstring&);

// All names before anything is written, which could move them. False when the system breaks off.
bool ListNames(HKEY key, NameAt nameAt, std::vector<std::wstring>& names) {
    std::wstring name;
    LONG error = ERROR_SUCCESS;
    while ((error = nameAt(key, static_cast<DWORD>(names.size()), name)) == ERROR_SUCCESS)
        names.push_back(name);
    return error == ERROR_NO_MORE_ITEMS || IsDone(error, "list the names in", key);
}

bool CopyRaw(HKEY from, const wchar_t* name, HKEY to) {
    registryvalue::Raw value;
    if (!IsDone(registryvalue::Read(from, name, value), "read", from, L"", name)) return false;
    const auto bytes = static_cast<DWORD>(value.bytes.size());
    // The system looks at the unit behind a text without terminator, and adds it to the text when it is zero.
    value.bytes.insert(value.bytes.end(), {0xFF, 0xFF});
    return IsDone(osregistry::Set(to, name, value.type, value.bytes.data(), bytes), "write", to, L"", name);
}

// "top" is the system's name of the target, which is not copied in its turn where a link or a merged view
// leads to it.
bool CopyBelow(HKEY from, HKEY to, const std::wstring& top, int depth) {
    std::vector<std::wstring> values, keys;
    if (!ListNames(from, &registryvalue::ValueName, values) ||
        !ListNames(from, &registryvalue::KeyName, keys))
        return false;
    for (const std::wstring& name : values) {
        if (!CopyRaw(from, name.c_str(), to)) return false;
    }
    for (const std::wstring& name : keys) {
        const wchar_t* const below = name.c_str();
        bool isLink = false;
        Key source, target;
        LONG error = OpenEntry(from, below, KEY_READ, depth, source, isLink);
        std::wstring ownName;
        if (error == ERROR_SUCCESS && !top.empty()) error = registrypath::SystemName(source.get(), ownName);
        if (error == ERROR_SUCCESS && !top.empty() && ownName == top) error = ERROR_INVALID_PARAMETER;
        if (!IsDone(error, "copy", from, below)) return false;
        error = isLink ? osregistry::Create(to, below, KEY_WRITE | KEY_CREATE_LINK, target.room(),
                                            REG_OPTION_CREATE_LINK)
                       : osregistry::Create(to, below, KEY_WRITE, target.room());
        if (!IsDone(error, "create", to, below) || !CopyBelow(source.get(), target.get(), top, depth + 1))
            return false;
    }
    return true;
}

// Opens the key, or the next one above it that is there.
LONG OpenNearest(HKEY root, std::wstring path, Key& key) {
    for (;;) {
        const LONG error = osregistry::Open(root, path.c_str(), KEY_QUERY_VALUE, key.room());
        if (path.empty() || !oscodes::IsMissing(error)) return error;
        const std::size_t last = path.find_last_of(L'\\');
        path.resize(last != path.npos ? last : 0);
    }
}

// Refuses a target that lies in an open source, in whatever words the two are named: a user's keys have two
// names, classes even three.
LONG RefuseTarget(HKEY source, HKEY targetRoot, const wchar_t* target) {
    Key nearest;
    LONG error = OpenNearest(targetRoot, target, nearest);
    std::wstring from, to;
    if (error == ERROR_SUCCESS) error = registrypath::SystemName(source, from);
    if (error == ERROR_SUCCESS) error = registrypath::SystemName(nearest.get(), to);
    if (error != ERROR_SUCCESS) return error;
    return !from.empty() && registrypath::IsSameOrBelow(to, from) ? ERROR_INVALID_PARAMETER : ERROR_SUCCESS;
}

}  // namespace

bool Registry::DeleteKey() {
    close();  // the key may have been deleted and made again since it was opened
    std::wstring name;
    if (subKey_.isEmpty()) return isDeleted(ERROR_INVALID_PARAMETER);
    if (openReported(false) != ERROR_SUCCESS) return false;
    const LONG error = registryvalue::KeyName(key_, 0, name);
    if (error == ERROR_SUCCESS) {
        SAssert(kUnit, __LINE__, "false",
                (SAnsiString("DeleteKey: There is subkey inside key ") + subKey_).getString());
        return isDeleted(ERROR_DIR_NOT_EMPTY);
    }
    if (error != ERROR_NO_MORE_ITEMS) return isDeleted(error);
    close();
    const SWCharString path = ToSystem(subKey_);
    HKEY root = nullptr;
    const LONG unreachable = rootInUse(root);
    return isDeleted(unreachable != ERROR_SUCCESS ? unreachable
                                                  : osregistry::DeleteKey(root, path.getString()));
}

bool Registry::isDeleted(long error) const {
    if (error != ERROR_SUCCESS) trace("delete", nullptr, error);
    return error == ERROR_SUCCESS;
}

bool Registry::DeleteKeyRecursive(bool self) {
    close();
    if (subKey_.isEmpty()) return isDeleted(ERROR_INVALID_PARAMETER);
    if (openReported(false) != ERROR_SUCCESS || !DeleteBelow(key_, 0)) return false;
    return !self || DeleteKey();
}

bool Registry::CopyKey(HKEY sourceRoot, const SAnsiStringCI& source, HKEY targetRoot,
                       const SAnsiStringCI& target) {
    const SWCharString fromPath = ToSystem(source);
    const SWCharString toPath = ToSystem(target);
    Key from, to;
    if (!IsDone(osregistry::Open(sourceRoot, fromPath.getString(), KEY_READ, from.room()), "open", sourceRoot,
                fromPath.getString()))
        return false;
    const bool isSameText =
        sourceRoot == targetRoot && registrypath::IsSameOrBelow(toPath.getString(), fromPath.getString());
    const LONG refusal =
        isSameText ? ERROR_INVALID_PARAMETER : RefuseTarget(from.get(), targetRoot, toPath.getString());
    std::wstring top;
    return IsDone(refusal, "copy a key that is above to", targetRoot, toPath.getString()) &&
           IsDone(osregistry::Create(targetRoot, toPath.getString(), KEY_WRITE, to.room()), "create",
                  targetRoot, toPath.getString()) &&
           IsDone(registrypath::SystemName(to.get(), top), "ask for the name of", targetRoot,
                  toPath.getString()) &&
           CopyBelow(from.get(), to.get(), top, 0);
}

bool Registry::CopyValue(HKEY sourceRoot, const SAnsiStringCI& source, const SAnsiStringCI& name,
                         HKEY targetRoot, const SAnsiStringCI& target) {
    const SWCharString wideName = ToSystem(name);
    const SWCharString fromPath = ToSystem(source);
    const SWCharString toPath = ToSystem(target);
    Key from, to;
    DWORD type = REG_NONE, bytes = 0;
    return IsDone(osregistry::Open(sourceRoot, fromPath.getString(), KEY_READ, from.room()), "open",
                  sourceRoot, fromPath.getString()) &&
           IsDone(osregistry::Query(from.get(), wideName.getString(), type, nullptr, bytes), "read",
                  sourceRoot, fromPath.getString(), wideName.getString()) &&
           IsDone(osregistry::Create(targetRoot, toPath.getString(), KEY_WRITE, to.room()), "create",
                  targetRoot, toPath.getString()) &&
           CopyRaw(from.get(), wideName.getString(), to.get());
}

}  // namespace TarnLibA500
