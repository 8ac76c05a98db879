// Start-up, the system's calls, fields of addresses, texts of errors.
#include "tarnlib/csisocket.h"

#include <cstring>

#include "net/hostaddresses.h"
#include "net/ossockets.h"
#include "net/socketfailure.h"
#include "tarnlib/sassert.h"

namespace TarnLibA500 {
namespace {

constexpr const char* kUnit = "csisocket";

template <class Result>
Result Traced(const char* call, Result result, Result failure) {
    if (result != failure) return result;
    const KeepSocketError keep;
    const int error = ossockets::LastError();
    TARN_TRACE_AT(IsToBeAskedAgain(error) ? levels::kDetail : levels::kFailure, kUnit,
                  "CSISocket::%1 failed: WSA%2", call, error);
    return result;
}

int Traced(const char* call, int result) {
    return Traced(call, result, SOCKET_ERROR);
}

bool StartVersion(WORD version, const char* complaint) {
    const int error = ossockets::Start(version);
    if (error == 0) return true;
    TARN_TRACE_AT(levels::kFailure, kUnit, complaint);
    WSASetLastError(error);
    return false;
}

sockaddr_in* V4(sockaddr* address) {
    return reinterpret_cast<sockaddr_in*>(address);
}

sockaddr_in6* V6(sockaddr* address) {
    return reinterpret_cast<sockaddr_in6*>(address);
}

}  // namespace

bool CSISocket::initialize() {
    constexpr WORD kVersion2 = 2;
    constexpr WORD kVersion11 = 257;
    return StartVersion(kVersion2, "Couldn't initialize winsocks using Version 2") ||
           StartVersion(kVersion11, "Couldn't initialize winsocks using Version 1.1");
}

void CSISocket::uninitialize() {
    Traced("uninitialize", ossockets::Stop());
}

unsigned CSISocket::socket(int family, int type, int protocol) {
    return Traced("socket", ossockets::Open(family, type, protocol), kInvalid);
}

int CSISocket::bind(unsigned s, const sockaddr* address, int length) {
    return Traced("bind", ossockets::Bind(s, address, length));
}

int CSISocket::listen(unsigned s, int backlog) {
    return Traced("listen", ossockets::Listen(s, backlog));
}

unsigned CSISocket::accept(unsigned s, sockaddr* address, int* length) {
    return Traced("accept", ossockets::Accept(s, address, length), kInvalid);
}

int CSISocket::connect(unsigned s, const sockaddr* address, int length) {
    return Traced("connect", ossockets::Connect(s, address, length));
}

int CSISocket::close(unsigned s) {
    return Traced("close", ossockets::Close(s));
}

int CSISocket::shutdown(unsigned s, int how) {
    return Traced("shutdown", ossockets::Shutdown(s, how));
}

int CSISocket::send(unsigned s, const char* bytes, int count, int flags) {
    return Traced("send", ossockets::Send(s, bytes, count, flags));
}

int CSISocket::recv(unsigned s, char* bytes, int count, int flags) {
    return Traced("recv", ossockets::Receive(s, bytes, count, flags));
}

int CSISocket::select(int count, fd_set* read, fd_set* write, fd_set* except, const timeval* limit) {
    return Traced("select", ossockets::Select(count, read, write, except, limit));
}

int CSISocket::getsockname(unsigned s, sockaddr* address, int* length) {
    return Traced("getsockname", ossockets::OwnName(s, address, length));
}

int CSISocket::getLastError() {
    return ossockets::LastError();
}

int CSISocket::getFamily(const sockaddr* address) {
    return address->sa_family;
}

void CSISocket::setFamily(sockaddr* address, int family) {
    address->sa_family = static_cast<unsigned short>(family);
}

unsigned short CSISocket::getPort(const sockaddr* address) {
    switch (address->sa_family) {
        case AF_INET:
            return ntohs(reinterpret_cast<const sockaddr_in*>(address)->sin_port);
        case AF_INET6:
            return ntohs(reinterpret_cast<const sockaddr_in6*>(address)->sin6_port);
        default:
            return 0;
    }
}

void CSISocket::setPort(sockaddr* address, unsigned short port) {
    if (address->sa_family == AF_INET) V4(address)->sin_port = htons(port);
    if (address->sa_family == AF_INET6) V6(address)->sin6_port = htons(port);
}

void CSISocket::setAny(sockaddr* address) {
    if (address->sa_family == AF_INET) V4(address)->sin_addr.s_addr = htonl(INADDR_ANY);
    if (address->sa_family == AF_INET6) V6(address)->sin6_addr = IN6_ADDR{};
}

int CSISocket::getSize(const sockaddr* address) {
    switch (address->sa_family) {
        case AF_INET:
            return sizeof(sockaddr_in);
        case AF_INET6:
            return sizeof(sockaddr_in6);
        default: {
            const int family = address->sa_family;
            SAssert(kUnit, __LINE__, STraceHelper("invalid family %1 passed in", family).getString());
            return 0;
        }
    }
}

SAnsiString CSISocket::getLastErrorStr() {
    SAnsiString text("WSA");
    return text << getLastError();
}

SAnsiString CSISocket::getErrorStr(int code) {
    switch (code) {
        case EAI_MEMORY:
            return "error number EAI_MEMORY";
        case EAI_BADFLAGS:
            return "error number EAI_BADFLAGS";
        case EAI_SOCKTYPE:
            return "error number EAI_SOCKTYPE";
        case EAI_FAMILY:
            return "error number EAI_FAMILY";
        case EAI_SERVICE:
            return "error number EAI_SERVICE";
        case EAI_NONAME:
            return "error number EAI_NONAME";
        case EAI_AGAIN:
            return "error number EAI_AGAIN";
        case EAI_FAIL:
            return "error number EAI_FAIL";
        default:
            return "unknown error!";
    }
}

bool CSISocket::haveStack(int family) {
    return family == kIPv4;
}

CSISocket::Address::Address() noexcept : bytes_() {}

CSISocket::Address::Address(const sockaddr* address) : bytes_() {
    if (address == nullptr) return;
    static_assert(sizeof bytes_ == sizeof(sockaddr_in6));
    std::memcpy(bytes_, address, static_cast<std::size_t>(getSize(address)));
}

int CSISocket::Address::getFamily() const noexcept {
    return CSISocket::getFamily(getAddress());
}

unsigned short CSISocket::Address::getPort() const noexcept {
    return CSISocket::getPort(getAddress());
}

const sockaddr* CSISocket::Address::getAddress() const noexcept {
    return reinterpret_cast<const sockaddr*>(bytes_);
}

SAnsiString CSISocket::Address::toString() const {
    return getipstring(getAddress());
}

}  // namespace TarnLibA500
