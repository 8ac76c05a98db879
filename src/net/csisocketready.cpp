// Waiting with a time-out, and what ports are free.
#include <algorithm>
#include <climits>

#include "net/hostaddresses.h"
#include "net/socketfailure.h"
#include "net/socketwait.h"
#include "tarnlib/csisocket.h"

namespace TarnLibA500 {
namespace {

constexpr const char* kUnit = "csisocket";

fd_set SetOf(unsigned socket) {
    fd_set set;
    set.fd_count = 1;
    set.fd_array[0] = socket;
    return set;
}

bool IsIn(const fd_set& set, unsigned socket) {
    const SOCKET* const end = set.fd_array + set.fd_count;
    return std::find(set.fd_array, end, socket) != end;
}

bool IsPortInUse(int family, unsigned short port) {
    const ossockets::Socket socket(ossockets::Open(family, SOCK_STREAM, 0));
    if (!socket) {  // who cannot have one cannot meet anybody there
        TraceSocketFailure(kUnit, "no socket of family %1 to try port %2: %3", family, port,
                           CSISocket::getLastErrorStr());
        return false;
    }
    sockaddr_storage storage = {};
    sockaddr* const address = Generic(storage);
    CSISocket::setFamily(address, family);
    CSISocket::setAny(address);
    CSISocket::setPort(address, port);
    return ossockets::Bind(socket.get(), address, CSISocket::getSize(address)) != 0;
}

}  // namespace

int WaitForSocket(Direction direction, unsigned socket, unsigned seconds, unsigned beside) {
    const timeval limit = {static_cast<long>(std::min<unsigned>(seconds, LONG_MAX)), 0};
    const bool hasBeside = beside != ossockets::kNone;
    const bool isToRead = direction == Direction::Read;
    for (;;) {
        fd_set own = SetOf(socket), other = SetOf(beside);
        if (isToRead && hasBeside) own.fd_array[own.fd_count++] = beside;
        fd_set* const read = isToRead ? &own : hasBeside ? &other : nullptr;
        const int ready = ossockets::Select(0, read, isToRead ? nullptr : &own, nullptr, &limit);
        if (ready == 0) return 0;
        if (ready > 0)
            return (IsIn(own, socket) ? kReady : 0) | (hasBeside && IsIn(*read, beside) ? kBeside : 0);
        // From the beginning, with the whole time.
        if (!IsToBeAskedAgain(ossockets::LastError())) break;
    }
    TraceSocketFailure(kUnit, "CSISocket: waiting for a socket failed: %1", CSISocket::getLastErrorStr());
    return -1;
}

int CSISocket::isReadable(unsigned s, unsigned seconds) {
    return WaitForSocket(Direction::Read, s, seconds);
}

int CSISocket::isWriteable(unsigned s, unsigned seconds, unsigned /*ignored*/) {
    return WaitForSocket(Direction::Write, s, seconds);
}

int CSISocket::isWriteableMS(unsigned s, unsigned milliseconds) {
    constexpr unsigned kMillisecondsPerSecond = 1000;
    return isWriteable(s, milliseconds / kMillisecondsPerSecond);
}

int CSISocket::setTimeout(unsigned s, int milliseconds) {
    if (milliseconds < 1) return 0;
    // The system reads the first of the two, as milliseconds.
    const DWORD value[2] = {static_cast<DWORD>(milliseconds), 0};
    const int result = ossockets::SetOption(s, SO_RCVTIMEO, value, sizeof value);
    if (result != 0) {
        TraceSocketFailure(kUnit, "CSISocket::setTimeout: %1 ms failed: %2", milliseconds, getLastErrorStr());
    }
    return result;
}

bool CSISocket::is_port_in_use(bool both, const SAnsiString& service, int port) {
    constexpr int kMostPort = 65535;
    if (!service.isEmpty()) port = getportbyname(service, port);
    if (port < 1) return false;
    if (port > kMostPort) {
        TARN_TRACE_AT(levels::kFailure, kUnit, "CSISocket::is_port_in_use: there is no port %1", port);
        return true;  // nobody can have it
    }
    const auto number = static_cast<unsigned short>(port);
    return IsPortInUse(kIPv4, number) || (both && IsPortInUse(kIPv6, number));
}

bool CSISocket::is_port_in_use(const SAnsiString& service, int port) {
    return is_port_in_use(true, service, port);
}

}  // namespace TarnLibA500
