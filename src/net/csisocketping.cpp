// All addresses of many servers at once.
#include <algorithm>
#include <utility>
#include <vector>

#include "diag/assert/require.h"
#include "net/hostaddresses.h"
#include "net/socketfailure.h"
#include "seam/osclock.h"
#include "system/systemtext.h"
#include "tarnlib/csisocket.h"

namespace TarnLibA500 {
namespace {

constexpr const char* kUnit = "csisocket";

/// A connection that is on its way.
struct Pending {
    ossockets::Socket socket;
    CSISocket::ServerToPing* server;
    CSISocket::Address address;
};

void TraceNoAnswer(const CSISocket::ServerToPing& server, const CSISocket::Address& address, int error) {
    TraceSocketFailure(kUnit, "CSISocket::ping - %1 at %2 does not answer: WSA%3", server.getAnsiHost(),
                       address.toString(), error);
}

/// Of an address that is not connected at once.
bool IsOnItsWay(int error) {
    return error == WSAEWOULDBLOCK || error == WSAEINPROGRESS;
}

class Round {
  public:
    /// Begins to connect to an address of a server.
    void start(CSISocket::ServerToPing& server, const CSISocket::Address& address);
    /// Waits until every server has answered or cannot any more, or the time is over.
    void finish(unsigned timeoutSeconds);

  private:
    void answered(CSISocket::ServerToPing& server, const CSISocket::Address& address);
    bool look(long long microseconds);

    std::vector<Pending> pending_;
    unsigned tried_ = 0;
};

ossockets::Socket NewSocket(const CSISocket::ServerToPing& server, int family) {
    ossockets::Socket socket(ossockets::Open(family, SOCK_STREAM, 0));
    if (!socket) {
        TraceSocketFailure(kUnit, "CSISocket::ping - Couldn't create socket for hostname %1 and family %d",
                           server.getAnsiHost(), family);
    } else if (ossockets::SetNonBlocking(socket.get()) != 0) {
        TraceSocketFailure(kUnit, "CSISocket::ping - Couldn't init address for hostname %1 and family %d",
                           server.getAnsiHost(), family);
        socket.close();
    }
    return socket;
}

/// 0, or the error of a connection that was begun.
int Begin(unsigned socket, const CSISocket::Address& address) {
    const sockaddr* const to = address.getAddress();
    for (;;) {
        if (ossockets::Connect(socket, to, CSISocket::getSize(to)) == 0) return 0;
        if (ossockets::LastError() != WSAEINTR) return ossockets::LastError();
    }
}

void Round::answered(CSISocket::ServerToPing& server, const CSISocket::Address& address) {
    server.setPingedAddress(address);
    std::erase_if(pending_, [&](const Pending& entry) { return entry.server == &server; });
}

void Round::start(CSISocket::ServerToPing& server, const CSISocket::Address& address) {
    if (server.hasPingedAddress() || address.getFamily() == 0) return;
    if (!Require(tried_ < FD_SETSIZE, kUnit, "too many file descriptors")) return;
    ++tried_;
    ossockets::Socket socket = NewSocket(server, address.getFamily());
    if (!socket) return;
    const int error = Begin(socket.get(), address);
    if (error == 0) {
        answered(server, address);
    } else if (IsOnItsWay(error)) {
        pending_.push_back({std::move(socket), &server, address});
    } else {
        TraceNoAnswer(server, address, error);
    }
}

/// One look at all of them; false when the system does not tell.
bool Round::look(long long microseconds) {
    fd_set connected;
    connected.fd_count = 0;
    for (const Pending& entry : pending_) connected.fd_array[connected.fd_count++] = entry.socket.get();
    fd_set refused = connected;
    const timeval limit = {0, static_cast<long>(microseconds)};
    if (ossockets::Select(0, nullptr, &connected, &refused, &limit) < 0)
        return IsToBeAskedAgain(ossockets::LastError());
    const auto isIn = [](const fd_set& set, const Pending& entry) {
        return std::find(set.fd_array, set.fd_array + set.fd_count, entry.socket.get()) !=
               set.fd_array + set.fd_count;
    };
    // By number: whoever has answered takes the other addresses of its server along.
    std::vector<std::pair<CSISocket::ServerToPing*, CSISocket::Address>> answers;
    for (const Pending& entry : pending_) {
        if (isIn(connected, entry)) answers.emplace_back(entry.server, entry.address);
    }
    std::erase_if(pending_, [&](const Pending& entry) {
        if (!isIn(refused, entry)) return false;
        TraceNoAnswer(*entry.server, entry.address, ossockets::ErrorOf(entry.socket.get()));
        return true;
    });
    for (const auto& [server, address] : answers) {
        if (!server->hasPingedAddress()) answered(*server, address);
    }
    return true;
}

void Round::finish(unsigned timeoutSeconds) {
    constexpr unsigned long long kMicroseconds = 1'000'000;
    constexpr unsigned long long kSlice = 100'000;
    const unsigned long long budget = timeoutSeconds * kMicroseconds;
    const std::int64_t start = osclock::Counter();
    while (!pending_.empty()) {
        const unsigned long long passed = osclock::MicrosecondsSince(start);
        if (passed >= budget) break;
        if (!look(static_cast<long long>(std::min(kSlice, budget - passed)))) {
            TraceSocketFailure(kUnit, "CSISocket::ping - waiting failed: %1", CSISocket::getLastErrorStr());
            break;
        }
    }
    for (const Pending& entry : pending_) {
        TARN_TRACE_AT(levels::kFailure, kUnit, "CSISocket::ping - %1 at %2 did not answer in %3 s",
                      entry.server->getAnsiHost(), entry.address.toString(), timeoutSeconds);
    }
}

/// The addresses of a server, from its name if it has none yet.
void Resolve(CSISocket::ServerToPing& server) {
    if (server.getAddresses().GetSize() != 0) return;
    HostAddresses found;
    if (ResolveHost(server.getAnsiHost(), AF_UNSPEC, found) != 0) {
        TraceSocketFailure(kUnit, "CSISocket::ping - Couldn't resolve hostname for %1", server.getAnsiHost());
        return;
    }
    SIArray<CSISocket::Address> addresses;
    for (sockaddr_storage& address : found) {
        CSISocket::setPort(Generic(address), server.getPort());
        addresses.Add(CSISocket::Address(Generic(address)));
    }
    server.setAddresses(addresses);
}

const CSISocket::Address& FirstOf(const SIArray<CSISocket::Address>& addresses) {
    static const CSISocket::Address none;
    return addresses.GetSize() != 0 ? addresses[0] : none;
}

SAnsiString TextOf(const CSISocket::Address& address) {
    return address.getFamily() != 0 ? address.toString() : SAnsiString();
}

}  // namespace

CSISocket::ServerToPing::ServerToPing(const SAnsiString& host, unsigned short port)
    : host_(host), port_(port) {}

CSISocket::ServerToPing::ServerToPing(const Address& address)
    : host_(TextOf(address)), port_(address.getPort()) {
    addresses_.Add(address);
}

CSISocket::ServerToPing::ServerToPing(const SIArray<Address>& addresses)
    : host_(TextOf(FirstOf(addresses))), port_(FirstOf(addresses).getPort()), addresses_(addresses) {}

SWCharString CSISocket::ServerToPing::getHost() const {
    return ToSystem(host_);
}

void CSISocket::ServerToPing::setAddresses(const SIArray<Address>& addresses) {
    addresses_ = addresses;
}

bool CSISocket::ping(std::list<ServerToPing>& servers, unsigned timeoutSeconds) {
    Round round;
    for (ServerToPing& server : servers) {
        Resolve(server);
        server.setPingedAddress(Address());
    }
    for (ServerToPing& server : servers) {
        for (const Address& address : server.getAddresses()) round.start(server, address);
    }
    round.finish(timeoutSeconds);
    return std::any_of(servers.begin(), servers.end(),
                       [](const ServerToPing& server) { return server.hasPingedAddress(); });
}

}  // namespace TarnLibA500
