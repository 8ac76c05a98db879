// Keys with all that is below them: deleted and copied.
#include <string>
#include <vector>

#include "config/registryvalue.h"
#include "system/systemtext.h"
#include "tarnlib/registry.h"
#include "tarnlib/sassert.h"

namespace TarnLibA500 {
namespace {

constexpr const char* kUnit = "registry";
constexpr int kMaxDepth = 512;  // the system's own limit

/// A key that is open for as long as the object lives.
class OpenKey {
  public:
    OpenKey() = default;
    ~OpenKey() {
        if (key_ != nullptr) osregistry::Close(key_);
    }
    OpenKey(const OpenKey&) = delete;
    OpenKey& operator=(const OpenKey&) = delete;

    bool open(HKEY root, const wchar_t* path) {
        return osregistry::Open(root, path, KEY_READ, key_) == ERROR_SUCCESS;
    }
    bool create(HKEY root, const wchar_t* path) {
        return osregistry::Create(root, path, KEY_WRITE, key_) == ERROR_SUCCESS;
    }
    HKEY get() const { return key_; }

  private:
    HKEY key_ = nullptr;
};

bool DeleteBelow(HKEY key, int depth) {
    std::wstring name;
    LONG error = ERROR_SUCCESS;
    while ((error = registryvalue::KeyName(key, 0, name)) == ERROR_SUCCESS) {
        {
            OpenKey child;
            if (depth == kMaxDepth || !child.open(key, name.c_str()) || !DeleteBelow(child.get(), depth + 1))
                return false;
        }
        if (osregistry::DeleteKey(key, name.c_str()) != ERROR_SUCCESS) return false;
    }
    return error == ERROR_NO_MORE_ITEMS;
}

using NameAt = LONG (*)(HKEY, DWORD, std::wstring&);

// All names before anything is written, which could move them. False when the system breaks off.
bool ListNames(HKEY key, NameAt nameAt, std::vector<std::wstring>& names) {
    std::wstring name;
    LONG error = ERROR_SUCCESS;
    while ((error = nameAt(key, static_cast<DWORD>(names.size()), name)) == ERROR_SUCCESS)
        names.push_back(name);
    return error == ERROR_NO_MORE_ITEMS;
}

bool CopyRaw(HKEY from, const wchar_t* name, HKEY to) {
    registryvalue::Raw value;
    if (registryvalue::Read(from, name, value) != ERROR_SUCCESS) return false;
    const auto bytes = static_cast<DWORD>(value.bytes.size());
    // The system looks at the unit behind a text without terminator, and adds it to the text when it is zero.
    value.bytes.insert(value.bytes.end(), {0xFF, 0xFF});
    return osregistry::Set(to, name, value.type, value.bytes.data(), bytes) == ERROR_SUCCESS;
}

bool CopyBelow(HKEY from, HKEY to, int depth) {
    std::vector<std::wstring> values, keys;
    if (!ListNames(from, &registryvalue::ValueName, values) ||
        !ListNames(from, &registryvalue::KeyName, keys))
        return false;
    for (const std::wstring& name : values) {
        if (!CopyRaw(from, name.c_str(), to)) return false;
    }
    for (const std::wstring& name : keys) {
        OpenKey source, target;
        if (depth == kMaxDepth || !source.open(from, name.c_str()) || !target.create(to, name.c_str()) ||
            !CopyBelow(source.get(), target.get(), depth + 1))
            return false;
    }
    return true;
}

bool IsSameOrBelow(const SAnsiStringCI& path, const SAnsiStringCI& top) {
    const SAnsiStringCI start = SAnsiStringCI(path.left(top.getNChars()));
    const SAnsiString rest = path.mid(top.getNChars());
    return start == top && (rest.isEmpty() || rest.getString()[0] == '\\' || top.isEmpty());
}

}  // namespace

bool Registry::DeleteKey() {
    close();  // the key may have been deleted and made again since it was opened
    std::wstring name;
    if (subKey_.isEmpty() || !openForRead()) return false;
    if (registryvalue::KeyName(key_, 0, name) == ERROR_SUCCESS) {
        SAssert(kUnit, __LINE__, "false",
                (SAnsiString("DeleteKey: There is subkey inside key ") + subKey_).getString());
        return false;
    }
    close();
    return osregistry::DeleteKey(rootInUse(), ToSystem(subKey_).getString()) == ERROR_SUCCESS;
}

bool Registry::DeleteKeyRecursive(bool self) {
    close();
    if (subKey_.isEmpty() || !openForRead() || !DeleteBelow(key_, 0)) return false;
    return !self || DeleteKey();
}

bool Registry::CopyKey(HKEY sourceRoot, const SAnsiStringCI& source, HKEY targetRoot,
                       const SAnsiStringCI& target) {
    if (sourceRoot == targetRoot && IsSameOrBelow(target, source)) return false;
    OpenKey from, to;
    return from.open(sourceRoot, ToSystem(source).getString()) &&
           to.create(targetRoot, ToSystem(target).getString()) && CopyBelow(from.get(), to.get(), 0);
}

bool Registry::CopyValue(HKEY sourceRoot, const SAnsiStringCI& source, const SAnsiStringCI& name,
                         HKEY targetRoot, const SAnsiStringCI& target) {
    const SWCharString wideName = ToSystem(name);
    OpenKey from, to;
    DWORD type = REG_NONE, bytes = 0;
    return from.open(sourceRoot, ToSystem(source).getString()) &&
           osregistry::Query(from.get(), wideName.getString(), type, nullptr, bytes) == ERROR_SUCCESS &&
           to.create(targetRoot, ToSystem(target).getString()) &&
           CopyRaw(from.get(), wideName.getString(), to.get());
}

}  // namespace TarnLibA500
