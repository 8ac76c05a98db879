#include "tarnlib/registry.h"

#include <utility>

#include "config/registrypath.h"
#include "config/registryvalue.h"
#include "oscodes/oscodes.h"
#include "tarnlib/sassert.h"
#include "tarnlib/sstringconv.h"

namespace TarnLibA500 {
namespace {

using oscodes::IsMissing;

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
    Registry copy(other);
    swap(copy);
    return *this;
}

Registry::~Registry() {
    disconnect();
}

void Registry::swap(Registry& other) noexcept {
    std::swap(subKey_, other.subKey_);
    std::swap(root_, other.root_);
    std::swap(name_, other.name_);
    std::swap(machine_, other.machine_);
    std::swap(remoteRoot_, other.remoteRoot_);
    std::swap(isRemote_, other.isRemote_);
    std::swap(ownsRemoteRoot_, other.ownsRemoteRoot_);
    std::swap(key_, other.key_);
    std::swap(create_, other.create_);
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

// The key, or one of its values, as a trace names it.
SAnsiString Registry::place(const SAnsiStringCI* value) const {
    const SWCharString path = ToSystem(subKey_);
    const SWCharString name = value != nullptr ? ToSystem(*value) : SWCharString();
    SAnsiString key =
        registrypath::Describe(root_, path.getString(), value != nullptr ? name.getString() : nullptr);
    if (machine_.isEmpty()) return key;
    return "\\\\" + machineName() + "\\" + key;
}

void Registry::trace(const char* doing, const SAnsiStringCI* value, long error) const {
    registrypath::TraceFailure(doing, error, [&] { return place(value); });
}

// --- opening ---

bool Registry::isPathUsable() const {
    if (subKey_.isEmpty() || subKey_.getAt(subKey_.getNChars() - 1) != '\\') return true;
    Report("m_subKey.getAt (m_subKey.getNChars() - 1) != _T('\\\\')",
           "Win95 doesn't like opening \\ ending reg keys");
    return false;
}

// Of a machine's name, which comes with and without backslashes.
SAnsiString Registry::machineName() const {
    const char* name = machine_.getString();
    while (*name == '\\') ++name;
    return name;
}

// Connects to another machine if that is not done yet.
long Registry::rootInUse(HKEY& root) {
    if (isRemote_ && remoteRoot_ == nullptr) {
        const SWCharString machine = ToSystem("\\\\" + machineName());
        const LONG error = osregistry::Connect(machine.getString(), root_, remoteRoot_);
        if (error != ERROR_SUCCESS) return error;
        ownsRemoteRoot_ = true;
    }
    root = isRemote_ ? remoteRoot_ : root_;
    return ERROR_SUCCESS;
}

long Registry::open(bool mayCreate) {
    if (key_ != nullptr) return ERROR_SUCCESS;
    if (!isPathUsable()) return ERROR_BAD_PATHNAME;
    const SWCharString path = ToSystem(subKey_);
    HKEY root = nullptr;
    LONG error = rootInUse(root);
    if (error == ERROR_SUCCESS) error = osregistry::Open(root, path.getString(), KEY_READ, key_);
    if (error == ERROR_FILE_NOT_FOUND && mayCreate && create_)
        error = osregistry::Create(root, path.getString(), KEY_READ, key_);
    if (error != ERROR_SUCCESS && !IsMissing(error)) trace("open", nullptr, error);
    return error;
}

long Registry::openReported(bool mayCreate) {
    const LONG error = open(mayCreate);
    if (error == ERROR_ACCESS_DENIED) ReportFailure("RegOpenKeyEx", subKey_, error);
    return error;
}

// A handle of its own.
long Registry::openForWrite(bool mayCreate, HKEY& key) {
    const SWCharString path = ToSystem(subKey_);
    HKEY root = nullptr;
    const LONG error = rootInUse(root);
    if (error != ERROR_SUCCESS) return error;
    return mayCreate ? osregistry::Create(root, path.getString(), kWriteAccess, key)
                     : osregistry::Open(root, path.getString(), kWriteAccess, key);
}

bool Registry::KeyExists() {
    const LONG error = open(false);
    if (error == ERROR_ACCESS_DENIED) Report("false", "KeyExists failed. Access Denied");
    return error == ERROR_SUCCESS;
}

// --- values ---

SAnsiString Registry::ReadValue(const SAnsiStringCI& name, HKEY& key, unsigned long& type) {
    registryvalue::Raw value;
    type = REG_NONE;
    const SWCharString wideName = ToSystem(name);
    const LONG error = registryvalue::Read(key, wideName.getString(), value);
    if (error != ERROR_SUCCESS) {
        if (!IsMissing(error))
            registrypath::TraceFailure(
                "read", error, [&] { return registrypath::Describe(key, L"", wideName.getString()); });
        return SAnsiString();
    }
    type = value.type;
    return registryvalue::TextOf(value);
}

// Asks the open key. One that was deleted and made again meanwhile is opened anew.
template <class Query>
long Registry::query(bool mayCreate, const SAnsiStringCI* value, Query call) {
    LONG error = openReported(mayCreate);
    if (error != ERROR_SUCCESS) return error;
    error = call();
    if (error == ERROR_KEY_DELETED) {
        close();
        error = openReported(mayCreate);
        if (error != ERROR_SUCCESS) return error;
        error = call();
    }
    if (error != ERROR_SUCCESS && !IsMissing(error)) trace("read", value, error);
    return error;
}

SAnsiString Registry::ReadValue(const SAnsiStringCI& name) {
    registryvalue::Raw value;
    const SWCharString wideName = ToSystem(name);
    const LONG error =
        query(true, &name, [&] { return registryvalue::Read(key_, wideName.getString(), value); });
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
    if (look(true, name, type) != ERROR_FILE_NOT_FOUND) return ReadValue(name);
    WriteValue(name, defaultValue);
    return readBack(name, defaultValue, "defaultValue == retval");
}

SAnsiString Registry::ReadValue(const SAnsiStringCI& name, unsigned long defaultValue) {
    unsigned long type = REG_NONE;
    if (look(true, name, type) != ERROR_FILE_NOT_FOUND) return ReadValue(name);
    WriteValue(name, defaultValue);
    return readBack(name, SStringConv::ToString(defaultValue),
                    "retval == SStringConv::ToString(defaultValue)");
}

long Registry::look(bool mayCreate, const SAnsiStringCI& name, unsigned long& type) {
    DWORD found = REG_NONE;
    const SWCharString wideName = ToSystem(name);
    const LONG error = query(mayCreate, &name, [&] {
        DWORD bytes = 0;
        const LONG told = osregistry::Query(key_, wideName.getString(), found, nullptr, bytes);
        return told == ERROR_MORE_DATA ? ERROR_SUCCESS : told;
    });
    if (error == ERROR_SUCCESS) type = found;
    return error;
}

bool Registry::GetType(const SAnsiStringCI& name, unsigned long& type) {
    return look(false, name, type) == ERROR_SUCCESS;
}

bool Registry::isWritten(const SAnsiStringCI& name, long error) const {
    if (error == ERROR_SUCCESS) return true;
    trace("write", &name, error);
    ReportFailure("RegSetValueEx", name, error);
    return false;
}

bool Registry::write(const SAnsiStringCI& name, unsigned long type, const void* data, unsigned long bytes,
                     HKEY key) {
    const SWCharString wideName = ToSystem(name);
    return isWritten(name,
                     osregistry::Set(key, wideName.getString(), type, static_cast<const BYTE*>(data), bytes));
}

bool Registry::WriteValue(const SAnsiStringCI& name, const SAnsiString& value, HKEY& key) {
    const SWCharString wide = ToSystem(value);
    return write(name, REG_SZ, wide.getString(), wide.getTotalBytes() + sizeof(wchar_t), key);
}

bool Registry::WriteValue(const SAnsiStringCI& name, unsigned long value, HKEY& key) {
    return write(name, REG_DWORD, &value, sizeof value, key);
}

bool Registry::WriteValue(const SAnsiStringCI& name, const SAnsiString& value) {
    return writeOpening(name, value);
}

bool Registry::WriteValue(const SAnsiStringCI& name, unsigned long value) {
    return writeOpening(name, value);
}

template <class Value>
bool Registry::writeOpening(const SAnsiStringCI& name, const Value& value) {
    if (!isPathUsable()) return false;
    osregistry::Key key;
    const LONG error = openForWrite(true, key.room());
    HKEY raw = key.get();
    return isWritten(name, error) && WriteValue(name, value, raw);
}

bool Registry::DeleteValue(const SAnsiStringCI& name) {
    unsigned long type = REG_NONE;
    if (!GetType(name, type)) return false;
    const SWCharString wideName = ToSystem(name);
    osregistry::Key key;
    LONG error = openForWrite(false, key.room());
    if (error != ERROR_SUCCESS)
        ReportFailure("RegOpenKeyEx", subKey_, error);
    else
        error = osregistry::DeleteValue(key.get(), wideName.getString());
    if (error != ERROR_SUCCESS) trace("delete", &name, error);
    return error == ERROR_SUCCESS;
}

// A handle of its own for an iterator; none when the key cannot be read.
HKEY Registry::openForIterator() {
    osregistry::Key key;
    query(false, nullptr, [&] { return osregistry::Open(key_, L"", KEY_READ, key.room()); });
    return key.release();
}

Registry::KeyIterator Registry::EnumSubKeys() {
    return KeyIterator(openForIterator());
}

Registry::ValueIterator Registry::EnumValues() {
    return ValueIterator(openForIterator());
}

}  // namespace TarnLibA500
