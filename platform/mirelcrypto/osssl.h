#pragma once

#include "seam/seam.h"

// With windows.h, and before the header of certificates.
#include <winsock2.h>

#include <wincrypt.h>

// Behind the system's, whose macros of the same names they take back.
#include <openssl/err.h>
#include <openssl/pem.h>
#include <openssl/ssl.h>
#include <openssl/x509.h>
#include <openssl/x509v3.h>

/// The one way in which the module reaches OpenSSL, and sockets, files and certificate stores of the system on its behalf.
/// A call of OpenSSL fails with null or false and leaves its reasons in the thread's list of errors; one of the
/// system with its own value and the code in the last error.
namespace mirelcrypto::osssl {

/// What is open is contexts, connections, transports, certificates that were handed out, files and stores.
struct Kind {
    static void SetError(unsigned long error) noexcept { SetLastError(error); }
};
using Calls = seam::Calls<Kind>;

// What tests let the system trust, and sockets do.
inline constinit seam::Replaceable<decltype(CertOpenSystemStoreW)> openSystemStore;
inline constinit seam::Replaceable<decltype(::recv)> receiveBytes;

/// Counts an object that OpenSSL or the system gave, if it did; passes it on.
template <class Object>
Object* Opened(Object* object) noexcept {
    if (object != nullptr) Calls::Opened();
    return object;
}

// --- OpenSSL ---

/// What the first call of a process asks for: no configuration file is ever read.
inline bool Started() {
    return !Calls::MustFail() && OPENSSL_init_ssl(OPENSSL_INIT_NO_LOAD_CONFIG, nullptr) == 1;
}

inline SSL_CTX* NewContext() {
    return Calls::MustFail() ? nullptr : Opened(SSL_CTX_new(TLS_client_method()));
}

inline bool SetProtocol(SSL_CTX* context, int protocol) {
    return !Calls::MustFail() && SSL_CTX_set_min_proto_version(context, protocol) == 1 &&
           SSL_CTX_set_max_proto_version(context, protocol) == 1;
}

inline bool SetCiphers(SSL_CTX* context, const char* ciphers) {
    return !Calls::MustFail() && SSL_CTX_set_cipher_list(context, ciphers) == 1;
}

inline bool UseCertificate(SSL_CTX* context, X509* certificate) {
    return !Calls::MustFail() && SSL_CTX_use_certificate(context, certificate) == 1;
}

inline bool UseKey(SSL_CTX* context, EVP_PKEY* key) {
    return !Calls::MustFail() && SSL_CTX_use_PrivateKey(context, key) == 1;
}

/// The store has a reference of its own.
inline bool Trust(SSL_CTX* context, X509* certificate) {
    return !Calls::MustFail() && X509_STORE_add_cert(SSL_CTX_get_cert_store(context), certificate) == 1;
}

/// Null is nothing, here and below.
inline void Free(SSL_CTX* context) {
    if (context != nullptr) Calls::Closed();
    SSL_CTX_free(context);
}

inline SSL* NewConnection(SSL_CTX* context) {
    return Calls::MustFail() ? nullptr : Opened(SSL_new(context));
}

inline void Free(SSL* connection) {
    if (connection != nullptr) Calls::Closed();
    SSL_free(connection);
}

inline BIO_METHOD* NewMethod(int type, const char* name) {
    return Calls::MustFail() ? nullptr : Opened(BIO_meth_new(type, name));
}

inline void Free(BIO_METHOD* method) {
    if (method != nullptr) Calls::Closed();
    BIO_meth_free(method);
}

inline BIO* NewBio(const BIO_METHOD* method) {
    return Calls::MustFail() ? nullptr : BIO_new(method);
}

/// The bytes stay where they are.
inline BIO* NewBio(const void* bytes, int count) {
    return Calls::MustFail() ? nullptr : BIO_new_mem_buf(bytes, count);
}

/// The certificate must be for this address. False also when the text is none.
inline bool ExpectAddress(SSL* connection, const char* address) {
    return !Calls::MustFail() && X509_VERIFY_PARAM_set1_ip_asc(SSL_get0_param(connection), address) == 1;
}

inline bool ExpectName(SSL* connection, const char* name) {
    return !Calls::MustFail() && SSL_set1_host(connection, name) == 1 &&
           SSL_set_tlsext_host_name(connection, name) == 1;
}

inline int Connect(SSL* connection) {
    return Calls::MustFail() ? -1 : SSL_connect(connection);
}

inline int Read(SSL* connection, void* bytes, int room) {
    return Calls::MustFail() ? -1 : SSL_read(connection, bytes, room);
}

inline int Write(SSL* connection, const void* bytes, int count) {
    return Calls::MustFail() ? -1 : SSL_write(connection, bytes, count);
}

inline int Shutdown(SSL* connection) {
    return Calls::MustFail() ? -1 : SSL_shutdown(connection);
}

/// One more reference to a certificate.
inline X509* Share(X509* certificate) {
    if (Calls::MustFail() || X509_up_ref(certificate) != 1) return nullptr;
    return Opened(certificate);
}

inline void Free(X509* certificate) {
    if (certificate != nullptr) Calls::Closed();
    X509_free(certificate);
}

// --- sockets ---

inline int Receive(SOCKET socket, char* bytes, int room) {
    return Calls::MustFail() ? SOCKET_ERROR : receiveBytes.orElse(::recv)(socket, bytes, room, 0);
}

inline int Send(SOCKET socket, const char* bytes, int count) {
    return Calls::MustFail() ? SOCKET_ERROR : ::send(socket, bytes, count, 0);
}

/// 1 when something can be received; 0 after the time, which null makes endless.
inline int WaitToReceive(SOCKET socket, const timeval* limit) {
    if (Calls::MustFail()) return SOCKET_ERROR;
    fd_set wanted;
    FD_ZERO(&wanted);
    FD_SET(socket, &wanted);
    return ::select(0, &wanted, nullptr, nullptr, const_cast<timeval*>(limit));
}

/// The time-out of receiving, in milliseconds; 0 is none.
inline int GetTimeout(SOCKET socket, DWORD& milliseconds) {
    int size = sizeof milliseconds;
    if (Calls::MustFail()) return SOCKET_ERROR;
    return ::getsockopt(socket, SOL_SOCKET, SO_RCVTIMEO, reinterpret_cast<char*>(&milliseconds), &size);
}

// --- files ---

inline HANDLE OpenFile(const wchar_t* path) {
    if (Calls::MustFail()) return INVALID_HANDLE_VALUE;
    const HANDLE file = CreateFileW(path, GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
    if (file != INVALID_HANDLE_VALUE) Calls::Opened();
    return file;
}

inline bool SizeOf(HANDLE file, LARGE_INTEGER& size) {
    return !Calls::MustFail() && GetFileSizeEx(file, &size) != FALSE;
}

inline bool ReadFrom(HANDLE file, void* bytes, DWORD count, DWORD& done) {
    return !Calls::MustFail() && ::ReadFile(file, bytes, count, &done, nullptr) != FALSE;
}

inline void CloseFile(HANDLE file) {
    Calls::Closed();
    CloseHandle(file);
}

// --- the system's certificates ---

inline HCERTSTORE OpenStore(const wchar_t* name) {
    return Calls::MustFail() ? nullptr : Opened(openSystemStore.orElse(CertOpenSystemStoreW)(0, name));
}

inline void CloseStore(HCERTSTORE store) {
    Calls::Closed();
    CertCloseStore(store, 0);
}

}  // namespace mirelcrypto::osssl
