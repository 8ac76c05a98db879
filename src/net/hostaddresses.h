#pragma once

#include <vector>

#include "net/ossockets.h"
#include "tarnlib/sstring.h"

namespace TarnLibA500 {

/// The addresses of a host in the order in which they are tried, without a port.
using HostAddresses = std::vector<sockaddr_storage>;

/// Asks the system for the addresses of a host: of one family, or of both (AF_UNSPEC). 0 and one address at least;
/// otherwise the code of the resolver, traced, and none.
int ResolveHost(const SAnsiString& host, int family, HostAddresses& addresses);

/// An address from its text, without asking anybody for a name. False when it is none of the family.
bool ParseAddress(const SAnsiString& text, int family, sockaddr_storage& address);

/// The host without the pair of brackets around it.
SAnsiString WithoutBrackets(const SAnsiString& host);

/// True when both are the same address; ports do not count.
bool IsSameAddress(const sockaddr* a, const sockaddr* b);

/// The system's name for this machine; empty, and traced, when it does not tell.
SAnsiString LocalHostName();

inline sockaddr* Generic(sockaddr_storage& address) noexcept {
    return reinterpret_cast<sockaddr*>(&address);
}
inline const sockaddr* Generic(const sockaddr_storage& address) noexcept {
    return reinterpret_cast<const sockaddr*>(&address);
}

}  // namespace TarnLibA500
