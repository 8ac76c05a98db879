#pragma once

#include <functional>
#include <thread>

#include <winsock2.h>
#include <ws2tcpip.h>

namespace tarntest {

/// Listens on this machine, behind the back of the seam; the port is told.
inline SOCKET ListenHere(int family, unsigned short& port) {
    const SOCKET listening = socket(family, SOCK_STREAM, 0);
    sockaddr_in6 address = {};  // has room for the other
    int size = family == AF_INET ? sizeof(sockaddr_in) : sizeof(sockaddr_in6);
    address.sin6_family = static_cast<short>(family);
    reinterpret_cast<sockaddr_in&>(address).sin_addr.s_addr = family == AF_INET ? htonl(INADDR_LOOPBACK) : 0;
    address.sin6_addr.s6_addr[15] = 1;
    bind(listening, reinterpret_cast<sockaddr*>(&address), size);
    listen(listening, SOMAXCONN);
    getsockname(listening, reinterpret_cast<sockaddr*>(&address), &size);
    port = ntohs(address.sin6_port);
    return listening;
}

/// A server on this machine, in a thread of its own, for one client at a time.
class LoopbackServer {
  public:
    /// The function serves a client; the socket is closed then.
    explicit LoopbackServer(std::function<void(SOCKET)> serve) {
        WSADATA about;
        WSAStartup(MAKEWORD(2, 2), &about);
        listening_ = ListenHere(AF_INET, port);
        thread_ = std::thread([this, serve] {
            for (SOCKET client; (client = accept(listening_, nullptr, nullptr)) != INVALID_SOCKET;) {
                serve(client);
                closesocket(client);
            }
        });
    }
    ~LoopbackServer() {
        closesocket(listening_);
        thread_.join();
        WSACleanup();
    }
    unsigned short port = 0;

  private:
    SOCKET listening_ = INVALID_SOCKET;
    std::thread thread_;
};

}  // namespace tarntest
