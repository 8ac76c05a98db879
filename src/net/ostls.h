#pragma once

#include <algorithm>

#include "mirelcrypto/mirelcrypto.h"
#include "seam/seam.h"

#include <winsock2.h>

/// The one way to the TLS library: its functions, which are found by name when it is loaded. The calls fail as it does,
/// with null, 0 or -1.
namespace TarnLibA500::ostls {

/// What is open is contexts, connections and certificates.
struct Kind {
    static void SetError(unsigned long error) noexcept { WSASetLastError(static_cast<int>(error)); }
};
using Calls = seam::Calls<Kind>;

/// What tests put in the place of the loaded library.
inline constinit seam::Replaceable<MirelGetList> getList;

/// The functions of the library.
struct Table {
    MirelLastError* lastError;
    MirelNewContext* newContext;
    MirelSetStore* setStore;
    MirelSetOptions* setOptions;
    MirelFreeContext* freeContext;
    MirelNewConnection* newConnection;
    MirelSetSocket* setSocket;
    MirelSetHost* setHost;
    MirelConnect* connect;
    MirelRead* read;
    MirelWrite* write;
    MirelShutdown* shutdown;
    MirelFreeConnection* freeConnection;
    MirelPeerCertificates* peerCertificates;
    MirelCertificateAt* certificateAt;
    MirelFreeCertificate* freeCertificate;
    // Not every library has these.
    MirelPending* pending;
    MirelDescribe* describe;
    MirelTextOf* textOf;
};

inline void* Opened(void* object) noexcept {
    if (object != nullptr) Calls::Opened();
    return object;
}

inline void* NewContext(const Table& library, int protocol) {
    return Calls::MustFail() ? nullptr : Opened(library.newContext(protocol));
}

inline bool SetStore(const Table& library, void* context, const char* pemFile) {
    return !Calls::MustFail() && library.setStore(context, pemFile) == 1;
}

inline bool SetOptions(const Table& library, void* context, long options) {
    return !Calls::MustFail() && library.setOptions(context, options) >= 0;
}

/// Null is nothing, here and below.
inline void FreeContext(const Table& library, void* context) {
    if (context == nullptr) return;
    Calls::Closed();
    library.freeContext(context);
}

inline void* NewConnection(const Table& library, void* context) {
    return Calls::MustFail() ? nullptr : Opened(library.newConnection(context));
}

inline bool SetSocket(const Table& library, void* connection, unsigned socket) {
    return !Calls::MustFail() && library.setSocket(connection, socket) == 1;
}

inline bool SetHost(const Table& library, void* connection, const char* host) {
    return !Calls::MustFail() && library.setHost(connection, host) == 1;
}

inline bool Connect(const Table& library, void* connection) {
    return !Calls::MustFail() && library.connect(connection) == 1;
}

inline int Read(const Table& library, void* connection, char* bytes, unsigned room) {
    constexpr unsigned kMost = 0x7FFFFFFF;
    return Calls::MustFail() ? -1 : library.read(connection, bytes, static_cast<int>(std::min(room, kMost)));
}

inline int Write(const Table& library, void* connection, const char* bytes, unsigned count) {
    constexpr unsigned kMost = 0x7FFFFFFF;
    return Calls::MustFail() ? -1
                             : library.write(connection, bytes, static_cast<int>(std::min(count, kMost)));
}

inline int Shutdown(const Table& library, void* connection) {
    return Calls::MustFail() ? -1 : library.shutdown(connection);
}

inline void FreeConnection(const Table& library, void* connection) {
    if (connection == nullptr) return;
    Calls::Closed();
    library.freeConnection(connection);
}

inline void* PeerCertificates(const Table& library, void* connection) {
    return Calls::MustFail() ? nullptr : library.peerCertificates(connection);
}

inline void* CertificateAt(const Table& library, void* certificates, int n) {
    return Calls::MustFail() ? nullptr : Opened(library.certificateAt(certificates, n));
}

inline void FreeCertificate(const Table& library, void* certificate) {
    if (certificate == nullptr) return;
    Calls::Closed();
    library.freeCertificate(certificate);
}

}  // namespace TarnLibA500::ostls
