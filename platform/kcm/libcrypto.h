#pragma once

#include <openssl/crypto.h>
#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/rand.h>

/// OpenSSL's libcrypto, loaded when its first function is needed and kept from then on: with what it wants of the
/// system, it takes longer to load than everything else that a process of the library begins with.
namespace KCM400::libcrypto {

/// What the module calls, by OpenSSL's names.
struct Functions {
    decltype(::OPENSSL_init_crypto)* initialize;
    decltype(::ERR_clear_error)* clearErrors;
    decltype(::RAND_bytes_ex)* randomBytes;
    decltype(::EVP_MD_fetch)* fetchDigest;
    decltype(::EVP_MD_free)* freeDigest;
    decltype(::EVP_MD_CTX_new)* newDigest;
    decltype(::EVP_MD_CTX_free)* freeDigestContext;
    decltype(::EVP_DigestInit_ex2)* beginDigest;
    decltype(::EVP_DigestUpdate)* updateDigest;
    decltype(::EVP_DigestFinal_ex)* finishDigest;
    decltype(::EVP_Digest)* digestAll;
    decltype(::EVP_CIPHER_fetch)* fetchCipher;
    decltype(::EVP_CIPHER_free)* freeCipher;
    decltype(::EVP_CIPHER_CTX_new)* newCipher;
    decltype(::EVP_CIPHER_CTX_free)* freeCipherContext;
    decltype(::EVP_CipherInit_ex2)* beginCipher;
    decltype(::EVP_CipherUpdate)* updateCipher;
    decltype(::EVP_CipherFinal_ex)* finishCipher;
};

/// Those of the copy that the process has already, or of the one beside this module, or beside the program. Null when there
/// is none or it cannot be loaded; the next call tries again.
const Functions* Get() noexcept;

}  // namespace KCM400::libcrypto
