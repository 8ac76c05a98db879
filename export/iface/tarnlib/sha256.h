#pragma once

#include <cstdint>

#include "tarnlib/tarnapi.h"

namespace TarnLibA500 {

/// The SHA-256 digest of FIPS 180-4, of bytes that come in pieces. SCrypt::sha256File digests a file.
///
///     SHA256 digest;
///     while (Next(block)) digest.Update(block.data, block.size);
///     unsigned char result[32];
///     if (!digest.Finish(result)) return false;
class TARN_API SHA256 {
  public:
    /// Bytes of a digest.
    static constexpr std::uint32_t kDigestBytes = 32;

    /// Begins a digest. Throws std::bad_alloc.
    SHA256();
    /// Overwrites what it knows of the bytes.
    ~SHA256();
    /// A digest is one object's.
    SHA256(const SHA256&) = delete;
    /// A digest is one object's.
    SHA256& operator=(const SHA256&) = delete;

    /// The next bytes. A null pointer with a count is reported by assertion and adds nothing.
    void Update(const void* bytes, std::uint32_t count);
    /// Gives the digest of all bytes since the beginning, and begins anew. False, traced, and zeros when the
    /// cryptographic module failed under way.
    bool Finish(unsigned char (&digest)[kDigestBytes]);

  private:
    struct Work;

    Work* work_;
};

}  // namespace TarnLibA500
