// Connections.
#include <cstdio>

#include "mirelcrypto/entries.h"
#include "mirelcrypto/lasterror.h"
#include "mirelcrypto/osssl.h"
#include "mirelcrypto/transport.h"
#include "seam/nothrow.h"

namespace mirelcrypto {
namespace {

struct Connection {
    explicit Connection(SSL_CTX* context) : ssl(osssl::NewConnection(context)) {}
    ~Connection() { osssl::Free(ssl); }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    Transport transport;  // goes after what uses it
    SSL* ssl;
    bool isConnected = false;
    bool hasFailed = false;  // OpenSSL takes no call but the last one then
    bool hasShutDown = false;
};

/// Null unless it can be used.
Connection* Usable(void* connection) {
    auto* const usable = static_cast<Connection*>(connection);
    return usable == nullptr || usable->hasFailed ? nullptr : usable;
}

/// A call that cannot be made.
int Misused() {
    Complain(ERR_LIB_SSL, ERR_R_SHOULD_NOT_HAVE_BEEN_CALLED, "no connection, or one that has failed");
    WSASetLastError(WSAENOTCONN);
    return -1;
}

/// What a result of OpenSSL means; a failure gets its place in the last socket error.
int Told(Connection& connection, int result) {
    switch (SSL_get_error(connection.ssl, result)) {
        case SSL_ERROR_NONE:
            return result;
        case SSL_ERROR_ZERO_RETURN:
            return 0;
        case SSL_ERROR_WANT_READ:
            Complain(ERR_LIB_BIO, BIO_R_TRANSFER_TIMEOUT, "the peer is silent");
            WSASetLastError(WSAETIMEDOUT);
            return -1;
        default:
            break;
    }
    connection.hasFailed = true;
    const int error = connection.transport.error();
    if (error != 0) {
        char text[32];
        std::snprintf(text, sizeof text, "WSA%d", error);
        Complain(ERR_LIB_BIO, BIO_R_TRANSFER_ERROR, text);
    }
    // The two that ask for another attempt would be taken at their word.
    const bool isFinal = error != 0 && error != WSAEINTR && error != WSAEWOULDBLOCK;
    WSASetLastError(isFinal ? error : WSAECONNRESET);
    return -1;
}

}  // namespace

void* NewConnection(void* context) {
    ERR_clear_error();
    if (context == nullptr) return nullptr;
    auto* const connection = new (seam::kNoThrow) Connection(static_cast<SSL_CTX*>(context));
    if (connection == nullptr || connection->ssl != nullptr) return connection;
    delete connection;
    return nullptr;
}

int SetSocket(void* connection, unsigned socket) {
    ERR_clear_error();
    Connection* const usable = Usable(connection);
    return usable != nullptr && usable->transport.attach(usable->ssl, socket) ? 1 : 0;
}

int SetHost(void* connection, const char* host) {
    ERR_clear_error();
    Connection* const usable = Usable(connection);
    if (usable == nullptr || host == nullptr) return 0;
    // Without a name OpenSSL would look at none, and one with a dot in front would stand for many.
    if (*host == '\0' || *host == '.') {
        Complain(ERR_LIB_SSL, SSL_R_SSL3_EXT_INVALID_SERVERNAME, host);
        return 0;
    }
    if (osssl::ExpectAddress(usable->ssl, host)) return 1;
    ERR_clear_error();  // of an address that is none
    SSL_set_hostflags(usable->ssl, X509_CHECK_FLAG_NO_PARTIAL_WILDCARDS);
    return osssl::ExpectName(usable->ssl, host) ? 1 : 0;
}

int Connect(void* connection) {
    ERR_clear_error();
    Connection* const usable = Usable(connection);
    if (usable == nullptr) return Misused();
    usable->transport.begin(false);
    const int result = Told(*usable, osssl::Connect(usable->ssl));
    usable->isConnected = result == 1;
    usable->hasFailed = !usable->isConnected;
    return usable->isConnected ? 1 : -1;
}

int Read(void* connection, void* bytes, int room) {
    ERR_clear_error();
    Connection* const usable = Usable(connection);
    if (usable == nullptr || !usable->isConnected) return Misused();
    usable->transport.begin(SSL_has_pending(usable->ssl) == 0);
    return Told(*usable, osssl::Read(usable->ssl, bytes, room));
}

int Pending(void* connection) {
    Connection* const usable = Usable(connection);
    if (usable == nullptr || SSL_has_pending(usable->ssl) == 0) return 0;
    const int decrypted = SSL_pending(usable->ssl);
    return decrypted > 0 ? decrypted : 1;
}

int Write(void* connection, const void* bytes, int count) {
    ERR_clear_error();
    Connection* const usable = Usable(connection);
    if (usable == nullptr || !usable->isConnected || usable->hasShutDown) return Misused();
    usable->transport.begin(false);
    const int written = osssl::Write(usable->ssl, bytes, count);
    return Told(*usable, written > 0 && !usable->transport.flush() ? -1 : written);
}

int Shutdown(void* connection) {
    ERR_clear_error();
    Connection* const usable = Usable(connection);
    if (usable == nullptr || !usable->isConnected) return 0;
    if (usable->hasShutDown) return 1;
    usable->hasShutDown = true;
    usable->transport.begin(false);
    return osssl::Shutdown(usable->ssl) >= 0 ? 1 : Told(*usable, -1);
}

void FreeConnection(void* connection) {
    delete static_cast<Connection*>(connection);
}

int Describe(void* connection, char* text, int room) {
    constexpr int kMost = 128;
    char all[kMost] = "";
    const Connection* const usable = Usable(connection);
    if (usable != nullptr && usable->isConnected)
        std::snprintf(all, sizeof all, "%s %s", SSL_get_version(usable->ssl),
                      SSL_get_cipher_name(usable->ssl));
    return CopyText(all, text, room);
}

void* PeerCertificates(void* connection) {
    const Connection* const usable = Usable(connection);
    return usable == nullptr ? nullptr : SSL_get0_verified_chain(usable->ssl);
}

}  // namespace mirelcrypto
