#pragma once

#include "kcm/libcrypto.h"
#include "seam/seam.h"

/// The one way in which the module reaches OpenSSL. A call that fails leaves nothing in the thread's list of
/// errors, where a later TLS call would take it for its own.
namespace KCM400::oscrypto {

/// What is open is contexts.
struct Kind {
    static void SetError(unsigned long) noexcept {}  // there is no more to a failure than that it is one
};
using Calls = seam::Calls<Kind>;

/// The functions, once something has been started or fetched.
inline const libcrypto::Functions& Crypto() {
    return *libcrypto::Get();
}

inline bool Checked(bool succeeded) {
    if (!succeeded) Crypto().clearErrors();
    return succeeded;
}

template <class Object>
Object* Checked(Object* object) {
    Checked(object != nullptr);
    return object;
}

template <class Context>
Context* Opened(Context* context) {
    if (Checked(context) != nullptr) Calls::Opened();
    return context;
}

/// What the first call of a process asks for: no configuration file is ever read, neither when a name is looked up.
inline bool Started() {
    const libcrypto::Functions* const functions = libcrypto::Get();
    return functions != nullptr && functions->initialize(OPENSSL_INIT_NO_LOAD_CONFIG, nullptr) == 1;
}

inline bool Random(unsigned char* bytes, std::size_t count) {
    return !Calls::MustFail() && Started() && Checked(Crypto().randomBytes(nullptr, bytes, count, 0) == 1);
}

inline EVP_MD* FetchDigest(const char* name) {
    return Calls::MustFail() || !Started() ? nullptr : Checked(Crypto().fetchDigest(nullptr, name, nullptr));
}

inline EVP_CIPHER* FetchCipher(const char* name) {
    return Calls::MustFail() || !Started() ? nullptr : Checked(Crypto().fetchCipher(nullptr, name, nullptr));
}

inline EVP_MD_CTX* NewDigest() {
    return Calls::MustFail() ? nullptr : Opened(Crypto().newDigest());
}

inline bool Begin(EVP_MD_CTX* context, const EVP_MD* digest) {
    return !Calls::MustFail() && Checked(Crypto().beginDigest(context, digest, nullptr) == 1);
}

inline bool Update(EVP_MD_CTX* context, const unsigned char* bytes, std::size_t count) {
    return !Calls::MustFail() && Checked(Crypto().updateDigest(context, bytes, count) == 1);
}

inline bool Finish(EVP_MD_CTX* context, unsigned char* out) {
    return !Calls::MustFail() && Checked(Crypto().finishDigest(context, out, nullptr) == 1);
}

/// Overwrites what the context holds of the bytes. Null is nothing.
inline void Free(EVP_MD_CTX* context) {
    if (context == nullptr) return;
    Calls::Closed();
    Crypto().freeDigestContext(context);
}

inline bool DigestAll(const EVP_MD* digest, const unsigned char* bytes, std::size_t count,
                      unsigned char* out) {
    return !Calls::MustFail() &&
           Checked(Crypto().digestAll(bytes, count, out, nullptr, digest, nullptr) == 1);
}

inline EVP_CIPHER_CTX* NewCipher() {
    return Calls::MustFail() ? nullptr : Opened(Crypto().newCipher());
}

inline bool Begin(EVP_CIPHER_CTX* context, const EVP_CIPHER* cipher, const unsigned char* key,
                  const unsigned char* iv, bool encrypts) {
    return !Calls::MustFail() &&
           Checked(Crypto().beginCipher(context, cipher, key, iv, encrypts ? 1 : 0, nullptr) == 1);
}

inline bool Update(EVP_CIPHER_CTX* context, unsigned char* out, int& written, const unsigned char* in,
                   int count) {
    return !Calls::MustFail() && Checked(Crypto().updateCipher(context, out, &written, in, count) == 1);
}

inline bool Finish(EVP_CIPHER_CTX* context, unsigned char* out, int& written) {
    return !Calls::MustFail() && Checked(Crypto().finishCipher(context, out, &written) == 1);
}

/// Overwrites the key, and what the context holds of the bytes. Null is nothing.
inline void Free(EVP_CIPHER_CTX* context) {
    if (context == nullptr) return;
    Calls::Closed();
    Crypto().freeCipherContext(context);
}

}  // namespace KCM400::oscrypto
