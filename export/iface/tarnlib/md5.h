#pragma once

#include <cstdint>

#include "tarnlib/sstring.h"
#include "tarnlib/tarnapi.h"

namespace TarnLibA500 {

/// The MD5 digest of RFC 1321: for old formats and for telling contents apart. Collisions can be made at will, so it
/// proves nothing where somebody may want to deceive; SHA256 does.
///
///     MD5 digest;
///     while (Next(block)) digest.Update(block.data, block.size);
///     unsigned char result[16];
///     digest.Finish(result);
///     Print(MD5::DigestToString(result));                    // 32 digits
class TARN_API MD5 {
  public:
    /// Bytes of a digest.
    static constexpr std::uint32_t kDigestBytes = 16;

    /// Begins a digest.
    MD5() noexcept;
    /// Overwrites what it knows of the bytes.
    ~MD5();
    /// Goes on separately from the same bytes.
    MD5(const MD5& other) noexcept;
    /// Goes on separately from the same bytes.
    MD5& operator=(const MD5& other) noexcept;

    /// The next bytes. A null pointer with a count is reported by assertion and adds nothing.
    void Update(const void* bytes, std::uint32_t count) noexcept;
    /// Gives the digest of all bytes since the beginning, and begins anew.
    void Finish(unsigned char (&digest)[kDigestBytes]) noexcept;

    /// The digest of a text's bytes up to its terminator. A null text is reported by assertion and counts as empty.
    static void FromString(const char* text, unsigned char (&digest)[kDigestBytes]) noexcept;
    /// The digest of a text converted to UTF-8, or else to the process's code page, where "?" stands for what that
    /// does not have. A null text is reported by assertion and counts as empty. Throws std::bad_alloc.
    static void FromString(const wchar_t* text, unsigned char (&digest)[kDigestBytes], bool asUtf8);
    /// True when all bytes are the same; the time that it takes does not tell where they differ.
    static bool DigestEqual(const unsigned char (&a)[kDigestBytes],
                            const unsigned char (&b)[kDigestBytes]) noexcept;
    /// A digest as 32 lower-case hexadecimal digits.
    static SAnsiString DigestToString(const unsigned char (&digest)[kDigestBytes]);

  private:
    static constexpr std::uint32_t kBlockBytes = 64;

    void begin() noexcept;

    std::uint32_t state_[4];
    std::uint64_t total_;                 ///< bytes so far
    unsigned char waiting_[kBlockBytes];  ///< the bytes of a block that is not whole yet
};

}  // namespace TarnLibA500
