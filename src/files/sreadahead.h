#pragma once

#include <cstdint>
#include <cstring>

#include "tarnlib/sstring.h"

namespace TarnLibA500 {

/// The line before, whose memory serves the next one when nobody else holds it any more: a block from the
/// heap takes longer than all the rest of reading a line.
class LineBlock : public SAnsiString {
  public:
    /// The text becomes these bytes; copies that others hold stay what they are.
    const SAnsiString& assign(const char* bytes, std::uint32_t count) {
        SStringBuffer* const block = getStringBuffer();
        const bool isFree = block->refCount.load(std::memory_order_acquire) == 1;
        if (isFree && count < block->capacity && block->capacity <= count + kMostSlack) {
            std::memcpy(block->getBuffer(), bytes, count);
            terminateBuffer(count);
        } else {
            SAnsiString::operator=(SAnsiString(bytes, count));
        }
        return *this;
    }

  private:
    static constexpr std::uint32_t kMostSlack = 256;  // so that no short line sits in a long one's memory
};

/// Bytes that were read from a file before somebody asked for them.
class SReadAhead {
  public:
    static constexpr std::uint32_t kBlockBytes = 64 * 1024;

    std::uint32_t unread() const noexcept { return end_ - at_; }
    const char* bytes() const noexcept { return block_ + at_; }
    void consume(std::uint32_t count) noexcept { at_ += count; }
    void drop() noexcept { at_ = end_ = 0; }
    /// Where a block is to be read into; nothing is unread then.
    char* room() noexcept {
        drop();
        return block_;
    }
    void filled(std::uint32_t count) noexcept { end_ = count; }
    LineBlock& line() noexcept { return line_; }

  private:
    std::uint32_t at_ = 0;
    std::uint32_t end_ = 0;
    LineBlock line_;
    char block_[kBlockBytes];
};

}  // namespace TarnLibA500
