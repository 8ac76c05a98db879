// What names and addresses mean: the questions to the resolver.
#include <cstring>
#include <new>

#include "diag/assert/require.h"
#include "net/hostaddresses.h"
#include "net/socketfailure.h"
#include "tarnlib/csisocket.h"
#include "tarnlib/simplebuffer.h"

namespace TarnLibA500 {
namespace {

constexpr const char* kUnit = "csisocket";

// A slot of an address block.
static_assert(sizeof(sockaddr_storage) == 128);

unsigned long NumberOf(const sockaddr_storage& address) {
    return reinterpret_cast<const sockaddr_in&>(address).sin_addr.s_addr;
}

sockaddr_in FromNumber(unsigned long v4NetworkOrder) {
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = v4NetworkOrder;
    return address;
}

/// The name that the system has for an address; 0 or the code of the resolver.
int NameOf(const sockaddr* address, SAnsiString& name) {
    char text[NI_MAXHOST] = "";
    const int code = ossockets::NameOf(address, CSISocket::getSize(address), text, sizeof text, NI_NAMEREQD);
    if (code == 0) name = text;
    return code;
}

/// The full name that goes with a name; false, and traced, when the resolver does not know one.
bool FullName(const SAnsiString& host, SAnsiString& name) {
    addrinfo hints = {};
    hints.ai_flags = AI_CANONNAME;
    hints.ai_socktype = SOCK_STREAM;
    addrinfo* found = nullptr;
    const int code = ossockets::Addresses(host.getString(), hints, found);
    const bool isKnown = code == 0 && found != nullptr && found->ai_canonname != nullptr;
    if (isKnown) name = found->ai_canonname;
    ossockets::FreeAddresses(found);
    if (!isKnown) TraceSocketFailure(kUnit, "no canonical name for '%1': %2", host, code);
    return isKnown;
}

/// The name of an address that is given as text.
bool NameOfText(const SAnsiString& text, SAnsiString& name) {
    HostAddresses addresses;
    if (ResolveHost(text, AF_UNSPEC, addresses) != 0) return false;
    const int code = NameOf(Generic(addresses[0]), name);
    if (code != 0) TraceSocketFailure(kUnit, "no name for the address %1: %2", text, code);
    return code == 0;
}

void AddNamesOfAddresses(const SAnsiString& host, SISet<SAnsiString>& names) {
    HostAddresses addresses;
    ResolveHost(host, AF_UNSPEC, addresses);
    for (const sockaddr_storage& address : addresses) {
        SAnsiString name;
        if (NameOf(Generic(address), name) == 0) names.Insert(name);
    }
}

}  // namespace

int CSISocket::gethostbyname(const SAnsiString& host, SAnsiString& text) {
    HostAddresses addresses;
    const int code = ResolveHost(host, AF_UNSPEC, addresses);
    if (code == 0) text = getipstring(Generic(addresses[0]));
    return code;
}

int CSISocket::gethostbyname(const SAnsiString& host, unsigned long& v4NetworkOrder) {
    HostAddresses addresses;
    const int code = ResolveHost(host, AF_INET, addresses);
    if (code == 0) v4NetworkOrder = NumberOf(addresses[0]);
    return code;
}

int CSISocket::gethostbyname(const SAnsiString& host, SIArray<unsigned long>& v4NetworkOrder) {
    HostAddresses addresses;
    const int code = ResolveHost(host, AF_INET, addresses);
    v4NetworkOrder.RemoveAll();
    for (const sockaddr_storage& address : addresses) v4NetworkOrder.Add(NumberOf(address));
    return code;
}

int CSISocket::gethostbyname(const SAnsiString& host, unsigned short port, sockaddr_storage& address) {
    HostAddresses addresses;
    const int code = ResolveHost(host, AF_UNSPEC, addresses);
    if (code != 0) return code;
    address = addresses[0];
    setPort(Generic(address), port);
    return code;
}

int CSISocket::gethostsbyname(const SAnsiString& host, sockaddr_storage*& block, unsigned& count) {
    block = nullptr;
    count = 0;
    try {
        HostAddresses addresses;
        if (const int code = ResolveHost(host, AF_UNSPEC, addresses); code != 0) return code;
        const std::size_t bytes = addresses.size() * sizeof addresses[0];
        unsigned char* const memory = SSimpleBuffer::alloc(static_cast<std::uint32_t>(bytes));
        std::memcpy(memory, addresses.data(), bytes);
        block = reinterpret_cast<sockaddr_storage*>(memory);
        count = static_cast<unsigned>(addresses.size());
        return 0;
    } catch (const std::bad_alloc&) {
        TraceText(levels::kFailure, kUnit, "out of memory for the addresses of a host");
        return EAI_MEMORY;
    }
}

void CSISocket::freehosts(sockaddr_storage* block) {
    SSimpleBuffer::dealloc(block);
}

bool CSISocket::getipaddresses(const SAnsiString& host, SIArray<SAnsiString>& texts) {
    return getipaddresses(host, AF_UNSPEC, texts);
}

bool CSISocket::getipaddresses(const SAnsiString& host, int family, SIArray<SAnsiString>& texts) {
    HostAddresses addresses;
    const int code = ResolveHost(host, family, addresses);
    texts.RemoveAll();
    for (const sockaddr_storage& address : addresses) texts.Add(getipstring(Generic(address)));
    return code == 0;
}

bool CSISocket::gethostbyaddr(unsigned long v4NetworkOrder, SAnsiString& name) {
    const sockaddr_in address = FromNumber(v4NetworkOrder);
    const auto* const generic = reinterpret_cast<const sockaddr*>(&address);
    const int code = NameOf(generic, name);
    if (code != 0) {
        TraceSocketFailure(kUnit, "CSISocket::gethostbyaddr: Cannot gethostbyaddr for %1, error code %2",
                           getipstring(generic), code);
    }
    return code == 0;
}

bool CSISocket::getcanonicalname(const SAnsiString& host, SAnsiString& name) {
    SAnsiString known = host.isEmpty() ? LocalHostName() : WithoutBrackets(host);
    if (known.isEmpty()) return false;
    if (isNumericIPv6(known) || isValidIPAddrString(known)) {
        if (!NameOfText(SAnsiString(known), known)) return false;
    }
    return FullName(known, name);
}

bool CSISocket::gethostnames(SISet<SAnsiString>& names) {
    names.RemoveAll();
    const SAnsiString own = LocalHostName();
    return !own.isEmpty() && gethostnames(own, names);
}

bool CSISocket::gethostnames(const SAnsiString& host, SISet<SAnsiString>& names) {
    names.RemoveAll();
    SAnsiString full;
    if (getcanonicalname(host, full)) names.Insert(full);
    AddNamesOfAddresses(host, names);
    if (!names.IsEmpty() && !host.isEmpty() && !isNumericAddress(host)) names.Insert(host);
    return !names.IsEmpty();
}

bool CSISocket::getnthipnumeric(int n, unsigned long& v4NetworkOrder) {
    const SAnsiString own = LocalHostName();
    SIArray<unsigned long> addresses;
    if (own.isEmpty() || gethostbyname(own, addresses) != 0) return false;
    if (n < 0 || static_cast<std::uint32_t>(n) >= addresses.GetSize()) {
        TARN_TRACE_AT(levels::kFailure, kUnit, "this machine has no IPv4 address number %1, but %2", n,
                      addresses.GetSize());
        return false;
    }
    v4NetworkOrder = addresses[static_cast<std::uint32_t>(n)];
    return true;
}

bool CSISocket::getnthipstring(int n, SAnsiString& text) {
    unsigned long number = 0;
    if (!getnthipnumeric(n, number)) return false;
    const sockaddr_in address = FromNumber(number);
    text = getipstring(reinterpret_cast<const sockaddr*>(&address));
    return true;
}

SAnsiString CSISocket::getipstring(const sockaddr* address) {
    char text[NI_MAXHOST] = "";
    const int size = getSize(address);
    if (size == 0) return SAnsiString();
    const int code = ossockets::NameOf(address, size, text, sizeof text, NI_NUMERICHOST);
    if (code != 0) {
        TraceSocketFailure(kUnit, "cannot write an address of family %1: %2", getFamily(address), code);
        return SAnsiString();
    }
    return text;
}

int CSISocket::getportbyname(const SAnsiString& service, int dflt) {
    const servent* const known = ossockets::Service(service.getString());
    if (known != nullptr) return ntohs(static_cast<unsigned short>(known->s_port));
    TARN_TRACE_AT(levels::kDetail, kUnit, "no service '%1'; its port is taken as %2", service, dflt);
    return dflt;
}

}  // namespace TarnLibA500
