#pragma once

#include "tarnlib/csitcpsocket.h"
#include "tarnlib/siarray.h"
#include "tarnlib/sslconfig.h"
#include "tarnlib/tarnapi.h"

/// A TCP connection with TLS over it.
///
/// Everything that CSITcpSocket does goes through TLS from the handshake on: lines, buffers, time-outs. The server must show
/// a certificate for the host that was named, by a chain that ends in one that is trusted; always, there is no switch.
/// The TLS library, mirelcrypto.dll, is loaded when it is first needed, and stays. Failures are false and traced under
/// "cclsocket"; nothing throws but "bad allocation". One thread at a time uses an object.
///
///     CCLSocket mail("mail.example.com", 465, SSLConfig());
///     char line[CSITcpSocket::kLineBytes];
///     if (!mail.TcpOpen()) return Complain(mail.GetFailureText());
///     return mail.GetLine(line, 60);
///
/// A dialogue that begins in clear text (STARTTLS) uses SetupBaseTcp in place of TcpOpen, and NegotiateCCL when both
/// sides have agreed.
namespace TarnLibA500 {

namespace ostls {
struct Table;
}

/// One certificate of a server's chain, for people.
struct CCLCertificate {
    SAnsiString subject;    ///< whose it is: "CN = mail.example.com"
    SAnsiString issuer;     ///< who signed it
    SAnsiString notBefore;  ///< "2026-01-31 23:59:59", in UTC
    SAnsiString notAfter;   ///< likewise
};

/// A TLS client connection.
class TARN_API CCLSocket : public CSITcpSocket {
  public:
    /// Opens nothing yet.
    CCLSocket(const SAnsiString& host, unsigned short port, const SSLConfig& config);
    /// Takes host, port and connection of a socket, which is closed then; the next step is NegotiateCCL.
    CCLSocket(CSITcpSocket& socket, const SSLConfig& config);
    /// Takes host, port and settings, not the connection.
    CCLSocket(const CCLSocket& other);
    /// Closes the connection and takes host, port and settings.
    CCLSocket& operator=(const CCLSocket& other);
    /// Closes the connection as AbortSocket does.
    ~CCLSocket() override;

    using CSITcpSocket::TcpOpen;
    /// Connects as the base does, and negotiates.
    bool TcpOpen() override;
    /// Connects as the base does, without TLS: what is sent then is clear text.
    bool SetupBaseTcp();
    /// Closes its own connection and takes that of another socket, with what it has received and nobody has read; the other
    /// is closed then. Host and port stay: they say whose certificate is expected. Not that of a socket that speaks TLS,
    /// nor none at all: assertion, and nothing happens.
    void UpdateBaseSocket(CSITcpSocket* socket);
    /// Negotiates TLS over the connection; true at once when that is done. Without a connection an assertion and false. A
    /// failure closes the connection; so do received bytes that nobody has read, because they came in clear text.
    bool NegotiateCCL();
    /// True while the connection speaks TLS.
    bool IsNegotiated() const noexcept { return connection_ != nullptr; }

    /// The settings for the next negotiation.
    void SetConfiguration(const SSLConfig& config);
    /// The settings.
    const SSLConfig& GetConfiguration() const noexcept { return config_; }
    /// The seconds that a handshake may take in all: 30 unless set; 0 counts as 1.
    void SetHandshakeTimeout(unsigned seconds) noexcept;

    /// Protocol and cipher of the connection: "TLSv1.2 ECDHE-RSA-AES256-GCM-SHA384"; empty without TLS.
    SAnsiString GetCipher() const;
    /// The verified chain: the server's own certificate first, the trusted one last; none without TLS.
    void GetPeerCertificates(SIArray<CCLCertificate>& chain) const;
    /// Why the last negotiation, or the first call over TLS after it, failed; empty when none did, or in time only.
    const SAnsiString& GetFailureText() const noexcept { return failure_; }

    /// Sends bytes; returns how many were taken. -1 with a socket error.
    int send(const char* bytes, unsigned count, int flags) override;
    /// Receives bytes; returns how many came, 0 when the peer has ended the connection in order. -1 with a socket error:
    /// WSAETIMEDOUT when the rest of a record did not come in time, which is no failure yet; WSAECONNRESET also when
    /// the peer closed without saying so. TLS has no flags.
    int recv(char* bytes, unsigned count, int flags) override;
    /// Tells the peer that nothing more comes when it ends sending, once; then as the base.
    int shutdown(unsigned s, int how) override;

  protected:
    /// Loads and starts the TLS library, once a process. False, and tried again by the next call, when that fails.
    bool cclLibInit();
    /// Makes the context of the negotiation, with protocol, options and trusted certificates.
    bool initCtx();
    /// The library's number of the protocol: 769, 770 or 771, which other values become, too.
    int getSSLMethod();
    /// Frees connection, certificates and context; what comes then is clear text.
    void freeSSLStructs() noexcept;
    /// True when the TLS library has bytes that the socket does not show any more.
    bool hasPending() override;
    /// Frees what TLS had of the connection.
    void closing() noexcept override;

  private:
    bool negotiate();
    bool attach();
    bool shakeHands();
    bool armReceive();
    int answered(const char* call, int result);
    template <class... Parameters>
    bool failed(const char* format, const Parameters&... parameters);
    SAnsiString lastError() const;

    SSLConfig config_;
    unsigned handshakeSeconds_ = 30;
    unsigned armedMilliseconds_ = 0;         ///< the time-out of receiving that the socket has
    const ostls::Table* library_ = nullptr;  ///< the TLS library
    void* context_ = nullptr;                ///< its context
    void* connection_ = nullptr;             ///< its connection; null without TLS
    void* certificates_ = nullptr;           ///< the chain, which belongs to the connection
    SAnsiString failure_;
};

}  // namespace TarnLibA500
