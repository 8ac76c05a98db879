#include "command.h"
#include "filetransfer.h"
#include "network.h"
#include "options.h"
#include "passphrase.h"
#include "tarnlib/csiftp.h"

namespace tarn {
namespace {

using TarnLibA500::CSIftp;

const std::string kHelp =
    std::string(
        "-host H -user U (-pass-env NAME | -pass-file F) [options]\n\n"
        "Manages files and directories on an FTP server, in this order:\n\n") +
    kTransferHelp +
    "  -port N       the port of the server (21)\n"
    "  -account A    for servers that ask for one\n"
    "  -passive      this end opens the data connections\n"
    "  -ascii        sends text: every line ends with CR LF\n\n"
    "Exit status: 0; 1 when the server says no, with a line for what it refused; 2 when the connection or "
    "the\n"
    "login failed.\n";

void LogIn(CSIftp& client, const Options& options) {
    constexpr unsigned short kPort = 21;
    const unsigned short port = PortOf(options, kPort);
    SetTimeout(client, options);
    client.SetPassive(options.has("passive"));
    const std::string host = options.value("host");
    const PassPhrase password(options);
    if (!client.Connect(host.c_str(), port)) throw Failure(host + " does not serve now");
    if (!client.Login(options.value("user").c_str(), password, options.value("account").c_str()))
        throw Failure(host + " refuses the login");
    if (options.has("ascii")) client.SetASCII();
}

ExitStatus Ftp(const Words& arguments) {
    const Options options = TransferOptions(arguments, {"account"}, {"passive", "ascii"});
    const Network network;
    Watched<CSIftp> client;
    LogIn(client, options);
    return Transfer("ftp", client, client.upload, options);
}

}  // namespace

const Command kFtpCommand = {"ftp", "puts files on an FTP server and manages its directories", kHelp, Ftp};

}  // namespace tarn
