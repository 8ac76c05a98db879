#pragma once

#include <functional>

#include "net/dialogue.h"

namespace TarnLibA500 {

/// Lines from a socket. What comes is taken in blocks, and handed out line by line.
class SocketLines : public dialogue::LineSource {
  public:
    /// What is kept of a line; the rest of a longer one is dropped.
    static constexpr unsigned kLineBytes = 1024;

    /// From now on lines come from this socket, and each wait takes so many seconds at most.
    void attach(unsigned socket) noexcept;
    void setTimeout(unsigned seconds) noexcept { seconds_ = seconds; }
    /// The next line is the first of a reply, which may take ten time-outs in all.
    void beginReply() noexcept;

    dialogue::Outcome next(SAnsiString& line) override;
    unsigned bytesOfReply() const override { return bytesOfReply_; }
    /// Something that came is not yet handed out.
    bool hasUnread() const noexcept { return at_ != count_; }
    /// The first byte of the next reply, which stays there; 0 when none comes.
    char peek();

  private:
    dialogue::Outcome fill();

    unsigned socket_ = 0xFFFFFFFF;
    unsigned seconds_ = 0;
    unsigned long long deadline_ = 0;  ///< of the reply, by the monotonic clock
    unsigned bytesOfReply_ = 0;
    unsigned at_ = 0;     ///< of the first byte in the block that nobody has read
    unsigned count_ = 0;  ///< bytes in the block
    char block_[4096];
};

/// Sends all of the bytes to a socket that does not block. False when it fails, or nothing is taken for so long;
/// the last socket error says why.
bool SendAll(unsigned socket, const char* bytes, unsigned count, unsigned seconds);

/// The same with a wait of one's own for the socket to take more, which says false, and leaves the error, when it will not.
bool SendAll(unsigned socket, const char* bytes, unsigned count, const std::function<bool()>& isWriteable);

}  // namespace TarnLibA500
