#pragma once

/// The numbers of the algorithms that the cryptographic module offers. They are kept in stored data and never
/// change.
namespace KCMAlg400 {

/// Digests; FIPS 180-4 and RFC 1321.
enum Digest : int {
    SHA1 = 1,    ///< 20 bytes; only for what is stored already
    SHA256 = 3,  ///< 32 bytes
    MD5_ = 5     ///< 16 bytes; only where a protocol asks for it
};

/// Ciphers; NIST SP 800-38A and SP 800-67.
enum Cipher : int {
    /// AES with a key of 32 bytes, in counter mode. The initialisation vector of 16 bytes is the first counter
    /// block, a big-endian number of 128 bits. As many bytes come out as go in.
    AES256_CTR = 12,
    /// Triple DES with a key of 24 bytes, in cipher block chaining with an initialisation vector of 8 bytes and
    /// the padding of PKCS #7. Only for what is stored already.
    DES3_CBC = 14
};

}  // namespace KCMAlg400
