#include "tarnlib/csitcpsocket.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>

#include "net/hostaddresses.h"
#include "net/socketfailure.h"
#include "seam/osclock.h"
#include "strings/base/wipe.h"
#include "tarnlib/csiprocess.h"
#include "tarnlib/csisocket.h"
#include "tarnlib/simplebuffer.h"

namespace TarnLibA500 {
namespace {

constexpr const char* kUnit = "csitcpsocket";
constexpr unsigned kBufferBytes = 8192;
/// One call to the system; it blocks until all of it is taken, at most for the time-out.
constexpr unsigned kSendBytes = 64 * 1024;

/// The bounds of reading off what a peer still sends to a connection that is given up.
struct Drain {
    static constexpr int kSilenceMilliseconds = 2000;
    static constexpr unsigned long long kMilliseconds = 10'000;
    static constexpr unsigned kBytes = 1024 * 1024;
    static constexpr unsigned kBlock = 256;
};

unsigned Milliseconds(unsigned seconds) {
    constexpr unsigned kPerSecond = 1000;
    return std::min<unsigned>(seconds, MAXLONG / kPerSecond) * kPerSecond;
}

int Count(unsigned count) {
    return static_cast<int>(std::min<unsigned>(count, 0x7FFFFFFF));
}

}  // namespace

CSITcpSocket::CSITcpSocket(const SAnsiString& host, unsigned short port)
    : host_(host), port_(port), socket_(CSISocket::kInvalid) {}

CSITcpSocket::CSITcpSocket(const CSITcpSocket& other) : CSITcpSocket(other.host_, other.port_) {}

CSITcpSocket& CSITcpSocket::operator=(const CSITcpSocket& other) {
    if (this == &other) return *this;
    AbortSocket();
    host_ = other.host_;
    port_ = other.port_;
    return *this;
}

CSITcpSocket::~CSITcpSocket() {
    try {
        AbortSocket();
    } catch (...) {  // no memory for a trace
        closeSocket();
    }
}

bool CSITcpSocket::IsOpen() const noexcept {
    return socket_ != CSISocket::kInvalid;
}

int CSITcpSocket::send(const char* bytes, unsigned count, int flags) {
    return CSISocket::send(socket_, bytes, Count(count), flags);
}

int CSITcpSocket::recv(char* bytes, unsigned count, int flags) {
    return CSISocket::recv(socket_, bytes, Count(count), flags);
}

int CSITcpSocket::shutdown(unsigned s, int how) {
    return CSISocket::shutdown(s, how);
}

bool CSITcpSocket::hasPending() {
    return false;
}

void CSITcpSocket::closing() noexcept {}

void CSITcpSocket::takeConnection(CSITcpSocket& other) {
    if (this == &other) return;
    AbortSocket();
    socket_ = std::exchange(other.socket_, CSISocket::kInvalid);
    buffer_ = std::exchange(other.buffer_, nullptr);
    unread_ = std::exchange(other.unread_, 0);
    readPosition_ = std::exchange(other.readPosition_, 0);
    sendSeconds_ = std::exchange(other.sendSeconds_, 0);
}

/// The handle and the bytes that came through it, which may be secrets.
void CSITcpSocket::closeSocket() noexcept {
    closing();  // NOLINT(clang-analyzer-optin.cplusplus.VirtualCall)
    const ossockets::Socket closed(std::exchange(socket_, CSISocket::kInvalid));
    if (buffer_ != nullptr) Wipe(buffer_, kBufferBytes);
    SSimpleBuffer::dealloc(std::exchange(buffer_, nullptr));
    unread_ = 0;
    readPosition_ = 0;
    sendSeconds_ = 0;
    receiveMilliseconds_ = 0;
}

bool CSITcpSocket::TcpOpen() {
    closeSocket();
    HostAddresses addresses;
    try {
        buffer_ = reinterpret_cast<char*>(SSimpleBuffer::alloc(kBufferBytes));
    } catch (const std::bad_alloc&) {
        SAssert(kUnit, __LINE__, "out of memory");
        return false;
    }
    ResolveHost(host_, AF_UNSPEC, addresses);
    for (sockaddr_storage& storage : addresses) {
        sockaddr* const address = Generic(storage);
        CSISocket::setPort(address, port_);
        ossockets::Socket socket(CSISocket::socket(CSISocket::getFamily(address), SOCK_STREAM, 0));
        if (!socket) break;  // unlike CSISocket::connectMulti, which tries the next address
        if (CSISocket::connect(socket.get(), address, CSISocket::getSize(address)) != 0) continue;
        socket_ = socket.release();
        return true;
    }
    TraceSocketFailure(kUnit, "cannot connect to %1: %2", CSISocket::appendPort(host_, port_),
                       CSISocket::getLastErrorStr());
    closeSocket();
    return false;
}

bool CSITcpSocket::TcpOpen(const SAnsiString& service) {
    const int port = CSISocket::getportbyname(service, 0);
    if (port == 0) {
        TARN_TRACE_AT(levels::kFailure, kUnit, "no service '%1' to connect to at %2", service, host_);
        return false;
    }
    port_ = static_cast<unsigned short>(port);
    return TcpOpen();
}

/// Traces why the connection is given up, and gives it up. False.
bool CSITcpSocket::aborted(const char* what) {
    TraceSocketFailure(kUnit, "%1:%2: %3 (%4)", host_, port_, what, CSISocket::getLastErrorStr());
    AbortSocket();
    return false;
}

bool CSITcpSocket::Send(const void* bytes, unsigned length, unsigned seconds) {
    if (!IsOpen()) {
        TARN_TRACE_AT(levels::kFailure, kUnit, "%1:%2: no connection to send to", host_, port_);
        return false;
    }
    // The socket blocks: what is sendable may be less than is sent.
    if (length != 0 && seconds != sendSeconds_ && seconds != 0) {
        const DWORD limit = Milliseconds(seconds);
        if (ossockets::SetOption(socket_, SO_SNDTIMEO, &limit, sizeof limit) != 0)
            return aborted("cannot set the time-out of sending");
        sendSeconds_ = seconds;
    }
    for (const char* at = static_cast<const char*>(bytes); length != 0;) {
        if (CSISocket::isWriteable(socket_, seconds) != 1) return aborted("cannot send in time");
        const int sent = send(at, std::min(length, kSendBytes), 0);
        if (sent < 0 && CSISocket::getLastError() == WSAEINTR) continue;
        if (sent < 0) return aborted("sending failed");
        at += sent;
        length -= static_cast<unsigned>(sent);
    }
    return true;
}

bool CSITcpSocket::SendString(const SAnsiString& text, unsigned seconds) {
    return Send(text.getString(), text.getLength(), seconds);
}

/// Fills the buffer from what is there to be received. False, and still open, when nothing came in time.
bool CSITcpSocket::receive() {
    int received = 0;
    do {
        received = recv(buffer_, kBufferBytes, 0);
    } while (received < 0 && CSISocket::getLastError() == WSAEINTR);
    if (received < 0 && CSISocket::getLastError() == WSAETIMEDOUT) return false;
    if (received == 0) WSASetLastError(0);  // an older error has nothing to do with it
    if (received < 1)
        return aborted(received == 0 ? "the peer has closed the connection" : "receiving failed");
    readPosition_ = 0;
    unread_ = static_cast<unsigned>(received);
    return true;
}

bool CSITcpSocket::GetData(unsigned seconds, bool abortOnTimeout) {
    if (unread_ != 0) return true;
    if (!IsOpen()) {
        TARN_TRACE_AT(levels::kFailure, kUnit, "%1:%2: no connection to receive from", host_, port_);
        return false;
    }
    receiveMilliseconds_ = std::max(1U, Milliseconds(seconds));
    const int ready = hasPending() ? 1 : CSISocket::isReadable(socket_, seconds);
    if (ready < 0) return aborted("waiting for data failed");
    if (ready == 1 && receive()) return true;
    if (!IsOpen()) return false;
    if (abortOnTimeout) return aborted("nothing received in time");
    TARN_TRACE_AT(levels::kFailure, kUnit, "%1:%2: nothing received in %3 s", host_, port_, seconds);
    return false;
}

bool CSITcpSocket::GetBuffer(unsigned length, void* destination, unsigned seconds) {
    for (char* at = static_cast<char*>(destination); length != 0;) {
        if (!GetData(seconds, true)) return false;
        const unsigned part = std::min(length, unread_);
        std::memcpy(at, buffer_ + readPosition_, part);
        readPosition_ += part;
        unread_ -= part;
        at += part;
        length -= part;
    }
    return true;
}

bool CSITcpSocket::GetLine(char* destination, unsigned seconds) {
    constexpr unsigned long long kTimeouts = 10;  // for all of the line
    constexpr unsigned long long kMillisecondsPerSecond = 1000;
    const unsigned long long deadline =
        osclock::Tick() + (seconds + 1ULL) * kTimeouts * kMillisecondsPerSecond;
    unsigned length = 0;  // with the carriage return
    while (GetData(seconds, true)) {
        const char* const unread = buffer_ + readPosition_;
        const auto* const feed = static_cast<const char*>(std::memchr(unread, '\n', unread_));
        const unsigned count = feed != nullptr ? static_cast<unsigned>(feed + 1 - unread) : unread_;
        const bool isFirst = count == 1;  // then what stands before it came earlier
        const bool isEnd =
            feed != nullptr && (isFirst ? length != 0 && destination[length - 1] == '\r' : feed[-1] == '\r');
        const unsigned stored = isEnd ? count - 1 : count;
        const bool fits = stored <= kLineBytes - length;
        if (fits) std::memcpy(destination + length, unread, stored);
        length += stored;
        // A carriage return may be the last: the terminator takes its place when the line feed comes.
        if (!fits || (length == kLineBytes && destination[length - 1] != '\r')) {
            destination[0] = '\0';
            return aborted("a line is too long");
        }
        readPosition_ += count;
        unread_ -= count;
        if (!isEnd && osclock::Tick() < deadline) continue;
        destination[isEnd ? length - 1 : 0] = '\0';
        return isEnd || aborted("a line takes too long");
    }
    destination[0] = '\0';
    return false;
}

/// Receives until the peer has ended, fails, is silent, or goes on too long.
void CSITcpSocket::drain() {
    const unsigned long long end = osclock::Tick() + Drain::kMilliseconds;
    for (unsigned drained = 0; drained < Drain::kBytes && osclock::Tick() < end;) {
        char block[Drain::kBlock];
        const int received =
            recv(block, sizeof block, 0);  // NOLINT(clang-analyzer-optin.cplusplus.VirtualCall)
        if (received == 0) return;
        if (received > 0) {
            drained += static_cast<unsigned>(received);
        } else if (CSISocket::getLastError() == WSAEWOULDBLOCK) {
            CSIProcess::SecSleep(1);
        } else {
            return;
        }
    }
}

void CSITcpSocket::AbortSocket() {
    if (IsOpen()) {
        // From the destructor this class's own are called; what derives from it aborts in a destructor of its own.
        shutdown(socket_, SD_SEND);  // NOLINT(clang-analyzer-optin.cplusplus.VirtualCall)
        // Without it a silent peer would hold us here.
        if (CSISocket::setTimeout(socket_, Drain::kSilenceMilliseconds) == 0) drain();
    }
    closeSocket();
}

}  // namespace TarnLibA500
