#pragma once

#include <utility>

#include "seam/seam.h"

// With windows.h, which in front of it would bring the interface of version 1.
#include <winsock2.h>
#include <ws2tcpip.h>

/// The one way in which the library reaches the network. The calls fail as the system's do: with -1, an invalid
/// handle or a code of the resolver, and the number in the last socket error.
namespace TarnLibA500::ossockets {

/// What is open is sockets.
struct Kind {
    static void SetError(unsigned long error) noexcept { WSASetLastError(static_cast<int>(error)); }
};
using Calls = seam::Calls<Kind>;

// What tests let a name mean, cut short, or say of a service.
inline constinit seam::Replaceable<decltype(::getaddrinfo)> getAddresses;
inline constinit seam::Replaceable<decltype(::freeaddrinfo)> freeAddresses;
inline constinit seam::Replaceable<decltype(::getnameinfo)> getName;
inline constinit seam::Replaceable<decltype(::connect)> connectTo;
inline constinit seam::Replaceable<decltype(::send)> sendBytes;
inline constinit seam::Replaceable<decltype(::recv)> receiveBytes;
inline constinit seam::Replaceable<decltype(::select)> selectReady;
inline constinit seam::Replaceable<decltype(WSAStartup)> startUp;

/// No socket.
inline constexpr unsigned kNone = 0xFFFFFFFF;

inline int LastError() noexcept {
    return WSAGetLastError();
}

/// Each success asks for one Stop. 0 or the error.
inline int Start(WORD version) noexcept {
    WSADATA about;
    const unsigned long error = Calls::Error();
    return error != 0 ? static_cast<int>(error) : startUp.orElse(WSAStartup)(version, &about);
}

inline int Stop() noexcept {
    return Calls::MustFail() ? SOCKET_ERROR : WSACleanup();
}

/// Counts a socket that the system gave, if it did; passes it on.
inline unsigned Opened(SOCKET handle) noexcept {
    if (handle != INVALID_SOCKET) Calls::Opened();
    return static_cast<unsigned>(handle);
}

inline unsigned Open(int family, int type, int protocol) noexcept {
    return Calls::MustFail() ? kNone : Opened(::socket(family, type, protocol));
}

/// Not a call that can be made to fail: the handle is gone in any case.
inline int Close(unsigned handle) noexcept {
    if (handle != kNone) Calls::Closed();
    return ::closesocket(handle);
}

/// Owns a socket from the line that opens it. The last socket error stays when it is closed.
class Socket {
  public:
    Socket() noexcept = default;
    explicit Socket(unsigned handle) noexcept : handle_(handle) {}
    Socket(Socket&& other) noexcept : handle_(other.release()) {}
    Socket& operator=(Socket&& other) noexcept {
        Socket old(std::exchange(handle_, other.release()));
        return *this;
    }
    ~Socket() { close(); }

    explicit operator bool() const noexcept { return handle_ != kNone; }
    unsigned get() const noexcept { return handle_; }
    /// Hands the socket to somebody who closes it.
    unsigned release() noexcept { return std::exchange(handle_, kNone); }
    void close() noexcept {
        if (!*this) return;
        const int error = LastError();
        Close(release());
        WSASetLastError(error);
    }

  private:
    unsigned handle_ = kNone;
};

inline int Bind(unsigned socket, const sockaddr* address, int size) noexcept {
    return Calls::MustFail() ? SOCKET_ERROR : ::bind(socket, address, size);
}

inline int Listen(unsigned socket, int backlog) noexcept {
    return Calls::MustFail() ? SOCKET_ERROR : ::listen(socket, backlog);
}

inline unsigned Accept(unsigned socket, sockaddr* address, int* size) noexcept {
    return Calls::MustFail() ? kNone : Opened(::accept(socket, address, size));
}

inline int Connect(unsigned socket, const sockaddr* address, int size) noexcept {
    return Calls::MustFail() ? SOCKET_ERROR : connectTo.orElse(::connect)(socket, address, size);
}

inline int Shutdown(unsigned socket, int how) noexcept {
    return Calls::MustFail() ? SOCKET_ERROR : ::shutdown(socket, how);
}

inline int Send(unsigned socket, const char* bytes, int count, int flags) noexcept {
    return Calls::MustFail() ? SOCKET_ERROR : sendBytes.orElse(::send)(socket, bytes, count, flags);
}

inline int Receive(unsigned socket, char* bytes, int count, int flags) noexcept {
    return Calls::MustFail() ? SOCKET_ERROR : receiveBytes.orElse(::recv)(socket, bytes, count, flags);
}

inline int Select(int count, fd_set* read, fd_set* write, fd_set* except, const timeval* limit) noexcept {
    if (Calls::MustFail()) return SOCKET_ERROR;
    return selectReady.orElse(::select)(count, read, write, except, const_cast<timeval*>(limit));
}

/// The address of this end.
inline int OwnName(unsigned socket, sockaddr* address, int* size) noexcept {
    return Calls::MustFail() ? SOCKET_ERROR : ::getsockname(socket, address, size);
}

/// The address of the other end.
inline int PeerName(unsigned socket, sockaddr* address, int* size) noexcept {
    return Calls::MustFail() ? SOCKET_ERROR : ::getpeername(socket, address, size);
}

inline int SetOption(unsigned socket, int name, const void* value, int bytes) noexcept {
    if (Calls::MustFail()) return SOCKET_ERROR;
    return ::setsockopt(socket, SOL_SOCKET, name, static_cast<const char*>(value), bytes);
}

/// From now on what is sent goes out at once, also when the peer has not yet acknowledged what went before.
inline int SendAtOnce(unsigned socket) noexcept {
    constexpr DWORD kOn = 1;
    if (Calls::MustFail()) return SOCKET_ERROR;
    return ::setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, reinterpret_cast<const char*>(&kOn), sizeof kOn);
}

inline int GetOption(unsigned socket, int name, void* value, int bytes) noexcept {
    if (Calls::MustFail()) return SOCKET_ERROR;
    return ::getsockopt(socket, SOL_SOCKET, name, static_cast<char*>(value), &bytes);
}

/// What a connection that was begun has come to: 0, or the error that ended it.
inline int ErrorOf(unsigned socket) noexcept {
    int error = 0;
    return GetOption(socket, SO_ERROR, &error, sizeof error) == 0 ? error : LastError();
}

/// From now on the socket's calls return at once.
inline int SetNonBlocking(unsigned socket) noexcept {
    unsigned long isOn = 1;
    return Calls::MustFail() ? SOCKET_ERROR : ::ioctlsocket(socket, static_cast<long>(FIONBIO), &isOn);
}

/// 0, or the code of the resolver.
inline int Addresses(const char* host, const addrinfo& hints, addrinfo*& found) noexcept {
    found = nullptr;
    if (const unsigned long error = Calls::Error()) {
        Kind::SetError(error);
        return static_cast<int>(error);
    }
    const int code = getAddresses.orElse(::getaddrinfo)(host, nullptr, &hints, &found);
    if (found != nullptr) Calls::Opened();
    return code;
}

inline void FreeAddresses(addrinfo* found) noexcept {
    if (found == nullptr) return;
    Calls::Closed();
    freeAddresses.orElse(::freeaddrinfo)(found);
}

/// 0, or the code of the resolver.
inline int NameOf(const sockaddr* address, int size, char* name, DWORD room, int flags) noexcept {
    if (const unsigned long error = Calls::Error()) {
        Kind::SetError(error);
        return static_cast<int>(error);
    }
    return getName.orElse(::getnameinfo)(address, size, name, room, nullptr, 0, flags);
}

inline int HostName(char* name, int room) noexcept {
    return Calls::MustFail() ? SOCKET_ERROR : ::gethostname(name, room);
}

/// Null when nobody knows the service.
inline const servent* Service(const char* name) noexcept {
    return Calls::MustFail() ? nullptr : ::getservbyname(name, "tcp");
}

}  // namespace TarnLibA500::ossockets
