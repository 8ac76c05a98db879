#include <utility>

#include "config/registryvalue.h"
#include "system/systemtext.h"
#include "tarnlib/registry.h"

namespace TarnLibA500 {

Registry::KeyIterator::KeyIterator(HKEY key) : key_(key), index_(0xFFFFFFFF) {
    NextKey();
}

Registry::KeyIterator::~KeyIterator() {
    if (key_ != nullptr) osregistry::Close(key_);
}

Registry::KeyIterator& Registry::KeyIterator::operator=(KeyIterator&& other) noexcept {
    if (&other != this) consume(other);
    return *this;
}

bool Registry::KeyIterator::NextKey() {
    std::wstring name;
    isOnEntry_ = key_ != nullptr && registryvalue::KeyName(key_, ++index_, name);
    name_ = FromSystem(name.c_str());
    return isOnEntry_;
}

void Registry::KeyIterator::consume(KeyIterator& other) noexcept {
    std::swap(name_, other.name_);
    const unsigned long index = other.index_;
    const bool isOnEntry = other.isOnEntry_;
    const HKEY before = std::exchange(key_, other.detach());
    if (before != nullptr) osregistry::Close(before);
    index_ = index;
    isOnEntry_ = isOnEntry;
}

HKEY Registry::KeyIterator::detach() noexcept {
    isOnEntry_ = false;
    name_.empty();
    return std::exchange(key_, nullptr);
}

Registry::ValueIterator::ValueIterator(HKEY key) : key_(key), index_(0xFFFFFFFF) {
    NextValue();
}

Registry::ValueIterator::~ValueIterator() {
    if (key_ != nullptr) osregistry::Close(key_);
}

Registry::ValueIterator& Registry::ValueIterator::operator=(ValueIterator&& other) noexcept {
    if (&other != this) consume(other);
    return *this;
}

bool Registry::ValueIterator::NextValue() {
    std::wstring name;
    registryvalue::Raw value;
    isOnEntry_ = key_ != nullptr && registryvalue::ValueName(key_, ++index_, name);
    if (isOnEntry_) registryvalue::Read(key_, name.c_str(), value);
    name_ = FromSystem(name.c_str());
    value_ = registryvalue::TextOf(value);
    return isOnEntry_;
}

void Registry::ValueIterator::consume(ValueIterator& other) noexcept {
    std::swap(name_, other.name_);
    std::swap(value_, other.value_);
    const unsigned long index = other.index_;
    const bool isOnEntry = other.isOnEntry_;
    const HKEY before = std::exchange(key_, other.detach());
    if (before != nullptr) osregistry::Close(before);
    index_ = index;
    isOnEntry_ = isOnEntry;
}

HKEY Registry::ValueIterator::detach() noexcept {
    isOnEntry_ = false;
    name_.empty();
    value_.empty();
    return std::exchange(key_, nullptr);
}

}  // namespace TarnLibA500
