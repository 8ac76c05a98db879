#include "kcm/algorithms.h"

#include "kcm/kcm.h"
#include "kcm/oscrypto.h"

namespace KCM400 {

namespace {

constinit DigestAlgorithm digests[] = {
    {KCMAlg400::SHA1, "SHA1", 20, nullptr},
    {KCMAlg400::SHA256, "SHA256", 32, nullptr},
    {KCMAlg400::MD5_, "MD5", 16, nullptr},
};

constinit CipherAlgorithm ciphers[] = {
    {KCMAlg400::AES256_CTR, "AES-256-CTR", 32, 16, 0, nullptr},
    {KCMAlg400::DES3_CBC, "DES-EDE3-CBC", 24, 8, 8, nullptr},
};

template <class Algorithm, std::size_t kCount, class Number>
Algorithm* FindIn(Algorithm (&algorithms)[kCount], Number number) {
    for (Algorithm& algorithm : algorithms) {
        if (algorithm.number == number) return &algorithm;
    }
    return nullptr;
}

// Where two threads look the same thing up, the first one's object stays.
template <class Object, class Lookup, class Free>
const Object* FetchInto(std::atomic<Object*>& fetched, Lookup lookup, Free free) {
    if (Object* known = fetched.load(std::memory_order_acquire)) return known;
    Object* const found = lookup();
    Object* first = nullptr;
    if (found == nullptr || fetched.compare_exchange_strong(first, found, std::memory_order_acq_rel))
        return found;
    free(found);
    return first;
}

}  // namespace

DigestAlgorithm* Find(KCMAlg400::Digest number) {
    return FindIn(digests, number);
}

CipherAlgorithm* Find(KCMAlg400::Cipher number) {
    return FindIn(ciphers, number);
}

const EVP_MD* Fetch(DigestAlgorithm& digest) {
    return FetchInto(
        digest.fetched, [&] { return oscrypto::FetchDigest(digest.name); },
        [](EVP_MD* second) { oscrypto::Crypto().freeDigest(second); });
}

const EVP_CIPHER* Fetch(CipherAlgorithm& cipher) {
    return FetchInto(
        cipher.fetched, [&] { return oscrypto::FetchCipher(cipher.name); },
        [](EVP_CIPHER* second) { oscrypto::Crypto().freeCipher(second); });
}

unsigned getDigestSize(KCMAlg400::Digest digest) {
    const DigestAlgorithm* const algorithm = Find(digest);
    return algorithm == nullptr ? kFailed : algorithm->size;
}

unsigned getCipherKeySize(KCMAlg400::Cipher cipher) {
    const CipherAlgorithm* const algorithm = Find(cipher);
    return algorithm == nullptr ? kFailed : algorithm->keySize;
}

unsigned getCipherIVSize(KCMAlg400::Cipher cipher) {
    const CipherAlgorithm* const algorithm = Find(cipher);
    return algorithm == nullptr ? kFailed : algorithm->ivSize;
}

}  // namespace KCM400
