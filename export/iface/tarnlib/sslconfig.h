#pragma once

#include "tarnlib/sstring.h"
#include "tarnlib/tarnapi.h"

/// The settings of a TLS client.
///
///     SSLConfig config;                                  // TLS 1.2, the system's trusted certificates
///     config.SetCertificateStore("C:\\certs\\company.pem");
namespace TarnLibA500 {

/// The version of TLS that is spoken, no other.
enum SSLProtocol : int {
    sslTLS10 = 1,  ///< TLS 1.0, for servers that know nothing better: its digests are weak
    sslTLS11 = 2,  ///< TLS 1.1, likewise
    sslTLS12 = 3   ///< TLS 1.2
};

/// The settings of one TLS client. A value: copies are independent.
class TARN_API SSLConfig {
  public:
    /// TLS 1.2, and no certificate store.
    SSLConfig();
    /// This protocol, and no certificate store.
    explicit SSLConfig(SSLProtocol protocol);

    /// Names the file with the trusted certificates: PEM, all of them trusted, roots or not. It may have a private key,
    /// not encrypted, too; the certificate with that key is shown to servers that ask for one, and is not trusted. Without a
    /// file (an empty name) those are trusted that the system trusts to name servers.
    void SetCertificateStore(const SAnsiString& pemFile);
    /// The file, as it was named; empty for none.
    SAnsiString GetCertificateStore() const;
    /// The protocol, as it was given.
    SSLProtocol GetProtocol() const;

  private:
    SSLProtocol protocol_;
    SAnsiString store_;
};

}  // namespace TarnLibA500
