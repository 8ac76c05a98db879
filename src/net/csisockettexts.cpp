// Texts of hosts and ports. Names of hosts are ASCII: a byte is a character here.
#include <algorithm>
#include <charconv>
#include <string_view>

#include "diag/assert/require.h"
#include "net/hostaddresses.h"
#include "net/socketfailure.h"
#include "strings/base/asciichar.h"
#include "tarnlib/csisocket.h"

namespace TarnLibA500 {
namespace {

constexpr const char* kUnit = "csisocket";
constexpr std::string_view kDigits = "0123456789";

std::string_view View(const SAnsiString& text) {
    return {text.getString(), text.getLength()};
}

SAnsiString Text(std::string_view view) {
    return SAnsiString(view.data(), static_cast<std::uint32_t>(view.size()));
}

/// A decimal number without signs and blanks, from "least" to "most".
bool ReadNumber(std::string_view text, unsigned least, unsigned most, unsigned& number) {
    const char* const end = text.data() + text.size();
    if (text.empty() || !IsDigit(text[0])) return false;
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    return error == std::errc() && stop == end && number >= least && number <= most;
}

bool ReadPort(std::string_view text, unsigned short& port) {
    constexpr unsigned kMostPort = 65535;
    unsigned number = 0;
    if (!ReadNumber(text, 1, kMostPort, number)) return false;
    port = static_cast<unsigned short>(number);
    return true;
}

/// "[name]" or "[name]:port".
CSISocket::_splitNamePort_RC SplitBracketed(std::string_view uri, std::string_view& name,
                                            std::string_view& port) {
    const std::size_t close = uri.rfind("]:");
    const bool hasPort = close != uri.npos;
    if (!hasPort && !Require(uri.back() == ']', kUnit, "uri.getAt(uri.getNChars() - 1) == ']'"))
        return CSISocket::splitMissingBracket;
    name = uri.substr(1, (hasPort ? close : uri.size() - 1) - 1);
    if (name.empty()) return CSISocket::splitEmptyName;
    if (!hasPort) return CSISocket::splitNoPort;
    port = uri.substr(close + 2);
    return CSISocket::splitOk;
}

CSISocket::_splitNamePort_RC SplitPlain(std::string_view text, std::string_view& name,
                                        std::string_view& port) {
    const std::size_t colon = text.find(':');
    name = text;
    if (colon == text.npos || colon != text.rfind(':')) return CSISocket::splitNoPort;
    name = text.substr(0, colon);
    if (name.empty()) return CSISocket::splitEmptyName;
    port = text.substr(colon + 1);
    return CSISocket::splitOk;
}

bool MeansThisMachine(const SAnsiString& host) {
    for (const char* name : {"localhost", "127.0.0.1", "::1"}) {
        if (host.compareNoCase(name) == 0) return true;
    }
    const SAnsiString own = LocalHostName();
    return !own.isEmpty() && host.compareNoCase(own) == 0;
}

bool HaveCommonAddress(const HostAddresses& ofA, const HostAddresses& ofB) {
    return std::find_first_of(ofA.begin(), ofA.end(), ofB.begin(), ofB.end(),
                              [](const sockaddr_storage& a, const sockaddr_storage& b) {
                                  return IsSameAddress(Generic(a), Generic(b));
                              }) != ofA.end();
}

bool AreSameAddresses(const SAnsiString& a, const SAnsiString& b) {
    sockaddr_storage ofA, ofB;
    return ParseAddress(a, AF_UNSPEC, ofA) && ParseAddress(b, AF_UNSPEC, ofB) &&
           IsSameAddress(Generic(ofA), Generic(ofB));
}

}  // namespace

bool CSISocket::isNumericAddress(const SAnsiString& text) {
    return isNumericIPv4(text) || isNumericIPv6(text);
}

bool CSISocket::isNumericIPv4(const SAnsiString& text) {
    const std::string_view view = View(text);
    return !view.empty() && IsDigit(view[0]) && view.find(':') == view.npos;
}

bool CSISocket::isNumericIPv6(const SAnsiString& text) {
    const std::string_view view = View(text);
    return view.find(':') != view.rfind(':');
}

bool CSISocket::isLoopback(const sockaddr* address) {
    constexpr unsigned char kLoopbackNet = 127;
    if (address->sa_family == AF_INET) {
        const auto* const v4 = reinterpret_cast<const sockaddr_in*>(address);
        return reinterpret_cast<const unsigned char*>(&v4->sin_addr)[0] == kLoopbackNet;
    }
    if (address->sa_family != AF_INET6) return false;
    const IN6_ADDR& v6 = reinterpret_cast<const sockaddr_in6*>(address)->sin6_addr;
    constexpr int kV4Offset = 12;  // of an IPv4 address in an IPv6 one
    return IN6_IS_ADDR_LOOPBACK(&v6) || (IN6_IS_ADDR_V4MAPPED(&v6) && v6.s6_addr[kV4Offset] == kLoopbackNet);
}

bool CSISocket::isLoopbackIPv4(const SAnsiString& text) {
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    unsigned long number = 0;
    if (!isValidIPAddrString(text, number)) return false;
    address.sin_addr.s_addr = number;
    return isLoopback(reinterpret_cast<const sockaddr*>(&address));
}

bool CSISocket::isLoopbackIPv6(const SAnsiString& text) {
    sockaddr_storage address;
    return ParseAddress(WithoutBrackets(text), AF_INET6, address) && isLoopback(Generic(address));
}

bool CSISocket::isValidIPAddrString(const SAnsiString& text) {
    unsigned long number = 0;
    return isValidIPAddrString(text, number);
}

bool CSISocket::isValidIPAddrString(const SAnsiString& text, unsigned long& v4NetworkOrder) {
    constexpr int kParts = 4;
    constexpr unsigned kMostPart = 255;
    std::string_view rest = View(text);
    unsigned long address = 0;
    for (int part = 0; part < kParts; ++part) {
        const std::size_t length = std::min(rest.find_first_not_of(kDigits), rest.size());
        unsigned number = 0;
        if (!ReadNumber(rest.substr(0, length), 0, kMostPart, number)) return false;
        // To some a number with a leading zero is octal.
        if (length > 1 && rest[0] == '0') return false;
        rest.remove_prefix(length);
        const bool isLast = part == kParts - 1;
        if (isLast ? !rest.empty() : rest.empty() || rest[0] != '.') return false;
        if (!isLast) rest.remove_prefix(1);
        address = address << 8 | number;
    }
    v4NetworkOrder = htonl(address);
    return true;
}

bool CSISocket::matchhosts(const SAnsiString& a, const SAnsiString& b, bool resolve) {
    const SAnsiString nameA = WithoutBrackets(a);
    const SAnsiString nameB = WithoutBrackets(b);
    if (nameA.isEmpty() || nameB.isEmpty()) return false;
    if (nameA.compareNoCase(nameB) == 0 || AreSameAddresses(nameA, nameB)) return true;
    if (MeansThisMachine(nameA) && MeansThisMachine(nameB)) return true;
    HostAddresses ofA, ofB;
    return resolve && ResolveHost(nameA, AF_UNSPEC, ofA) == 0 && ResolveHost(nameB, AF_UNSPEC, ofB) == 0 &&
           HaveCommonAddress(ofA, ofB);
}

SAnsiString CSISocket::appendPort(const SAnsiString& host, unsigned short port) {
    SAnsiString text;
    text << port;
    return appendPort(host, text);
}

SAnsiString CSISocket::appendPort(const SAnsiString& host, const SAnsiString& port) {
    const bool needsBrackets = isNumericIPv6(host) && host.getString()[0] != '[';
    return needsBrackets ? "[" + host + "]:" + port : host + ":" + port;
}

bool CSISocket::splitNamePort(const SAnsiString& text, SAnsiString& name, unsigned short& port) {
    return splitNamePortDetailed(text, name, port) == splitOk;
}

CSISocket::_splitNamePort_RC CSISocket::splitNamePortDetailed(const SAnsiString& text, SAnsiString& name,
                                                              unsigned short& port) {
    const SAnsiString whole = text;  // the name may be the same object
    const std::string_view uri = View(whole);
    std::string_view foundName;
    std::string_view foundPort;
    if (uri.empty()) return splitEmpty;
    const _splitNamePort_RC result =
        uri[0] == '[' ? SplitBracketed(uri, foundName, foundPort) : SplitPlain(uri, foundName, foundPort);
    if (result == splitOk && !ReadPort(foundPort, port)) return splitBadPort;
    if (result == splitOk || result == splitNoPort) name = Text(foundName);
    return result;
}

}  // namespace TarnLibA500
