#pragma once

#include <memory>

#include "mirelcrypto/osssl.h"

namespace mirelcrypto {

/// How a connection sends to its socket and receives from it.
///
/// A receive that somebody may have to wait for is preceded by a look at the socket: a receive that the socket's own
/// time-out ends leaves it in no defined state.
class Transport {
  public:
    Transport() = default;
    Transport(const Transport&) = delete;
    Transport& operator=(const Transport&) = delete;
    ~Transport() { osssl::Free(method_); }

    /// Makes it the transport of a connection, which it outlives. The socket stays the caller's.
    bool attach(SSL* connection, SOCKET socket);
    /// A call begins, with all of the time-out before it. The first receive waits for nobody when the caller has looked.
    void begin(bool isReadable) noexcept;
    /// Sends what the connection has written so far. False when that fails.
    bool flush();
    /// The socket error of the call; 0 when it had none.
    int error() const noexcept { return error_; }

  private:
    static int Receive(BIO* bio, char* bytes, int room);
    static int Send(BIO* bio, const char* bytes, int count);
    static long Control(BIO* bio, int command, long number, void* pointer);

    bool sendAll(const char* bytes, int count);
    bool wait();
    int failed(BIO* bio, bool isToBeRetried);

    /// The records of one write of 64 KiB: they are one call to the system, and not four.
    static constexpr int kMostWaiting = 66 * 1024;

    BIO_METHOD* method_ = nullptr;
    std::unique_ptr<char[]> waiting_;  ///< bytes to be sent
    int waitingCount_ = 0;
    SOCKET socket_ = INVALID_SOCKET;
    unsigned long long begun_ = 0;  ///< in milliseconds
    int error_ = 0;
    bool isReadable_ = false;
    bool hasEnded_ = false;
};

}  // namespace mirelcrypto
