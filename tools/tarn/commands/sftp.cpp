#include "command.h"
#include "filetransfer.h"
#include "network.h"
#include "options.h"
#include "passphrase.h"
#include "tarnlib/csisftp.h"

namespace tarn {
namespace {

using TarnLibA500::CSIftpException;
using TarnLibA500::CSIsftp;

const std::string kHelp =
    std::string(
        "-host H -user U -fingerprint F (-pass-env NAME | -pass-file F | -key FILE) [options]\n\n"
        "Manages files and directories on an SFTP server, in this order:\n\n") +
    kTransferHelp +
    "  -port N       the port of the server (22)\n\n"
    "  -fingerprint F  what the server's key is known by, as ssh-keygen -l prints it (SHA256:...) or in\n"
    "                  hexadecimal; without it the one that the server shows is told, and nothing is done\n"
    "  -key FILE       the private key to log in with (Ed25519 or ECDSA)\n"
    "  -key-pass-env N, -key-pass-file F   where its passphrase is\n\n"
    "-account and -passive are taken for scripts that have them for tarn ftp, and mean nothing here.\n\n"
    "Exit status: 0; 1 when the server says no, with a line for what it refused; 2 when the connection or "
    "the\n"
    "login failed, or the server is not the known one.\n";

/// Connects only to learn what to ask for.
[[noreturn]] void TellFingerprint(CSIsftp& client, const std::string& host, unsigned short port) {
    try {
        client.Connect(host.c_str(), port);
    } catch (const CSIftpException&) {
        if (client.GetServerFingerprint().isEmpty()) throw;
    }
    const std::string shown = Str(client.GetServerFingerprint());
    throw Failure(host + " shows the fingerprint " + shown + "; if that is its own, say -fingerprint " +
                  shown);
}

void LogIn(CSIsftp& client, const Options& options) {
    constexpr unsigned short kPort = 22;
    const unsigned short port = PortOf(options, kPort);
    const std::string host = options.value("host");
    SetTimeout(client, options);
    if (!options.has("fingerprint")) TellFingerprint(client, host, port);
    const PassPhrase password(options, "pass", !options.has("key"));
    const PassPhrase passphrase(options, "key-pass", false);
    client.SetFingerprint(options.value("fingerprint").c_str());
    client.SetPrivateKey(options.value("key").c_str(), passphrase);
    client.Connect(host.c_str(), port);
    if (!client.Login(options.value("user").c_str(), password)) throw Failure(host + " refuses the login");
}

ExitStatus Sftp(const Words& arguments) {
    const Options options = TransferOptions(
        arguments, {"account", "fingerprint", "key", "key-pass-env", "key-pass-file"}, {"passive", "ascii"});
    if (options.has("ascii")) throw Failure("SFTP sends bytes as they are; there is no -ascii");
    const Network network;
    Watched<CSIsftp> client;
    LogIn(client, options);
    return Transfer("sftp", client, client.upload, options);
}

}  // namespace

const Command kSftpCommand = {"sftp", "puts files on an SFTP server and manages its directories", kHelp,
                              Sftp};

}  // namespace tarn
