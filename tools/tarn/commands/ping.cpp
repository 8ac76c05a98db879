#include <algorithm>
#include <list>

#include "assertwatch.h"
#include "command.h"
#include "network.h"
#include "options.h"
#include "system.h"

namespace tarn {
namespace {

using TarnLibA500::CSISocket;
using TarnLibA500::SAnsiString;
using Servers = std::list<CSISocket::ServerToPing>;

constexpr const char* kHelp =
    "-hosts HOST:PORT,HOST:PORT,... -timeout S\n\n"
    "Tries which servers take a connection, all of them at once, and prints a line for each. An IPv6 "
    "address\n"
    "stands in brackets: [::1]:80.\n\n"
    "  -timeout S  seconds for all of it\n\n"
    "Exit status: 0 when all of them answered, otherwise 1.\n";

Servers ReadServers(const std::string& hosts) {
    const AssertWatch quiet;  // of brackets that are not closed we tell ourselves
    Servers servers;
    for (std::size_t at = 0; at <= hosts.size();) {
        const std::size_t comma = std::min(hosts.find(',', at), hosts.size());
        const std::string word = hosts.substr(at, comma - at);
        SAnsiString name;
        unsigned short port = 0;
        if (!CSISocket::splitNamePort(word.c_str(), name, port))
            throw Failure("\"" + word + "\" is no host with a port");
        servers.emplace_back(name, port);
        at = comma + 1;
    }
    return servers;
}

std::string ResultOf(const CSISocket::ServerToPing& server) {
    if (server.hasPingedAddress()) return "answers at " + Str(server.getPingedAddress().toString());
    return server.getAddresses().GetSize() == 0 ? "is not known" : "does not answer";
}

ExitStatus Ping(const Words& arguments) {
    constexpr int kMostSeconds = 3600;
    constexpr std::size_t kMostServers = 64;
    const Options options(arguments, {.required = {"hosts", "timeout"}});
    const int seconds = options.number("timeout", 1, kMostSeconds);
    Servers servers = ReadServers(options.value("hosts"));
    if (servers.size() > kMostServers) throw Failure("64 servers at a time");
    const Network network;
    CSISocket::ping(servers, static_cast<unsigned>(seconds));
    bool haveAll = true;
    for (const CSISocket::ServerToPing& server : servers) {
        haveAll = haveAll && server.hasPingedAddress();
        Print(Str(CSISocket::appendPort(server.getAnsiHost(), server.getPort())) + " " + ResultOf(server) +
              "\n");
    }
    return haveAll ? kYes : kNo;
}

}  // namespace

const Command kPingCommand = {"ping", "which servers take a connection", kHelp, Ping};

}  // namespace tarn
