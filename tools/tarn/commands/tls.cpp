#include "command.h"
#include "network.h"
#include "options.h"
#include "system.h"
#include "tarnlib/cclsocket.h"

namespace tarn {
namespace {

using TarnLibA500::CCLCertificate;
using TarnLibA500::CCLSocket;
using TarnLibA500::SIArray;
using TarnLibA500::SSLConfig;
using TarnLibA500::SSLProtocol;

constexpr const char* kHelp =
    "-host H -port N [options]\n\n"
    "Connects to a server that speaks TLS, and prints protocol, cipher and the chain of certificates that "
    "was\n"
    "verified, the server's own first; or why it is not trusted.\n\n"
    "  -store PEM     the file with the certificates to trust, and with the client's own and its key if the\n"
    "                 server asks for one; otherwise those that the system trusts\n"
    "  -protocol P    1.0, 1.1 or 1.2 (1.2)\n"
    "  -timeout S     seconds for the handshake (30)\n\n"
    "Exit status: 0; 1 when the server is reached, and not trusted or of another protocol; 2 when it is not\n"
    "reached.\n";

SSLProtocol ProtocolOf(const Options& options) {
    const std::string name = options.has("protocol") ? options.value("protocol") : "1.2";
    if (name == "1.0") return TarnLibA500::sslTLS10;
    if (name == "1.1") return TarnLibA500::sslTLS11;
    if (name == "1.2") return TarnLibA500::sslTLS12;
    throw Failure("\"" + name + "\" is no protocol: 1.0, 1.1 or 1.2");
}

ExitStatus Tls(const Words& arguments) {
    constexpr int kMostPort = 65535;
    constexpr int kMostSeconds = 3600;
    const Options options(arguments,
                          {.required = {"host", "port"}, .values = {"store", "protocol", "timeout"}});
    SSLConfig config(ProtocolOf(options));
    config.SetCertificateStore(options.value("store").c_str());
    const std::string host = options.value("host");
    CCLSocket socket(host.c_str(), static_cast<unsigned short>(options.number("port", 1, kMostPort)), config);
    if (options.has("timeout"))
        socket.SetHandshakeTimeout(static_cast<unsigned>(options.number("timeout", 1, kMostSeconds)));
    const Network network;
    if (!socket.SetupBaseTcp())
        throw Failure("no connection to " + host + ": " + Str(TarnLibA500::CSISocket::getLastErrorStr()));
    if (!socket.NegotiateCCL()) {
        PrintError("tarn tls: " + Str(socket.GetFailureText()));
        return kNo;
    }
    Print(Str(socket.GetCipher()) + "\n");
    SIArray<CCLCertificate> chain;
    socket.GetPeerCertificates(chain);
    for (const CCLCertificate& certificate : chain)
        Print(Str(certificate.subject) + ", from " + Str(certificate.issuer) + ", " +
              Str(certificate.notBefore) + " to " + Str(certificate.notAfter) + "\n");
    socket.AbortSocket();
    return kYes;
}

}  // namespace

const Command kTlsCommand = {"tls", "whether a TLS server can be trusted, and why not", kHelp, Tls};

}  // namespace tarn
