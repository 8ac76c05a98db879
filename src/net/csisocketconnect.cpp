// Connecting: one address, all addresses of a host, again and again.
#include "net/hostaddresses.h"
#include "net/socketfailure.h"
#include "tarnlib/csiprocess.h"
#include "tarnlib/csisocket.h"

namespace TarnLibA500 {
namespace {

constexpr const char* kUnit = "csisocket";

/// What one attempt came to.
enum class Attempt { Connected, Retry, Failed };

/// 10053: some systems say so of a socket whose connection was refused before.
bool MayBeTriedAgain(int error) {
    return error == WSAEINTR || error == WSAECONNREFUSED || error == WSAECONNABORTED;
}

Attempt Try(unsigned s, const sockaddr* address, int length, unsigned timeoutSeconds) {
    if (ossockets::Connect(s, address, length) == 0) return Attempt::Connected;
    const int error = ossockets::LastError();
    if (MayBeTriedAgain(error)) return Attempt::Retry;
    if (error == WSAEWOULDBLOCK || error == WSAEINPROGRESS) {
        return CSISocket::isWriteable(s, timeoutSeconds) == 1 ? Attempt::Connected : Attempt::Retry;
    }
    TraceSocketFailure(kUnit, "CSISocket::connectNonBlocking failing: %s", CSISocket::getLastErrorStr());
    return Attempt::Failed;
}

/// A socket that is connected to one address; none otherwise, with the error in the last socket error.
ossockets::Socket Connected(const SAnsiString& host, const sockaddr_storage& address, int& family) {
    const auto* const generic = Generic(address);
    ossockets::Socket socket(ossockets::Open(CSISocket::getFamily(generic), SOCK_STREAM, 0));
    if (socket) family = CSISocket::getFamily(generic);
    if (socket && ossockets::Connect(socket.get(), generic, CSISocket::getSize(generic)) == 0) return socket;
    const KeepSocketError keep;
    const SAnsiString reason = CSISocket::getLastErrorStr();
    TraceSocketFailure(kUnit, "CSISocket::connectMulti: %1 at %2 failed: %3", host,
                       CSISocket::getipstring(generic), reason);
    return ossockets::Socket();
}

}  // namespace

int CSISocket::connectEx(unsigned s, const SAnsiString& host, unsigned short port) {
    return connectEx(s, host, port, kIPv4);
}

int CSISocket::connectEx(unsigned s, const SAnsiString& host, unsigned short port, int family) {
    HostAddresses addresses;
    const int code = ResolveHost(host, family, addresses);
    if (code != 0) {
        TraceSocketFailure(kUnit, "CSISocket::connectEx: Cannot gethostbyname for %1", host);
        return code;
    }
    sockaddr* const address = Generic(addresses[0]);
    setPort(address, port);
    return connect(s, address, getSize(address));
}

int CSISocket::connectMulti(const SAnsiString& host, unsigned short port, unsigned& s) {
    int family = 0;
    return connectMulti(host, port, s, family);
}

int CSISocket::connectMulti(const SAnsiString& host, unsigned short port, unsigned& s, int& family) {
    s = kInvalid;
    HostAddresses addresses;
    int error = ResolveHost(host, AF_UNSPEC, addresses);
    if (error != 0) {
        TraceSocketFailure(kUnit, "CSISocket::connectMulti: resolving hostname %1 port %2 failed: %3", host,
                           port, getErrorStr(error));
        return error;
    }
    for (sockaddr_storage& address : addresses) {
        setPort(Generic(address), port);
        ossockets::Socket socket = Connected(host, address, family);
        if (socket) {
            s = socket.release();
            return 0;
        }
        error = ossockets::LastError();
    }
    return error;
}

bool CSISocket::connectNonBlocking(unsigned s, const sockaddr* address, int length, unsigned timeoutSeconds,
                                   unsigned short retries) {
    // More than once: a limit of n allows n attempts beside the first.
    for (unsigned count = 0; count <= retries || retries == kForever;) {
        const Attempt attempt = Try(s, address, length, timeoutSeconds);
        if (attempt == Attempt::Connected) return true;
        // The same text for every cause, and a second's pause after the last attempt, too, deliberately.
        TraceSocketFailure(
            kUnit, "CSISocket::connectNonBlocking() connection refused '%s' and doing retry number %d",
            getLastErrorStr(), count);
        CSIProcess::SecSleep(1);
        if (attempt == Attempt::Failed) return false;
        ++count;
    }
    return false;
}

}  // namespace TarnLibA500
