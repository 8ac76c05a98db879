#include "kcm/algorithms.h"
#include "kcm/kcm.h"
#include "kcm/oscrypto.h"

namespace KCM400 {

Digester::Digester(KCMAlg400::Digest digest) : digest_(digest) {}

Digester::~Digester() {
    oscrypto::Free(context_);
}

void Digester::init() {
    isReady_ = false;
    DigestAlgorithm* const algorithm = Find(digest_);
    if (algorithm == nullptr) return;
    const EVP_MD* const digest = Fetch(*algorithm);
    if (digest == nullptr) return;
    if (context_ == nullptr) context_ = oscrypto::NewDigest();
    isReady_ = context_ != nullptr && oscrypto::Begin(context_, digest);
}

void Digester::update(const unsigned char* bytes, unsigned count) {
    if (count == 0 || !isReady_) return;
    isReady_ = bytes != nullptr && oscrypto::Update(context_, bytes, count);
}

unsigned Digester::finish(unsigned char* out, unsigned capacity) {
    if (!isReady_) return kFailed;
    isReady_ = false;
    const unsigned size = getDigestSize(digest_);
    if (out == nullptr || capacity < size || !oscrypto::Finish(context_, out)) return kFailed;
    return size;
}

unsigned digestInto(unsigned char* out, unsigned capacity, const unsigned char* bytes, unsigned count,
                    KCMAlg400::Digest digest) {
    DigestAlgorithm* const algorithm = Find(digest);
    if (algorithm == nullptr || out == nullptr || capacity < algorithm->size) return kFailed;
    if (bytes == nullptr && count != 0) return kFailed;
    const EVP_MD* const fetched = Fetch(*algorithm);
    if (fetched == nullptr || !oscrypto::DigestAll(fetched, bytes, count, out)) return kFailed;
    return algorithm->size;
}

}  // namespace KCM400
