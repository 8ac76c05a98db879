#pragma once

#include <atomic>

#include <openssl/types.h>

#include "kcm/kcmalg.h"

/// What the module knows of each algorithm, and the library's object for it: looked up on first use, as looking
/// up takes longer than a short digest does, then shared by all threads and kept.
namespace KCM400 {

struct DigestAlgorithm {
    KCMAlg400::Digest number;
    const char* name;  // the library's
    unsigned size;
    std::atomic<EVP_MD*> fetched;
};

struct CipherAlgorithm {
    KCMAlg400::Cipher number;
    const char* name;  // the library's
    unsigned keySize;
    unsigned ivSize;
    unsigned blockSize;  // 0: no blocks, and no padding
    std::atomic<EVP_CIPHER*> fetched;
};

/// Null for a number that is none.
DigestAlgorithm* Find(KCMAlg400::Digest number);
CipherAlgorithm* Find(KCMAlg400::Cipher number);

/// Null when the library cannot look it up; the next call tries again.
const EVP_MD* Fetch(DigestAlgorithm& digest);
const EVP_CIPHER* Fetch(CipherAlgorithm& cipher);

}  // namespace KCM400
