#include "tarnlib/cclsocket.h"

#include <algorithm>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

#include "diag/assert/require.h"
#include "files/systempath.h"
#include "net/ccllibrary.h"
#include "net/hostaddresses.h"
#include "net/ossockets.h"
#include "net/socketfailure.h"
#include "system/systemtext.h"
#include "tarnlib/csisocket.h"

namespace TarnLibA500 {
namespace {

constexpr const char* kUnit = "cclsocket";
constexpr unsigned kMillisecondsPerSecond = 1000;
constexpr unsigned kMostSeconds = MAXLONG / kMillisecondsPerSecond;
constexpr int kMostText = 2048;

SAnsiString FromUtf8(const char* text) {
    SWCharString wide;
    wide.fromUTF8(text);
    return FromSystem(wide.getString());
}

/// The name of a file as the TLS library takes it.
std::vector<char> LibraryPath(const SAnsiString& path) {
    const SWCharString wide = LongSystemPath(path);
    std::vector<char> utf8(wide.getNBytesForUTF8());
    wide.toUTF8(utf8.data(), static_cast<std::uint32_t>(utf8.size()));
    return utf8;
}

/// What the certificate must be for: no brackets, no zone of an address and no full stop of an absolute name are in
/// one. Empty, which the TLS library refuses, for a name with a zero byte.
SAnsiString CertifiedName(const SAnsiString& host) {
    SAnsiString name = WithoutBrackets(host);
    const std::string_view text(name.getString(), name.getLength());
    if (text.find('\0') != text.npos) return SAnsiString();
    std::size_t length = std::min(text.find('%'), text.size());
    if (length > 1 && text[length - 1] == '.') --length;
    return SAnsiString(text.data(), static_cast<std::uint32_t>(length));
}

SAnsiString CertificateText(const ostls::Table& library, void* certificate, int what) {
    char text[kMostText] = "";
    if (library.textOf != nullptr) library.textOf(certificate, what, text, sizeof text);
    return FromUtf8(text);
}

/// A socket's time-out, changed for as long as the object lives.
class TimeoutFor {
  public:
    TimeoutFor(unsigned socket, int option, DWORD milliseconds) : socket_(socket), option_(option) {
        isSet_ = ossockets::GetOption(socket, option, &before_, sizeof before_) == 0 &&
                 ossockets::SetOption(socket, option, &milliseconds, sizeof milliseconds) == 0;
    }
    ~TimeoutFor() { restore(); }
    TimeoutFor(const TimeoutFor&) = delete;
    TimeoutFor& operator=(const TimeoutFor&) = delete;

    bool isSet() const noexcept { return isSet_; }
    bool restore() noexcept {
        return !std::exchange(isSet_, false) ||
               ossockets::SetOption(socket_, option_, &before_, sizeof before_) == 0;
    }

  private:
    unsigned socket_;
    int option_;
    DWORD before_ = 0;
    bool isSet_ = false;
};

}  // namespace

CCLSocket::CCLSocket(const SAnsiString& host, unsigned short port, const SSLConfig& config)
    : CSITcpSocket(host, port), config_(config) {}

CCLSocket::CCLSocket(CSITcpSocket& socket, const SSLConfig& config)
    : CCLSocket(socket.GetHost(), socket.GetPort(), config) {
    UpdateBaseSocket(&socket);
}

CCLSocket::CCLSocket(const CCLSocket& other)
    : CSITcpSocket(other), config_(other.config_), handshakeSeconds_(other.handshakeSeconds_) {}

CCLSocket& CCLSocket::operator=(const CCLSocket& other) {
    if (this == &other) return *this;
    CSITcpSocket::operator=(other);
    config_ = other.config_;
    handshakeSeconds_ = other.handshakeSeconds_;
    return *this;
}

CCLSocket::~CCLSocket() {
    try {
        AbortSocket();
    } catch (...) {  // no memory for a trace; the base closes the handle
        freeSSLStructs();
    }
}

bool CCLSocket::TcpOpen() {
    return SetupBaseTcp() && NegotiateCCL();
}

bool CCLSocket::SetupBaseTcp() {
    failure_.empty();
    return CSITcpSocket::TcpOpen();
}

void CCLSocket::UpdateBaseSocket(CSITcpSocket* socket) {
    if (socket == this || !Require(socket != nullptr, kUnit, "socket != 0")) return;
    const auto* const secure = dynamic_cast<const CCLSocket*>(socket);
    if (!Require(secure == nullptr || !secure->IsNegotiated(), kUnit, "!socket->IsNegotiated()")) return;
    takeConnection(*socket);
}

void CCLSocket::SetConfiguration(const SSLConfig& config) {
    config_ = config;
}

void CCLSocket::SetHandshakeTimeout(unsigned seconds) noexcept {
    handshakeSeconds_ = std::clamp(seconds, 1U, kMostSeconds);
}

/// Keeps the text for GetFailureText, and traces it; the last socket error stays. False.
template <class... Parameters>
bool CCLSocket::failed(const char* format, const Parameters&... parameters) {
    const KeepSocketError keep;
    failure_ = STraceHelper(format, parameters...).getString();
    TARN_TRACE_AT(levels::kFailure, kUnit, "%1", failure_);
    return false;
}

/// Why the library's last call failed.
SAnsiString CCLSocket::lastError() const {
    const KeepSocketError keep;
    char text[kMostText] = "";
    library_->lastError(text, sizeof text);
    return *text == '\0' ? CSISocket::getLastErrorStr() : FromUtf8(text);
}

bool CCLSocket::NegotiateCCL() {
    if (IsNegotiated()) return true;
    if (!Require(IsOpen(), kUnit, "Cannot negotiate SSL without a TCP connection.")) return false;
    failure_.empty();
    if (negotiate()) return true;
    freeSSLStructs();
    AbortSocket();
    TARN_TRACE_AT(levels::kFailure, kUnit, "no TLS connection to %1", CSISocket::appendPort(host_, port_));
    TARN_TRACE_AT(levels::kFailure, kUnit, "SSL negotiation failed. Connection has been closed.");
    return false;
}

bool CCLSocket::negotiate() {
    if (unread_ != 0) {
        failure_ = "bytes came before the handshake, in clear text";
        TARN_TRACE_AT(levels::kLoss, kUnit, "%1: %2: %3", CSISocket::appendPort(host_, port_), failure_,
                      unread_);
        return false;
    }
    return cclLibInit() && initCtx() && attach() && shakeHands();
}

bool CCLSocket::cclLibInit() {
    library_ = CclFunctions();
    if (library_ == nullptr) failure_ = "the TLS library cannot be loaded";
    return library_ != nullptr;
}

int CCLSocket::getSSLMethod() {
    constexpr int kTls10 = 769;
    const int protocol = config_.GetProtocol();
    if (protocol >= sslTLS10 && protocol <= sslTLS12) return kTls10 + protocol - sslTLS10;
    TARN_TRACE_AT(levels::kLoss, kUnit, "Unsupported TLS protocol enum: %1. Defaulting to TLS 1.2.",
                  protocol);
    return kTls10 + sslTLS12 - sslTLS10;
}

bool CCLSocket::initCtx() {
    constexpr const char* kNotLoaded = "SSL error: %1. Could not load certificate from %2.";
    context_ = ostls::NewContext(*library_, getSSLMethod());
    if (context_ == nullptr) return failed("Error in SSL Context Creation: {}");
    const SAnsiString store = config_.GetCertificateStore();
    if (store.isEmpty()) TARN_TRACE_AT(levels::kStep, kUnit, "Certificate file not set");
    const long options = mirelVerifyPeer | mirelNoCompression | mirelNoRenegotiation |
                         (store.isEmpty() ? mirelSystemRoots : 0);
    if (!ostls::SetOptions(*library_, context_, options))
        return failed(kNotLoaded, lastError(), "the system's trusted certificates");
    return store.isEmpty() || ostls::SetStore(*library_, context_, LibraryPath(store).data()) ||
           failed(kNotLoaded, lastError(), store);
}

/// Makes the connection and tells it its socket and whom to expect there.
bool CCLSocket::attach() {
    connection_ = ostls::NewConnection(*library_, context_);
    if (connection_ == nullptr) return failed("SSL_new failed: %1", lastError());
    if (!ostls::SetSocket(*library_, connection_, socket_))
        return failed("Could not setup OpenSSL: %1", lastError());
    return ostls::SetHost(*library_, connection_, CertifiedName(host_).getString()) ||
           failed("no certificate can be for the host '%1': %2", host_, lastError());
}

bool CCLSocket::shakeHands() {
    const DWORD limit = handshakeSeconds_ * kMillisecondsPerSecond;
    TimeoutFor receiving(socket_, SO_RCVTIMEO, limit);
    TimeoutFor sending(socket_, SO_SNDTIMEO, limit);
    if (!receiving.isSet() || !sending.isSet())
        return failed("cannot limit the handshake: %1", CSISocket::getLastErrorStr());
    if (!ostls::Connect(*library_, connection_)) return failed("SSL_connect failed: %1", lastError());
    certificates_ = ostls::PeerCertificates(*library_, connection_);
    if (certificates_ == nullptr) return failed("Server did not present a certificate: %1", lastError());
    return (receiving.restore() && sending.restore()) ||
           failed("cannot restore the socket's time-outs: %1", CSISocket::getLastErrorStr());
}

void CCLSocket::freeSSLStructs() noexcept {
    if (library_ == nullptr) return;
    certificates_ = nullptr;
    ostls::FreeConnection(*library_, std::exchange(connection_, nullptr));
    ostls::FreeContext(*library_, std::exchange(context_, nullptr));
    armedMilliseconds_ = 0;
}

void CCLSocket::closing() noexcept {
    freeSSLStructs();
}

bool CCLSocket::hasPending() {
    return IsNegotiated() && library_->pending != nullptr && library_->pending(connection_) > 0;
}

/// The socket's time-out becomes that of the caller who waits, for the rest of a record.
bool CCLSocket::armReceive() {
    if (receiveMilliseconds_ == armedMilliseconds_) return true;
    const DWORD limit = receiveMilliseconds_;
    if (ossockets::SetOption(socket_, SO_RCVTIMEO, &limit, sizeof limit) != 0) return false;
    armedMilliseconds_ = receiveMilliseconds_;
    return true;
}

/// A result of the library, a socket error with its failure. Only the first failure is told: the others follow from it.
int CCLSocket::answered(const char* call, int result) {
    if (result >= 0) return result;
    const int error = ossockets::LastError();
    if (error == 0 || IsToBeAskedAgain(error)) WSASetLastError(WSAECONNRESET);
    if (error != WSAETIMEDOUT && failure_.isEmpty())
        failed("%1:%2: %3 failed: %4", host_, port_, call, lastError());
    return -1;
}

int CCLSocket::send(const char* bytes, unsigned count, int flags) {
    if (!IsNegotiated()) return CSITcpSocket::send(bytes, count, flags);
    if (count == 0) return 0;
    return answered("SSL_write", ostls::Write(*library_, connection_, bytes, count));
}

int CCLSocket::recv(char* bytes, unsigned count, int flags) {
    if (!IsNegotiated()) return CSITcpSocket::recv(bytes, count, flags);
    if (count == 0) return 0;
    if (flags != 0) {
        WSASetLastError(WSAEOPNOTSUPP);
        return answered("recv with flags", -1);
    }
    if (!armReceive()) return answered("the time-out of receiving", -1);
    return answered("SSL_read", ostls::Read(*library_, connection_, bytes, count));
}

int CCLSocket::shutdown(unsigned s, int how) {
    constexpr DWORD kMostMilliseconds = 2000;
    if (IsNegotiated() && s == socket_ && how != SD_RECEIVE) {
        // A peer who reads nothing would hold us here.
        ossockets::SetOption(s, SO_SNDTIMEO, &kMostMilliseconds, sizeof kMostMilliseconds);
        if (ostls::Shutdown(*library_, connection_) < 0)
            failed("%1:%2: SSL_shutdown failed: %3", host_, port_, lastError());
    }
    return CSITcpSocket::shutdown(s, how);
}

SAnsiString CCLSocket::GetCipher() const {
    char text[kMostText] = "";
    if (IsNegotiated() && library_->describe != nullptr) library_->describe(connection_, text, sizeof text);
    return FromUtf8(text);
}

void CCLSocket::GetPeerCertificates(SIArray<CCLCertificate>& chain) const {
    chain.RemoveAll();
    for (int n = 0; certificates_ != nullptr; ++n) {
        const auto free = [this](void* certificate) { ostls::FreeCertificate(*library_, certificate); };
        const std::unique_ptr<void, decltype(free)> certificate(
            ostls::CertificateAt(*library_, certificates_, n), free);
        if (certificate == nullptr) return;
        const auto text = [&](int what) { return CertificateText(*library_, certificate.get(), what); };
        chain.Add({text(mirelSubject), text(mirelIssuer), text(mirelNotBefore), text(mirelNotAfter)});
    }
}

}  // namespace TarnLibA500
