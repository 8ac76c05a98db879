#pragma once

#include <cstdint>

#include "tarnlib/tarnapi.h"

/// Bytes that never change: copies and sub-ranges share one allocation.
///
/// The allocation lives until its last holder goes; how it came into being says how it is freed. Holders may
/// be copied, assigned and destroyed by several threads at once; one object must not be assigned to by two
/// threads. The order is deliberately not that of SSimpleBuffer: here the shorter range is always the
/// smaller.
///
///     unsigned char* bytes = new unsigned char[6];
///     ...
///     SImmutableBuffer record(bytes, 6, AdoptArray);       // deleted with the last holder
///     SImmutableBuffer key(record, 2, 4);                  // bytes 2 to 5, nothing copied
///     unsigned char first = key.at(0);
///     if (key < other) ...
namespace TarnLibA500 {

/// What becomes of the bytes that an SImmutableBuffer is made from.
enum AdoptionType : int {
    CopyData = 0,    ///< they are copied and stay the caller's
    AdoptArray = 1,  ///< they are taken over and freed with delete[]
    AdoptMalloc = 2  ///< they are taken over and freed with the C library's free
};

/// A range of bytes that never change.
class TARN_API SImmutableBuffer {
  public:
    /// A null pointer with a size is reported by assertion and gives an empty range. Bytes of any other
    /// adoption type are used where they are and never freed; the last release reports that by assertion.
    /// When memory fails (std::bad_alloc) the bytes are still the caller's.
    SImmutableBuffer(const unsigned char* bytes, std::uint32_t size, AdoptionType adoption);
    /// Shares the allocation.
    SImmutableBuffer(const SImmutableBuffer& other) noexcept;
    /// A sub-range that shares the allocation. Throws std::logic_error when it passes the other's end.
    SImmutableBuffer(const SImmutableBuffer& other, std::uint32_t offset, std::uint32_t length);
    /// Shares the other's allocation and lets go of its own.
    SImmutableBuffer& operator=(const SImmutableBuffer& other) noexcept;
    /// Frees the allocation with its last holder.
    ~SImmutableBuffer();

    /// The byte at an index. Throws std::logic_error when the index is not below the size.
    unsigned char at(std::uint32_t index) const;
    /// In bytes.
    std::uint32_t size() const noexcept { return size_; }
    /// Ranges that share the allocation, this one included.
    long refcount() const noexcept;

    /// True when sizes and bytes are the same.
    bool operator==(const SImmutableBuffer& other) const noexcept;
    /// By size, and only between equal sizes by unsigned bytes.
    bool operator<(const SImmutableBuffer& other) const noexcept;

  private:
    struct Control;

    static void Release(Control* control) noexcept;

    const unsigned char* start_;
    std::uint32_t size_;
    Control* control_;
};

}  // namespace TarnLibA500
