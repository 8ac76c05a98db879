#include "net/socketlines.h"

#include <algorithm>
#include <cstring>

#include "net/ossockets.h"
#include "net/socketfailure.h"
#include "seam/osclock.h"
#include "tarnlib/csisocket.h"

namespace TarnLibA500 {

using dialogue::Outcome;

void SocketLines::attach(unsigned socket) noexcept {
    socket_ = socket;
    at_ = count_ = 0;
}

void SocketLines::beginReply() noexcept {
    constexpr unsigned long long kTimeouts = 10;
    constexpr unsigned long long kMillisecondsPerSecond = 1000;
    bytesOfReply_ = 0;
    deadline_ = osclock::Tick() + (seconds_ + 1ULL) * kTimeouts * kMillisecondsPerSecond;
}

/// Waits for more, and takes what there is.
Outcome SocketLines::fill() {
    for (;;) {
        if (osclock::Tick() >= deadline_) return Outcome::Ended;
        const int ready = CSISocket::isReadable(socket_, seconds_);
        if (ready != 1) return ready == 0 ? Outcome::Ended : Outcome::Failed;
        const int received = CSISocket::recv(socket_, block_, sizeof block_, 0);
        if (received == 0) return Outcome::Ended;
        if (received < 0 && IsToBeAskedAgain(CSISocket::getLastError())) continue;
        if (received < 0) return Outcome::Failed;
        at_ = 0;
        count_ = static_cast<unsigned>(received);
        return Outcome::Whole;
    }
}

Outcome SocketLines::next(SAnsiString& line) {
    line.empty();
    for (;;) {
        if (at_ == count_) {
            if (bytesOfReply_ > dialogue::kMostReplyBytes) return Outcome::Failed;
            if (const Outcome outcome = fill(); outcome != Outcome::Whole) return outcome;
        }
        const char* const begin = block_ + at_;
        const char* const end = block_ + count_;
        const char* const feed = std::find(begin, end, '\n');
        const unsigned taken = static_cast<unsigned>((feed == end ? end : feed + 1) - begin);
        const auto text = static_cast<unsigned>(feed - begin);
        line.concat(begin, std::min(text, kLineBytes - line.getLength()));
        at_ += taken;
        bytesOfReply_ += taken;
        if (feed == end) continue;
        const unsigned length = line.getLength();
        if (length != 0 && line.getString()[length - 1] == '\r') line.setSize(length - 1);
        return Outcome::Whole;
    }
}

char SocketLines::peek() {
    if (!hasUnread()) {
        beginReply();
        if (fill() != Outcome::Whole) return 0;
    }
    return block_[at_];
}

bool SendAll(unsigned socket, const char* bytes, unsigned count, const std::function<bool()>& isWriteable) {
    while (count != 0) {
        const int sent = ossockets::Send(socket, bytes, static_cast<int>(std::min(count, 0x7FFFFFFFU)), 0);
        if (sent < 0 && !IsToBeAskedAgain(ossockets::LastError())) return false;
        if (sent > 0) {
            bytes += sent;
            count -= static_cast<unsigned>(sent);
        }
        // What it did not take now it would not take at once either.
        if (count != 0 && !isWriteable()) return false;
    }
    return true;
}

bool SendAll(unsigned socket, const char* bytes, unsigned count, unsigned seconds) {
    return SendAll(socket, bytes, count, [=] {
        const int ready = CSISocket::isWriteable(socket, seconds);
        if (ready == 0) WSASetLastError(WSAETIMEDOUT);
        return ready == 1;
    });
}

}  // namespace TarnLibA500
