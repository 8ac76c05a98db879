#pragma once

#include "net/hostaddresses.h"
#include "net/ossockets.h"
#include "tarnlib/csisocket.h"

namespace tarntest {

/// Listens on this machine, behind the back of the seam; the port is told.
inline SOCKET ListenHere(int family, unsigned short& port) {
    using namespace TarnLibA500;
    const SOCKET listening = socket(family, SOCK_STREAM, 0);
    sockaddr_storage address = {};
    int size = sizeof address;
    ParseAddress(family == AF_INET ? "127.0.0.1" : "::1", family, address);
    bind(listening, Generic(address), size);
    listen(listening, SOMAXCONN);
    getsockname(listening, Generic(address), &size);
    port = CSISocket::getPort(Generic(address));
    return listening;
}

}  // namespace tarntest
