#include <algorithm>
#include <cstring>

#include "kcm/algorithms.h"
#include "kcm/kcm.h"
#include "kcm/oscrypto.h"

#include <windows.h>

namespace KCM400 {

namespace {

// The library counts in int.
constexpr unsigned kMostAtOnce = 1u << 30;

bool Feed(EVP_CIPHER_CTX* context, unsigned char* out, const unsigned char* in, unsigned count) {
    while (count != 0) {
        const unsigned part = std::min(count, kMostAtOnce);
        int written = 0;
        if (!oscrypto::Update(context, out, written, in, static_cast<int>(part))) return false;
        out += written;
        in += part;
        count -= part;
    }
    return true;
}

}  // namespace

CipherRun::CipherRun(const unsigned char* key, unsigned count, const CipherOptions& options, bool encrypts)
    : encrypts_(encrypts) {
    CipherAlgorithm* const algorithm = Find(options.cipher);
    if (algorithm == nullptr || options.ivLength != algorithm->ivSize) return;
    if (key == nullptr || count < algorithm->keySize) return;
    const EVP_CIPHER* const cipher = Fetch(*algorithm);
    if (cipher == nullptr) return;
    context_ = oscrypto::NewCipher();
    if (context_ == nullptr) return;
    if (oscrypto::Begin(context_, cipher, key, options.iv, encrypts)) {
        finalSize_ = algorithm->blockSize;
    } else {
        close();
    }
}

CipherRun::~CipherRun() {
    close();
}

void CipherRun::close() {
    oscrypto::Free(context_);
    context_ = nullptr;
}

// A whole block waits only when decrypting: it may be the last one, with the padding.
unsigned long long CipherRun::writtenBy(unsigned count) const {
    const unsigned long long bytes = waiting_ + 0ull + count;
    if (finalSize_ == 0 || bytes == 0) return bytes;
    return (encrypts_ ? bytes : bytes - 1) / finalSize_ * finalSize_;
}

unsigned CipherRun::update(unsigned char* out, unsigned capacity, const unsigned char* in, unsigned count) {
    if (context_ == nullptr) return kFailed;
    const unsigned long long size = writtenBy(count);
    if (size > capacity || (out == nullptr && size != 0) || (in == nullptr && count != 0)) return kFailed;
    if (!Feed(context_, out, in, count)) {
        close();
        return kFailed;
    }
    const unsigned written = static_cast<unsigned>(size);
    waiting_ += count - written;
    return written;
}

unsigned CipherRun::finish(unsigned char* out, unsigned capacity) {
    if (context_ == nullptr) return kFailed;
    unsigned char rest[EVP_MAX_BLOCK_LENGTH];
    int written = 0;
    const bool isWhole = oscrypto::Finish(context_, rest, written);
    close();
    const unsigned size = static_cast<unsigned>(written);
    const bool fits = isWhole && size <= capacity && (out != nullptr || size == 0);
    if (fits && size != 0) std::memcpy(out, rest, size);
    SecureZeroMemory(rest, sizeof rest);
    return fits ? size : kFailed;
}

unsigned CipherRun::getFinalOutputSize() const {
    return finalSize_;
}

}  // namespace KCM400
