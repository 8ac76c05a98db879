#include "tarnlib/registry.h"

#include <utility>

#include "config/registryvalue.h"
#include "diag/require.h"
#include "system/systemtext.h"
#include "tarnlib/sstringconv.h"

namespace TarnLibA500 {
namespace {

constexpr const char* kUnit = "registry";
constexpr REGSAM kWriteAccess = KEY_SET_VALUE | KEY_QUERY_VALUE;

void Report(const char* expression, const SAnsiString& message, int line = __builtin_LINE()) {
    SAssert(kUnit, line, expression, message.getString());
}

void ReportFailure(const char* call, const SAnsiString& name, LONG error) {
    Report("false", SAnsiString(call) + "(" + name + ") failed. Error code: " + SStringConv::ToString(error));
}

}  // namespace

Registry::Registry(const SAnsiStringCI& subKey, const SAnsiStringCI& name, HKEY const& root, bool create)
    : subKey_(subKey), root_(root), name_(name), create_(create) {}

Registry::Registry(const Registry& other)
    : subKey_(other.subKey_),
      root_(other.root_),
      name_(other.name_),
      machine_(other.machine_),
      remoteRoot_(other.ownsRemoteRoot_ ? nullptr : other.remoteRoot_),
      isRemote_(other.isRemote_),
      create_(other.create_) {}

Registry& Registry::operator=(const Registry& other) {
    if (&other == this) return *this;
    disconnect();
    subKey_ = other.subKey_;
    root_ = other.root_;
    name_ = other.name_;
    machine_ = other.machine_;
    remoteRoot_ = other.ownsRemoteRoot_ ? nullptr : other.remoteRoot_;
    isRemote_ = other.isRemote_;
    create_ = other.create_;
    return *this;
}

Registry::~Registry() {
    disconnect();
}

void Registry::close() noexcept {
    if (key_ != nullptr) osregistry::Close(key_);
    key_ = nullptr;
}

void Registry::disconnect() noexcept {
    close();
    if (ownsRemoteRoot_) osregistry::Close(remoteRoot_);
    remoteRoot_ = nullptr;
    ownsRemoteRoot_ = false;
}

void Registry::SetRemoteMachine(SAnsiString machine) {
    disconnect();
    machine_ = std::move(machine);
    isRemote_ = !machine_.isEmpty();
}

void Registry::SetRemoteKeyHandle(HKEY root) {
    disconnect();
    remoteRoot_ = root;
    isRemote_ = root != nullptr;
}

// --- opening ---

bool Registry::isPathUsable() const {
    if (subKey_.isEmpty() || subKey_.getAt(subKey_.getNChars() - 1) != '\\') return true;
    Report("m_subKey.getAt (m_subKey.getNChars() - 1) != _T('\\\\')",
           "Win95 doesn't like opening \\ ending reg keys");
    return false;
}

// Null when another machine cannot be reached.
HKEY Registry::rootInUse() {
    if (!isRemote_) return root_;
    if (remoteRoot_ != nullptr) return remoteRoot_;
    const bool isPrefixed = machine_.getString()[0] == '\\';
    const SWCharString machine = ToSystem(isPrefixed ? machine_ : SAnsiString("\\\\") + machine_);
    ownsRemoteRoot_ = osregistry::Connect(machine.getString(), root_, remoteRoot_) == ERROR_SUCCESS;
    return ownsRemoteRoot_ ? remoteRoot_ : nullptr;
}

long Registry::open() {
    if (key_ != nullptr) return ERROR_SUCCESS;
    const HKEY root = isPathUsable() ? rootInUse() : nullptr;
    if (root == nullptr) return ERROR_FILE_NOT_FOUND;
    const SWCharString path = ToSystem(subKey_);
    LONG error = osregistry::Open(root, path.getString(), KEY_READ, key_);
    if (error == ERROR_FILE_NOT_FOUND && create_)
        error = osregistry::Create(root, path.getString(), KEY_READ, key_);
    if (error != ERROR_SUCCESS) key_ = nullptr;
    return error;
}

bool Registry::openForRead() {
    const LONG error = open();
    if (error == ERROR_ACCESS_DENIED) ReportFailure("RegOpenKeyEx", subKey_, error);
    return error == ERROR_SUCCESS;
}

// A handle of its own, for the caller to close; null, and reported, when it cannot be had.
HKEY Registry::openForWrite() {
    const HKEY root = isPathUsable() ? rootInUse() : nullptr;
    if (root == nullptr) return nullptr;
    HKEY key = nullptr;
    const LONG error = osregistry::Create(root, ToSystem(subKey_).getString(), kWriteAccess, key);
    if (error == ERROR_SUCCESS) return key;
    ReportFailure("RegOpenKeyEx", subKey_, error);
    return nullptr;
}

bool Registry::KeyExists() {
    const LONG error = open();
    if (error == ERROR_ACCESS_DENIED) Report("false", "KeyExists failed. Access Denied");
    return error == ERROR_SUCCESS;
}

// --- values ---

SAnsiString Registry::ReadValue(const SAnsiStringCI& name, HKEY& key, unsigned long& type) {
    registryvalue::Raw value;
    type = REG_NONE;
    if (registryvalue::Read(key, ToSystem(name).getString(), value) != ERROR_SUCCESS) return SAnsiString();
    type = value.type;
    return registryvalue::TextOf(value);
}

SAnsiString Registry::ReadValue(const SAnsiStringCI& name) {
    unsigned long type = REG_NONE;
    return openForRead() ? ReadValue(name, key_, type) : SAnsiString();
}

SAnsiString Registry::ReadValue(const SAnsiStringCI& name, const SAnsiString& defaultValue) {
    unsigned long type = REG_NONE;
    if (GetType(name, type)) return ReadValue(name);
    WriteValue(name, defaultValue);
    const SAnsiString retval = ReadValue(name);
    if (retval != defaultValue)
        Report("defaultValue == retval",
               "Registry::ReadValue: Value written to registry not the same as the default value");
    return retval;
}

SAnsiString Registry::ReadValue(const SAnsiStringCI& name, unsigned long defaultValue) {
    unsigned long type = REG_NONE;
    if (GetType(name, type)) return ReadValue(name);
    WriteValue(name, defaultValue);
    const SAnsiString retval = ReadValue(name);
    if (retval != SStringConv::ToString(defaultValue))
        Report("retval == SStringConv::ToString(defaultValue)",
               "Registry::ReadValue: Value written to registry not the same as the default value");
    return retval;
}

bool Registry::GetType(const SAnsiStringCI& name, unsigned long& type) {
    if (!openForRead()) return false;
    DWORD found = REG_NONE;
    DWORD bytes = 0;
    const LONG error = osregistry::Query(key_, ToSystem(name).getString(), found, nullptr, bytes);
    if (error != ERROR_SUCCESS && error != ERROR_MORE_DATA) return false;
    type = found;
    return true;
}

bool Registry::write(const SAnsiStringCI& name, unsigned long type, const void* data, unsigned long bytes,
                     HKEY key) {
    const LONG error =
        osregistry::Set(key, ToSystem(name).getString(), type, static_cast<const BYTE*>(data), bytes);
    if (error != ERROR_SUCCESS) ReportFailure("RegSetValueEx", name, error);
    return error == ERROR_SUCCESS;
}

bool Registry::WriteValue(const SAnsiStringCI& name, const SAnsiString& value, HKEY& key) {
    const SWCharString wide = ToSystem(value);
    return write(name, REG_SZ, wide.getString(), wide.getTotalBytes() + sizeof(wchar_t), key);
}

bool Registry::WriteValue(const SAnsiStringCI& name, unsigned long value, HKEY& key) {
    return write(name, REG_DWORD, &value, sizeof value, key);
}

bool Registry::WriteValue(const SAnsiStringCI& name, const SAnsiString& value) {
    HKEY key = openForWrite();
    if (key == nullptr) return false;
    const bool isWritten = WriteValue(name, value, key);
    osregistry::Close(key);
    return isWritten;
}

bool Registry::WriteValue(const SAnsiStringCI& name, unsigned long value) {
    HKEY key = openForWrite();
    if (key == nullptr) return false;
    const bool isWritten = WriteValue(name, value, key);
    osregistry::Close(key);
    return isWritten;
}

bool Registry::DeleteValue(const SAnsiStringCI& name) {
    unsigned long type = REG_NONE;
    if (!GetType(name, type)) return false;
    const HKEY key = openForWrite();
    if (key == nullptr) return false;
    const LONG error = osregistry::DeleteValue(key, ToSystem(name).getString());
    osregistry::Close(key);
    return error == ERROR_SUCCESS;
}

Registry::KeyIterator Registry::EnumSubKeys() {
    HKEY key = nullptr;
    if (!openForRead() || osregistry::Open(key_, L"", KEY_READ, key) != ERROR_SUCCESS) return KeyIterator();
    return KeyIterator(key);
}

Registry::ValueIterator Registry::EnumValues() {
    HKEY key = nullptr;
    if (!openForRead() || osregistry::Open(key_, L"", KEY_READ, key) != ERROR_SUCCESS) return ValueIterator();
    return ValueIterator(key);
}

}  // namespace TarnLibA500
