#include <utility>

#include "config/registryvalue.h"
#include "system/systemtext.h"
#include "tarnlib/registry.h"

namespace TarnLibA500 {

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
    isOnEntry_ = key_ != nullptr && registryvalue::KeyName(key_, next_++, name) == ERROR_SUCCESS;
    name_ = FromSystem(name.c_str());
    return isOnEntry_;
}

Registry::ValueIterator::ValueIterator(HKEY key) : Iterator(key) {
    NextValue();
}

bool Registry::ValueIterator::NextValue() {
    std::wstring name;
    registryvalue::Raw value;
    isOnEntry_ = key_ != nullptr && registryvalue::ValueName(key_, next_++, name) == ERROR_SUCCESS;
    if (isOnEntry_) registryvalue::Read(key_, name.c_str(), value);
    name_ = FromSystem(name.c_str());
    value_ = registryvalue::TextOf(value);
    return isOnEntry_;
}

}  // namespace TarnLibA500
