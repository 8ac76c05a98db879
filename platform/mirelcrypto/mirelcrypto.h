#pragma once

/// TLS for clients, as a table of functions that is found by name: a program loads the module, asks
/// cryptolib_get_f_list for the list, the list for the factory "MIRELCCL_1", and the factory for each entry.
///
/// Entries may be called from any thread; a context and a connection are used by one thread at a time. Null in place
/// of an object is a failure, or nothing to free. After a failure SSL_API_get_last_error, on the same thread, says why;
/// the entries that read and write also leave the number of a socket error in the last socket error.
///
///     const FList* list = cryptolib_get_f_list(2, "en_US", "my program");
///     Factory* factory = list->get_factory(list, "MIRELCCL_1");
///     MirelNewContext* newContext = (MirelNewContext*)factory->resolve(factory, "SSL_CTX_new");
#if defined(MIRELCRYPTO_STATIC)
/// Marks what the module exports.
#define MIREL_API
#elif defined(mirelcrypto_EXPORTS)
#define MIREL_API __declspec(dllexport)
#else
#define MIREL_API __declspec(dllimport)
#endif

#ifdef __cplusplus
extern "C" {
#endif

typedef struct FList FList;      ///< what the module offers
typedef struct Factory Factory;  ///< the way to its entries
typedef void (*MirelFn)(void);   ///< an entry, to be cast to the type of its name

/// What the module offers.
struct FList {
    int version;                                                      ///< 2
    Factory* (*get_factory)(const FList* list, const char* factory);  ///< null for an unknown name
};

/// The way to the entries.
struct Factory {
    MirelFn (*resolve)(Factory* factory, const char* entry);  ///< null for an unknown name
    void (*release)(Factory* factory);  ///< ends the use of the factory, not of its entries
};

/// The list, which belongs to the module; null for another version than 2. The locale and the caller's name are for
/// logs, and not looked at.
MIREL_API FList* cryptolib_get_f_list(int version, const char* locale, const char* caller);
/// The type of cryptolib_get_f_list.
typedef FList* MirelGetList(int version, const char* locale, const char* caller);

/// What SSL_CTX_set_options takes, added up.
enum MirelOptions {
    mirelVerifyPeer = 1,       ///< the peer's chain must be verified; so it is in every context
    mirelNoCompression = 2,    ///< nothing is compressed
    mirelNoRenegotiation = 4,  ///< the peer cannot ask for another handshake
    mirelSystemRoots = 8       ///< trusts the roots that the system trusts to name servers
};

/// What aux_get_Certificate_text tells of a certificate.
enum MirelCertificateText {
    mirelSubject = 0,    ///< whose it is
    mirelIssuer = 1,     ///< who signed it
    mirelNotBefore = 2,  ///< "2026-01-31 23:59:59", in UTC
    mirelNotAfter = 3    ///< likewise
};

/// "SSL_API_startup": 1, also when the library is started already. Before everything else.
typedef int MirelStartup(void);
/// "mirelcr_init": 1 when the module can be used. Behind the start-up.
typedef int MirelInit(void);
/// "SSL_API_get_last_error": the code of the thread's last failure, and its text, cut to the room and terminated. Both
/// are forgotten by that. 0 and no text when there is none.
typedef int MirelLastError(char* text, int room);
/// "SSL_CTX_new": a context for exactly one protocol: 769 (TLS 1.0), 770 (1.1) or 771 (1.2). The first two are allowed
/// what they need, digests that are weak today.
typedef void* MirelNewContext(int protocol);
/// "SSL_CTX_set_default_pse_by_name": 1 when the PEM file (its name in UTF-8, longer than 259 characters behind "\\?\")
/// has been read whole. All of its certificates are trusted, roots or not. A private key, which must not be encrypted,
/// makes the certificate with that key the client's own, and that is not trusted.
typedef int MirelSetStore(void* context, const char* pemFile);
/// "SSL_CTX_set_options": adds these; they are the answer, or -1 when the system's roots cannot be read.
typedef long MirelSetOptions(void* context, long options);
/// "SSL_CTX_free".
typedef void MirelFreeContext(void* context);
/// "SSL_new": a connection, which keeps its context alive.
typedef void* MirelNewConnection(void* context);
/// "SSL_set_fd": the connection runs over a connected socket, which stays the caller's. 1, or 0.
typedef int MirelSetSocket(void* connection, unsigned socket);
/// "SSL_set_verify_host": the certificate must be for this host name or address, and a name is sent to the server. 1,
/// or 0: there is no name, or one that stands for several.
typedef int MirelSetHost(void* connection, const char* host);
/// "SSL_connect": 1, or -1. The handshake takes at most the socket's time-out of receiving in all.
typedef int MirelConnect(void* connection);
/// "SSL_read": how many bytes came; 0 when the peer has ended the connection in order; -1. Waits for the rest of a
/// record at most the socket's time-out of receiving; after WSAETIMEDOUT in such a wait it may be called again.
typedef int MirelRead(void* connection, void* bytes, int room);
/// "SSL_pending": how many bytes are here already, decrypted or not; a look at the socket does not show them.
typedef int MirelPending(void* connection);
/// "SSL_write": how many bytes were taken, all of them; -1.
typedef int MirelWrite(void* connection, const void* bytes, int count);
/// "SSL_shutdown": tells the peer, once, that nothing more comes. 1 when he has been told; 0 when there is nobody to
/// tell.
typedef int MirelShutdown(void* connection);
/// "SSL_free".
typedef void MirelFreeConnection(void* connection);
/// "SSL_describe": "TLSv1.2 ECDHE-RSA-AES128-GCM-SHA256", cut to the room and terminated; its length.
typedef int MirelDescribe(void* connection, char* text, int room);
/// "SSL_get_peer_certificates": the verified chain, which belongs to the connection: the server's own first, the
/// trusted one last. Null before the handshake.
typedef void* MirelPeerCertificates(void* connection);
/// "aux_get_Certificate_n_from_Certificates": the n-th, from 0; null behind the last one.
typedef void* MirelCertificateAt(void* certificates, int n);
/// "aux_get_Certificate_text": a MirelCertificateText in UTF-8, cut to the room and terminated; its length, or -1.
typedef int MirelTextOf(void* certificate, int what, char* text, int room);
/// "aux_free_Certificate".
typedef void MirelFreeCertificate(void* certificate);

#ifdef __cplusplus
}
#endif
