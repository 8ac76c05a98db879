#include <utility>

#include "config/registrypath.h"
#include "config/registryvalue.h"
#include "tarnlib/registry.h"

namespace TarnLibA500 {
namespace {

// The caller cannot see that entries are missing.
void TraceLoss(const char* doing, LONG error, HKEY key, const wchar_t* value = nullptr) {
    registrypath::TraceFailure(
        doing, error, [&] { return registrypath::Describe(key, L"", value); }, levels::kLoss);
}

bool IsOnEntry(LONG error, HKEY key) {
    if (error != ERROR_SUCCESS && error != ERROR_NO_MORE_ITEMS) TraceLoss("go on listing", error, key);
    return error == ERROR_SUCCESS;
}

}  // namespace

Registry::Iterator::~Iterator() {
    if (key_ != nullptr) osregistry::Close(key_);
}

void Registry::Iterator::consume(Iterator& other) noexcept {
    if (&other == this) return;
    name_ = std::move(other.name_);
    value_ = std::move(other.value_);
    next_ = other.next_;
    isOnEntry_ = other.isOnEntry_;
    const HKEY before = std::exchange(key_, other.detach());
    if (before != nullptr) osregistry::Close(before);
}

HKEY Registry::Iterator::detach() noexcept {
    isOnEntry_ = false;
    name_.empty();
    value_.empty();
    return std::exchange(key_, nullptr);
}

Registry::KeyIterator::KeyIterator(HKEY key) : Iterator(key) {
    NextKey();
}

bool Registry::KeyIterator::NextKey() {
    std::wstring name;
    const bool isThere = key_ != nullptr && IsOnEntry(registryvalue::KeyName(key_, next_, name), key_);
    name_ = FromSystem(name.c_str());
    ++next_;
    isOnEntry_ = isThere;
    return isOnEntry_;
}

Registry::ValueIterator::ValueIterator(HKEY key) : Iterator(key) {
    NextValue();
}

bool Registry::ValueIterator::NextValue() {
    std::wstring name;
    registryvalue::Raw value;
    const bool isThere = key_ != nullptr && IsOnEntry(registryvalue::ValueName(key_, next_, name), key_);
    if (isThere) {
        const LONG error = registryvalue::Read(key_, name.c_str(), value);
        if (error != ERROR_SUCCESS) TraceLoss("read", error, key_, name.c_str());
    }
    SAnsiString text = registryvalue::TextOf(value);
    name_ = FromSystem(name.c_str());
    value_ = std::move(text);
    ++next_;
    isOnEntry_ = isThere;
    return isOnEntry_;
}

}  // namespace TarnLibA500
