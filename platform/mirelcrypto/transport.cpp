#include "mirelcrypto/transport.h"

#include <cstring>
#include <utility>

#include "seam/nothrow.h"
#include "seam/osclock.h"

namespace mirelcrypto {

bool Transport::attach(SSL* connection, SOCKET socket) {
    if (method_ != nullptr) return false;
    waiting_.reset(new (seam::kNoThrow) char[kMostWaiting]);
    if (waiting_ == nullptr) return false;
    method_ = osssl::NewMethod(BIO_TYPE_SOURCE_SINK, "socket");
    if (method_ == nullptr || BIO_meth_set_read(method_, &Receive) != 1 ||
        BIO_meth_set_write(method_, &Send) != 1 || BIO_meth_set_ctrl(method_, &Control) != 1)
        return false;
    BIO* const bio = osssl::NewBio(method_);
    if (bio == nullptr) return false;
    socket_ = socket;
    BIO_set_data(bio, this);
    BIO_set_init(bio, 1);
    SSL_set_bio(connection, bio, bio);
    return true;
}

void Transport::begin(bool isReadable) noexcept {
    begun_ = osclock::Tick();
    error_ = 0;
    isReadable_ = isReadable;
}

/// Waits until something can be received, for what is left of the time-out.
bool Transport::wait() {
    constexpr DWORD kMillisecondsPerSecond = 1000;
    constexpr DWORD kMicrosecondsPerMillisecond = 1000;
    DWORD limit = 0;
    if (osssl::GetTimeout(socket_, limit) != 0) return false;
    for (;;) {
        const unsigned long long passed = osclock::Tick() - begun_;
        const auto left = passed < limit ? static_cast<DWORD>(limit - passed) : 0;
        const timeval most = {static_cast<long>(left / kMillisecondsPerSecond),
                              static_cast<long>(left % kMillisecondsPerSecond * kMicrosecondsPerMillisecond)};
        const int ready = osssl::WaitToReceive(socket_, limit == 0 ? nullptr : &most);
        if (ready > 0) return true;
        if (ready == 0) WSASetLastError(WSAETIMEDOUT);
        if (ready == 0 || WSAGetLastError() != WSAEINTR) return false;
    }
}

int Transport::failed(BIO* bio, bool isToBeRetried) {
    error_ = WSAGetLastError();
    if (isToBeRetried) BIO_set_retry_read(bio);
    return -1;
}

int Transport::Receive(BIO* bio, char* bytes, int room) {
    Transport& transport = *static_cast<Transport*>(BIO_get_data(bio));
    BIO_clear_retry_flags(bio);
    if (!transport.flush()) return -1;
    if (!std::exchange(transport.isReadable_, false) && !transport.wait())
        return transport.failed(bio, WSAGetLastError() == WSAETIMEDOUT);
    int received = 0;
    do {
        received = osssl::Receive(transport.socket_, bytes, room);
    } while (received < 0 && WSAGetLastError() == WSAEINTR);
    if (received < 0) return transport.failed(bio, false);
    transport.hasEnded_ = received == 0;
    return received;
}

bool Transport::sendAll(const char* bytes, int count) {
    while (count != 0) {
        const int sent = osssl::Send(socket_, bytes, count);
        if (sent < 0 && WSAGetLastError() == WSAEINTR) continue;
        if (sent < 0) {
            error_ = WSAGetLastError();
            return false;
        }
        bytes += sent;
        count -= sent;
    }
    return true;
}

bool Transport::flush() {
    return sendAll(waiting_.get(), std::exchange(waitingCount_, 0));
}

int Transport::Send(BIO* bio, const char* bytes, int count) {
    Transport& transport = *static_cast<Transport*>(BIO_get_data(bio));
    BIO_clear_retry_flags(bio);
    if (count > kMostWaiting - transport.waitingCount_ && !transport.flush()) return -1;
    if (count > kMostWaiting) return transport.sendAll(bytes, count) ? count : -1;
    std::memcpy(transport.waiting_.get() + transport.waitingCount_, bytes, static_cast<std::size_t>(count));
    transport.waitingCount_ += count;
    return count;
}

long Transport::Control(BIO* bio, int command, long, void*) {
    auto& transport = *static_cast<Transport*>(BIO_get_data(bio));
    switch (command) {
        case BIO_CTRL_FLUSH:
            return transport.flush() ? 1 : -1;
        case BIO_CTRL_EOF:
            return transport.hasEnded_ ? 1 : 0;
        default:
            return 0;
    }
}

}  // namespace mirelcrypto
