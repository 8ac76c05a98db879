#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <memory>

#include "strings/base/lentblock.h"
#include "strings/base/wipe.h"
#include "tarnlib/sstring.h"

namespace TarnLibA500 {

/// A text that is overwritten when it goes.
class SecretText : public SAnsiString {
  public:
    using SAnsiString::SAnsiString;
    SecretText() = default;
    SecretText(const SecretText&) = delete;
    SecretText& operator=(const SecretText&) = delete;
    ~SecretText() { releaseBuffer(true); }

    /// Appends bytes. A block that is too small is overwritten, not just left behind.
    void append(const char* bytes, std::uint32_t count) {
        const std::uint32_t length = getLength() + count;
        if (length > room_) {
            SecretText larger;
            larger.setSize(room_ = std::max(length, 2 * getLength()));
            larger.concat(getString(), getLength());
            setBuffer(larger.getStringBuffer(), true);
            larger.unlinkBuffer();
        }
        concat(bytes, count);
    }

  private:
    std::uint32_t room_ = 0;
};

/// The memory of the line before, lent to the line and taken back for the next one when nobody holds it any
/// more: a block from the heap takes longer than all the rest of reading a line.
class LineMemory {
  public:
    LineMemory() = default;
    ~LineMemory() { part(); }
    LineMemory(const LineMemory&) = delete;
    LineMemory& operator=(const LineMemory&) = delete;

    /// A text with these bytes.
    SAnsiString lend(const char* bytes, std::uint32_t count) {
        if (count == 0) return SAnsiString();
        if (!held_.isFree() || !held_.take(bytes, count)) {
            part();
            held_ = Line(bytes, count);
            held_.block()->refCount.fetch_add(kLenderMark - 1, std::memory_order_relaxed);
        }
        return held_;
    }

  private:
    /// The string that holds the block; with it the mark is complete.
    class Line : public SAnsiString {
      public:
        using SAnsiString::SAnsiString;
        Line() = default;
        SStringBuffer* block() const noexcept { return getStringBuffer(); }
        bool isFree() const noexcept {
            return block()->refCount.load(std::memory_order_acquire) == kLenderMark;
        }
        bool take(const char* bytes, std::uint32_t count) noexcept {
            const std::uint32_t room = block()->capacity;
            if (count >= room || room > count + kMostSlack) return false;
            std::memcpy(block()->getBuffer(), bytes, count);
            terminateBuffer(count);
            return true;
        }
        void wipe() { unlinkBuffer(true); }
    };

    static constexpr std::uint32_t kMostSlack = 256;  // so that no short line sits in a long one's memory

    void part() noexcept {
        if (held_.isEmpty()) return;
        if (held_.block()->refCount.fetch_sub(kLenderMark, std::memory_order_acq_rel) == kLenderMark) {
            held_.block()->refCount.store(1, std::memory_order_relaxed);
            held_.wipe();
        } else {
            std::construct_at(&held_);  // forgets the block, where it is not counted any more
        }
    }

    Line held_;
};

/// Bytes that were read from a file before somebody asked for them. They may be secrets, so they are
/// overwritten in the end.
class SReadAhead {
  public:
    static constexpr std::uint32_t kBlockBytes = 64 * 1024;

    SReadAhead() = default;
    ~SReadAhead() { Wipe(block_, most_); }
    SReadAhead(const SReadAhead&) = delete;
    SReadAhead& operator=(const SReadAhead&) = delete;

    std::uint32_t unread() const noexcept { return end_ - at_; }
    const char* bytes() const noexcept { return block_ + at_; }
    void consume(std::uint32_t count) noexcept { at_ += count; }
    void drop() noexcept { at_ = end_ = 0; }
    /// Where a block is to be read into; nothing is unread then.
    char* room() noexcept {
        drop();
        return block_;
    }
    void filled(std::uint32_t count) noexcept {
        end_ = count;
        most_ = std::max(most_, count);
    }
    LineMemory& lines() noexcept { return lines_; }

  private:
    std::uint32_t at_ = 0;
    std::uint32_t end_ = 0;
    std::uint32_t most_ = 0;  // bytes that the block has ever held
    LineMemory lines_;
    char block_[kBlockBytes];
};

}  // namespace TarnLibA500
