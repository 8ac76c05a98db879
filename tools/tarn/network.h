#pragma once

#include "command.h"
#include "tarnlib/csisocket.h"

namespace tarn {

/// The system's sockets for as long as the object lives.
class Network {
  public:
    Network() {
        if (!TarnLibA500::CSISocket::initialize()) throw Failure("the system has no sockets");
    }
    ~Network() { TarnLibA500::CSISocket::uninitialize(); }
    Network(const Network&) = delete;
    Network& operator=(const Network&) = delete;
};

}  // namespace tarn
