#include "net/hostaddresses.h"

#include <algorithm>
#include <cstring>

#include "diag/assert/require.h"
#include "net/socketfailure.h"
#include "tarnlib/csisocket.h"

namespace TarnLibA500 {
namespace {

constexpr const char* kUnit = "csisocket";

/// What the system found, for as long as it is needed.
class Answer {
  public:
    Answer() = default;
    ~Answer() { ossockets::FreeAddresses(first_); }
    Answer(const Answer&) = delete;
    Answer& operator=(const Answer&) = delete;

    /// Without a host there is nothing to be found.
    int ask(const SAnsiString& host, int family, int flags) {
        addrinfo hints = {};
        hints.ai_flags = flags;
        hints.ai_family = family;
        hints.ai_socktype = SOCK_STREAM;  // otherwise each address may come once for every type
        return ossockets::Addresses(host.isEmpty() ? nullptr : host.getString(), hints, first_);
    }
    const addrinfo* first() const noexcept { return first_; }

  private:
    addrinfo* first_ = nullptr;
};

bool HoldsZero(const SAnsiString& text) {
    return std::memchr(text.getString(), '\0', text.getLength()) != nullptr;
}

bool IsKnownFamily(int family) {
    return family == AF_INET || family == AF_INET6;
}

void Add(HostAddresses& addresses, const sockaddr_storage& address) {
    const auto isSame = [&](const sockaddr_storage& known) {
        return IsSameAddress(Generic(known), Generic(address));
    };
    if (std::none_of(addresses.begin(), addresses.end(), isSame)) addresses.push_back(address);
}

/// One list of the two: the first of each family comes before all others.
void AppendMixed(HostAddresses& all, const HostAddresses& v4, const HostAddresses& v6) {
    const auto headOf = [](const HostAddresses& of) { return of.begin() + (of.empty() ? 0 : 1); };
    all.insert(all.end(), v4.begin(), headOf(v4));
    all.insert(all.end(), v6.begin(), headOf(v6));
    all.insert(all.end(), headOf(v4), v4.end());
    all.insert(all.end(), headOf(v6), v6.end());
}

/// Loopback addresses only where there is nothing else, deliberately.
HostAddresses Ordered(const addrinfo* found) {
    HostAddresses v4, v6, loopback4, loopback6;
    for (; found != nullptr; found = found->ai_next) {
        sockaddr_storage address = {};
        if (!IsKnownFamily(found->ai_family)) continue;
        if (!Require(sizeof address >= found->ai_addrlen, kUnit, "addrlen >= (*pAI)->ai_addrlen")) continue;
        const bool isV4 = found->ai_family == AF_INET;
        if (!Require(!isV4 || found->ai_addrlen <= sizeof(sockaddr_in), kUnit,
                     "sizeof(intaddress) >= hostentry->h_length"))
            continue;
        std::memcpy(&address, found->ai_addr, found->ai_addrlen);
        if (CSISocket::isLoopback(Generic(address))) {
            Add(isV4 ? loopback4 : loopback6, address);
        } else {
            Add(isV4 ? v4 : v6, address);
        }
    }
    HostAddresses all;
    AppendMixed(all, v4, v6);
    if (all.empty()) {
        all = std::move(loopback4);
        all.insert(all.end(), loopback6.begin(), loopback6.end());
    }
    return all;
}

}  // namespace

int ResolveHost(const SAnsiString& host, int family, HostAddresses& addresses) {
    addresses.clear();
    Answer answer;
    int code = EAI_NONAME;
    if (HoldsZero(host)) {  // the system would look for what stands before it
        WSASetLastError(WSAHOST_NOT_FOUND);
    } else {
        code = answer.ask(WithoutBrackets(host), family, 0);
    }
    if (code == 0) {
        addresses = Ordered(answer.first());
        if (addresses.empty()) code = EAI_NONAME;
    }
    if (code != 0) {
        TraceSocketFailure(kUnit, "Resolving '%1' failed: %2 (WSA %3)",
                           host.isEmpty() ? SAnsiString("<empty>") : host, code, ossockets::LastError());
    }
    return code;
}

bool ParseAddress(const SAnsiString& text, int family, sockaddr_storage& address) {
    Answer answer;
    if (text.isEmpty() || HoldsZero(text) || answer.ask(text, family, AI_NUMERICHOST) != 0) return false;
    const addrinfo* const found = answer.first();
    if (found == nullptr || !IsKnownFamily(found->ai_family) || found->ai_addrlen > sizeof address)
        return false;
    address = {};
    std::memcpy(&address, found->ai_addr, found->ai_addrlen);
    return true;
}

SAnsiString WithoutBrackets(const SAnsiString& host) {
    const char* const text = host.getString();
    const std::uint32_t length = host.getLength();
    if (length < 2 || text[0] != '[' || text[length - 1] != ']') return host;
    return SAnsiString(text + 1, length - 2);
}

bool IsSameAddress(const sockaddr* a, const sockaddr* b) {
    if (a->sa_family != b->sa_family) return false;
    if (a->sa_family == AF_INET) {
        return reinterpret_cast<const sockaddr_in*>(a)->sin_addr.s_addr ==
               reinterpret_cast<const sockaddr_in*>(b)->sin_addr.s_addr;
    }
    const auto* const a6 = reinterpret_cast<const sockaddr_in6*>(a);
    const auto* const b6 = reinterpret_cast<const sockaddr_in6*>(b);
    return std::memcmp(&a6->sin6_addr, &b6->sin6_addr, sizeof a6->sin6_addr) == 0 &&
           a6->sin6_scope_id == b6->sin6_scope_id;
}

SAnsiString LocalHostName() {
    char name[NI_MAXHOST] = "";
    if (ossockets::HostName(name, sizeof name) == 0) return name;
    TraceSocketFailure(kUnit, "Cannot find hostname: %1", CSISocket::getLastErrorStr());
    return SAnsiString();
}

}  // namespace TarnLibA500
