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

long Registry::openReported() {
    const LONG error = open();
    if (error == ERROR_ACCESS_DENIED) ReportFailure("RegOpenKeyEx", subKey_, error);
    return error;
}

bool Registry::openForRead() {
    return openReported() == ERROR_SUCCESS;
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

// Asks the open key. One that was deleted and made again meanwhile is opened anew.
template <class Query>
long Registry::query(Query call) {
    LONG error = openReported();
    if (error == ERROR_SUCCESS) error = call();
    if (error != ERROR_KEY_DELETED) return error;
    close();
    error = open();
    return error == ERROR_SUCCESS ? call() : error;
}

SAnsiString Registry::ReadValue(const SAnsiStringCI& name) {
    registryvalue::Raw value;
    const SWCharString wideName = ToSystem(name);
    const LONG error = query([&] { return registryvalue::Read(key_, wideName.getString(), value); });
    return error == ERROR_SUCCESS ? registryvalue::TextOf(value) : SAnsiString();
}

SAnsiString Registry::readBack(const SAnsiStringCI& name, const SAnsiString& expected,
                               const char* expression) {
    const SAnsiString retval = ReadValue(name);
    if (retval != expected)
        Report(expression,
               "Registry::ReadValue: Value written to registry not the same as the default value");
    return retval;
}

SAnsiString Registry::ReadValue(const SAnsiStringCI& name, const SAnsiString& defaultValue) {
    unsigned long type = REG_NONE;
    if (look(name, type) != ERROR_FILE_NOT_FOUND) return ReadValue(name);
    WriteValue(name, defaultValue);
    return readBack(name, defaultValue, "defaultValue == retval");
}

SAnsiString Registry::ReadValue(const SAnsiStringCI& name, unsigned long defaultValue) {
    unsigned long type = REG_NONE;
    if (look(name, type) != ERROR_FILE_NOT_FOUND) return ReadValue(name);
    WriteValue(name, defaultValue);
    return readBack(name, SStringConv::ToString(defaultValue),
                    "retval == SStringConv::ToString(defaultValue)");
}

long Registry::look(const SAnsiStringCI& name, unsigned long& type) {
    DWORD found = REG_NONE;
    const SWCharString wideName = ToSystem(name);
    const LONG error = query([&] {
        DWORD bytes = 0;
        return osregistry::Query(key_, wideName.getString(), found, nullptr, bytes);
    });
    const bool isThere = error == ERROR_SUCCESS || error == ERROR_MORE_DATA;
    if (isThere) type = found;
    return isThere ? ERROR_SUCCESS : error;
}

bool Registry::GetType(const SAnsiStringCI& name, unsigned long& type) {
    return look(name, type) == ERROR_SUCCESS;
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
