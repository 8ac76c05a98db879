#pragma once

#include <cstdint>

#include "strings/base/memory.h"
#include "strings/base/wipe.h"

namespace TarnLibA500 {

/// Bytes that nobody may find later: overwritten before they are freed. A few have room in the object itself.
class SecretBytes {
  public:
    /// Throws BadAllocation.
    explicit SecretBytes(std::uint64_t count)
        : size_(memory::CheckedSize(count)),
          bytes_(size_ <= sizeof few_ ? few_ : static_cast<unsigned char*>(memory::Allocate(size_))) {}
    ~SecretBytes() {
        Wipe(bytes_, size_);
        if (bytes_ != few_) memory::Free(bytes_);
    }
    SecretBytes(const SecretBytes&) = delete;
    SecretBytes& operator=(const SecretBytes&) = delete;

    unsigned char* data() noexcept { return bytes_; }
    std::uint32_t size() const noexcept { return static_cast<std::uint32_t>(size_); }

  private:
    static constexpr std::size_t kFew = 256;

    std::size_t size_;
    unsigned char* bytes_;
    alignas(std::uint64_t) unsigned char few_[kFew];
};

}  // namespace TarnLibA500
