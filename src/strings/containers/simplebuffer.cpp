#include "tarnlib/simplebuffer.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>

#include <windows.h>

#include "diag/assert/levels.h"
#include "diag/assert/require.h"
#include "strings/base/memory.h"

namespace TarnLibA500 {
namespace {

constexpr const char* kUnit = "simplebuffer";
constexpr const char* kNoBlock = "buffer != NULL";
constexpr const char* kUsedFits = "bytesUsed <= buffer->bytesAllocated";
// The constructor's assertion keeps this line whatever the source looks like: who filters reports knows it.
constexpr int kConstructorLine = 324;
constexpr std::int32_t kNeverCounted = -1;
constexpr std::uint64_t kMaxBytes = 0xFFFFFFFF;

int Sign(int difference) {
    return (difference > 0) - (difference < 0);
}

void CopyBytes(unsigned char* to, const void* from, std::uint32_t count) {
    if (count != 0) std::memmove(to, from, count);
}

bool SameBytes(const unsigned char* a, const unsigned char* b, std::uint32_t count) {
    return count == 0 || a == b || std::memcmp(a, b, count) == 0;
}

}  // namespace

// Declared once more, so that the DLL has it for clients that take its address or a reference.
constexpr std::uint32_t SSimpleBuffer::kUnspecified;

// ------------------------------------------------------------------------------------------------ blocks

SSimpleBuffer::SSimpleInternalBuffer::SSimpleInternalBuffer() noexcept
    : refCount(1),
      bytesUsed(0),
      bytesAllocated(0),
      data(nullptr),
      mapped(0),
      fileHandle(INVALID_HANDLE_VALUE),
      mappingHandle(nullptr) {}

SSimpleBuffer::SSimpleInternalBuffer::~SSimpleInternalBuffer() {
    UnMap();
    dealloc(data);
}

// One byte behind the block, so that its data pointer is as good as any.
struct SSimpleBuffer::_EmptyBuffer {
    _EmptyBuffer() noexcept : byte(0) {
        block.refCount = kNeverCounted;
        block.data = &byte;
    }
    SSimpleInternalBuffer block;
    unsigned char byte;
};

SSimpleBuffer::SSimpleInternalBuffer* SSimpleBuffer::GetEmptyBuffer() noexcept {
    // Never destroyed: buffers of other modules may outlive every destructor here.
    alignas(_EmptyBuffer) static unsigned char storage[sizeof(_EmptyBuffer)];
    static SSimpleInternalBuffer* const empty = &(new (storage) _EmptyBuffer)->block;
    return empty;
}

bool SSimpleBuffer::IsEmptyBuffer(const SSimpleInternalBuffer* buffer) noexcept {
    return buffer == GetEmptyBuffer();
}

unsigned char* SSimpleBuffer::alloc(std::uint32_t nBytes) {
    // A request for nothing still needs an address of its own; malloc may refuse one.
    return static_cast<unsigned char*>(memory::Allocate(std::max(nBytes, 1U)));
}

void SSimpleBuffer::dealloc(void* bytes) noexcept {
    memory::Free(bytes);
}

SSimpleBuffer::SSimpleInternalBuffer* SSimpleBuffer::allocHeader() {
    return new (memory::Allocate(sizeof(SSimpleInternalBuffer))) SSimpleInternalBuffer;
}

SSimpleBuffer::SSimpleInternalBuffer* SSimpleBuffer::allocBuffer(std::uint32_t n) {
    SSimpleInternalBuffer* block = allocHeader();
    try {
        block->data = alloc(n);
    } catch (...) {
        Release(block);
        throw;
    }
    block->bytesAllocated = n;
    return block;
}

SSimpleBuffer::SSimpleInternalBuffer* SSimpleBuffer::CopyOf(const SSimpleInternalBuffer& block,
                                                            std::uint32_t nBytesAllocated) {
    SSimpleInternalBuffer* copy = allocBuffer(nBytesAllocated);
    CopyBytes(copy->data, block.data, block.bytesUsed);
    copy->bytesUsed = block.bytesUsed;
    return copy;
}

SSimpleBuffer::SSimpleInternalBuffer* SSimpleBuffer::Share(SSimpleInternalBuffer* block) noexcept {
    if (block != nullptr && !IsEmptyBuffer(block)) block->refCount.fetch_add(1, std::memory_order_relaxed);
    return block;
}

void SSimpleBuffer::Release(SSimpleInternalBuffer* block) noexcept {
    if (block == nullptr || IsEmptyBuffer(block)) return;
    if (block->refCount.fetch_sub(1, std::memory_order_acq_rel) != 1) return;
    block->~SSimpleInternalBuffer();
    memory::Free(block);
}

// ------------------------------------------------------------------------------------------------ life

SSimpleBuffer::SSimpleBuffer() noexcept : buffer_(GetEmptyBuffer()) {}

SSimpleBuffer::SSimpleBuffer(std::uint32_t nBytes) : buffer_(allocBuffer(nBytes)) {}

SSimpleBuffer::SSimpleBuffer(const void* bytes, std::uint32_t count, bool adopt) : buffer_(nullptr) {
    if (!Require(bytes != nullptr && count != 0, kUnit, "bytes != NULL && count != 0", kConstructorLine))
        return;
    if (adopt) {
        buffer_ = allocHeader();
        buffer_->data = static_cast<unsigned char*>(const_cast<void*>(bytes));
        buffer_->bytesAllocated = count;
    } else {
        buffer_ = allocBuffer(count);
        CopyBytes(buffer_->data, bytes, count);
    }
    buffer_->bytesUsed = count;
}

SSimpleBuffer::SSimpleBuffer(const SSimpleBuffer& other) noexcept : buffer_(Share(other.buffer_)) {}

SSimpleBuffer& SSimpleBuffer::operator=(const SSimpleBuffer& other) noexcept {
    adopt(Share(other.buffer_));
    return *this;
}

SSimpleBuffer::~SSimpleBuffer() {
    Release(buffer_);
}

void SSimpleBuffer::empty() noexcept {
    adopt(GetEmptyBuffer());
}

void SSimpleBuffer::adopt(SSimpleInternalBuffer* block) noexcept {
    Release(std::exchange(buffer_, block));
}

bool SSimpleBuffer::hasBlock() const {
    return Require(buffer_ != nullptr, kUnit, kNoBlock);
}

bool SSimpleBuffer::isShared() const noexcept {
    return buffer_->refCount.load(std::memory_order_acquire) > 1;
}

bool SSimpleBuffer::isWritable() const noexcept {
    return !isShared() && !buffer_->IsMapped() && !IsEmptyBuffer(buffer_);
}

// ------------------------------------------------------------------------------------------------ writing

unsigned char* SSimpleBuffer::getBuffer(std::uint32_t minimumBytes) {
    if (!hasBlock()) return nullptr;
    const std::uint32_t minimum = minimumBytes != kUnspecified ? minimumBytes : 0;
    const bool fits = minimumBytes == kUnspecified || minimum < buffer_->bytesAllocated;
    if (!fits || !isWritable()) adopt(CopyOf(*buffer_, std::max(minimum, buffer_->bytesUsed)));
    return buffer_->data;
}

void SSimpleBuffer::terminate(std::uint32_t nBytesUsed) {
    Require(nBytesUsed <= buffer_->bytesAllocated, kUnit, kUsedFits);
    buffer_->bytesUsed = nBytesUsed;
}

void SSimpleBuffer::releaseBuffer(std::uint32_t nBytesUsed) {
    const bool hasOwnBlock = buffer_ != nullptr && !IsEmptyBuffer(buffer_);
    if (!hasOwnBlock) {
        if (nBytesUsed == 0) return;
        SAssert(kUnit, __LINE__, buffer_ == nullptr ? kNoBlock : kUsedFits);
        adopt(allocBuffer(nBytesUsed));
        std::memset(buffer_->data, 0, nBytesUsed);
    } else if (isShared()) {
        // Shared after getBuffer: what was written there lies beyond the used bytes.
        SSimpleInternalBuffer* copy = allocBuffer(buffer_->bytesAllocated);
        CopyBytes(copy->data, buffer_->data, buffer_->bytesAllocated);
        adopt(copy);
    }
    terminate(nBytesUsed);
}

// The block to append to: the present one, or a copy of it with room. Null when the size passes 32 bits.
// Deliberately a block that the new bytes would just fill is not kept, and none grows ahead of need.
SSimpleBuffer::SSimpleInternalBuffer* SSimpleBuffer::roomToAppend(std::uint32_t count,
                                                                  std::uint32_t extraReserve) {
    const std::uint64_t used = std::uint64_t{buffer_->bytesUsed} + count;
    if (used < buffer_->bytesAllocated && isWritable()) return buffer_;
    const std::uint64_t size = used + (extraReserve != kUnspecified ? extraReserve : 0);
    if (!Require(size <= kMaxBytes, kUnit, "bytesUsed + count + extraReserve does not overflow"))
        return nullptr;
    return CopyOf(*buffer_, static_cast<std::uint32_t>(size));
}

void SSimpleBuffer::appendTo(SSimpleInternalBuffer* block, const void* bytes, std::uint32_t count) noexcept {
    CopyBytes(block->data + block->bytesUsed, bytes, count);
    block->bytesUsed += count;
    // Only now: the bytes may lie in the old block.
    if (block != buffer_) adopt(block);
}

void SSimpleBuffer::append(const void* bytes, std::uint32_t count, std::uint32_t extraReserve) {
    if (bytes == nullptr || count == 0 || !hasBlock()) return;
    SSimpleInternalBuffer* block = roomToAppend(count, extraReserve);
    if (block != nullptr) appendTo(block, bytes, count);
}

void SSimpleBuffer::concat(const void* bytes, std::uint32_t count) {
    if (!hasBlock() || !Require(bytes != nullptr || count == 0, kUnit, "bytes != NULL || count == 0")) return;
    const std::uint64_t used = std::uint64_t{buffer_->bytesUsed} + count;
    if (!Require(used <= kMaxBytes, kUnit, "bytesUsed + count does not overflow")) return;
    appendTo(CopyOf(*buffer_, static_cast<std::uint32_t>(used)), bytes, count);
}

void SSimpleBuffer::copyBeforeDetaching() {
    TraceText(levels::kStep, kUnit, "SSimpleBuffer::detach() copying buffer before detaching");
    try {
        adopt(CopyOf(*buffer_, buffer_->bytesUsed));
    } catch (const std::bad_alloc&) {
        TraceText(levels::kLoss, kUnit, "DetachableSSimpleBuffer:: memory allocation failure?");
        empty();
    }
}

unsigned char* SSimpleBuffer::detach() {
    if (!hasBlock()) return nullptr;
    if (buffer_->IsMapped() || isShared()) copyBeforeDetaching();
    if (IsEmptyBuffer(buffer_)) return nullptr;
    Require(buffer_->refCount.load() == 1, kUnit, "buffer->refCount.load() == 1");
    unsigned char* bytes = std::exchange(buffer_->data, nullptr);
    empty();
    return bytes;
}

// ------------------------------------------------------------------------------------------------ comparison

int SSimpleBuffer::compare(const SSimpleBuffer& other) const noexcept {
    const std::uint32_t mine = getNBytes();
    const std::uint32_t theirs = other.getNBytes();
    const std::uint32_t common = std::min(mine, theirs);
    const int order = common != 0 ? std::memcmp(buffer_->data, other.buffer_->data, common) : 0;
    return order != 0 ? Sign(order) : (mine > theirs) - (mine < theirs);
}

bool SSimpleBuffer::operator==(const SSimpleBuffer& other) const noexcept {
    return getNBytes() == other.getNBytes() &&
           SameBytes(getBufferProtected(), other.getBufferProtected(), getNBytes());
}

bool SSimpleBuffer::operator==(const unsigned char* bytes) const noexcept {
    return bytes != nullptr ? SameBytes(getBufferProtected(), bytes, getNBytes()) : isEmpty();
}

}  // namespace TarnLibA500
