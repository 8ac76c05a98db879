#pragma once

#include <cstdint>
#include <cstring>

namespace TarnLibA500 {

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

  private:
    std::uint32_t at_ = 0;
    std::uint32_t end_ = 0;
    char block_[kBlockBytes];
};

}  // namespace TarnLibA500
