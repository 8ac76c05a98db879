#include "tarnlib/simmutablebuffer.h"

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <stdexcept>

#include "diag/assert/require.h"
#include "seam/nothrow.h"
#include "strings/base/memory.h"

namespace TarnLibA500 {
namespace {

constexpr const char* kUnit = "simmutablebuffer";

using Array = std::unique_ptr<unsigned char[]>;

Array CopyOf(const unsigned char* bytes, std::uint32_t size) {
    Array copy(new (seam::kNoThrow) unsigned char[size]);
    if (copy == nullptr) throw BadAllocation();
    if (size != 0) std::memcpy(copy.get(), bytes, size);
    return copy;
}

}  // namespace

struct SImmutableBuffer::Control {
    std::atomic<std::int32_t> refCount;
    const unsigned char* base;
    AdoptionType adoption;
};

SImmutableBuffer::SImmutableBuffer(const unsigned char* bytes, std::uint32_t size, AdoptionType adoption)
    : start_(bytes), size_(size), control_(nullptr) {
    if (!Require(bytes != nullptr || size == 0, kUnit, "ptr || sz==0")) size_ = 0;
    Array copy;
    if (adoption == CopyData) {
        copy = CopyOf(bytes, size_);
        start_ = copy.get();
    }
    control_ = new (memory::Allocate(sizeof(Control))) Control{1, start_, adoption};
    copy.release();  // the control block's now
}

SImmutableBuffer::SImmutableBuffer(const SImmutableBuffer& other) noexcept
    : start_(other.start_), size_(other.size_), control_(other.control_) {
    control_->refCount.fetch_add(1, std::memory_order_relaxed);
}

SImmutableBuffer::SImmutableBuffer(const SImmutableBuffer& other, std::uint32_t offset, std::uint32_t length)
    : start_(other.start_), size_(length), control_(other.control_) {
    if (std::uint64_t{offset} + length > other.size_) {
        throw std::logic_error("SImmutableBuffer subset operation out of range");
    }
    start_ += offset;
    control_->refCount.fetch_add(1, std::memory_order_relaxed);
}

SImmutableBuffer& SImmutableBuffer::operator=(const SImmutableBuffer& other) noexcept {
    other.control_->refCount.fetch_add(1, std::memory_order_relaxed);
    Release(control_);
    start_ = other.start_;
    size_ = other.size_;
    control_ = other.control_;
    return *this;
}

SImmutableBuffer::~SImmutableBuffer() {
    Release(control_);
}

void SImmutableBuffer::Release(Control* control) noexcept {
    if (control->refCount.fetch_sub(1, std::memory_order_acq_rel) != 1) return;
    switch (control->adoption) {
        case CopyData:
        case AdoptArray:
            delete[] control->base;
            break;
        case AdoptMalloc:
            std::free(const_cast<unsigned char*>(control->base));
            break;
        default:
            SAssert(kUnit, __LINE__, "adoption type is known", "the bytes are not freed");
    }
    memory::Free(control);
}

unsigned char SImmutableBuffer::at(std::uint32_t index) const {
    if (index >= size_) throw std::logic_error("out-of-bounds SImmutableBuffer access");
    return start_[index];
}

long SImmutableBuffer::refcount() const noexcept {
    return control_->refCount.load(std::memory_order_acquire);
}

bool SImmutableBuffer::operator==(const SImmutableBuffer& other) const noexcept {
    if (size_ != other.size_) return false;
    return size_ == 0 || start_ == other.start_ || std::memcmp(start_, other.start_, size_) == 0;
}

bool SImmutableBuffer::operator<(const SImmutableBuffer& other) const noexcept {
    if (size_ != other.size_) return size_ < other.size_;
    return size_ != 0 && start_ != other.start_ && std::memcmp(start_, other.start_, size_) < 0;
}

}  // namespace TarnLibA500
