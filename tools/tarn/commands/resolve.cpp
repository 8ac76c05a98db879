#include "command.h"
#include "network.h"
#include "options.h"
#include "system.h"

namespace tarn {
namespace {

using TarnLibA500::CSISocket;
using TarnLibA500::SAnsiString;
using TarnLibA500::SIArray;

constexpr const char* kHelp =
    "-host H\n\n"
    "Prints the addresses of a host, one a line, in the order in which they are tried: one of each family\n"
    "first, loopback addresses only where there is nothing else.\n"
    "Exit status: 0; 1 when nobody knows the host, with the resolver's reason.\n";

ExitStatus Resolve(const Words& arguments) {
    const Options options(arguments, {.required = {"host"}});
    const std::string host = options.value("host");
    const Network network;
    SAnsiString first;
    const int code = CSISocket::gethostbyname(host.c_str(), first);
    SIArray<SAnsiString> addresses;
    if (code != 0 || !CSISocket::getipaddresses(host.c_str(), addresses)) {
        PrintError("tarn resolve: " + host + ": " + Str(CSISocket::getErrorStr(code)));
        return kNo;
    }
    for (const SAnsiString& address : addresses) Print(Str(address) + "\n");
    return kYes;
}

}  // namespace

const Command kResolveCommand = {"resolve", "the addresses of a host, in the order in which they are tried",
                                 kHelp, Resolve};

}  // namespace tarn
