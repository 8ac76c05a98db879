// The remote file, and what goes into it.
#include <algorithm>

#include "net/csisftpstate.h"

namespace TarnLibA500 {
namespace {

using sftp::kUnit;
using sftp::Step;

// How much may be under way. With less, each block would wait for the answers to the one before; servers take more only when they
// have stored some.
constexpr std::size_t kWindowBytes = 1024 * 1024;

}  // namespace

bool CSIsftp::InitializeListenSocket(int /*family*/) {
    return true;
}

void CSIsftp::dropReply() noexcept {}

int CSIsftp::AcceptConnection() {
    const Step step("AcceptConnection");
    SshSession& session = *ssh_->session;
    session.setLimit(timeout_);
    ssh_->pending.clear();
    ssh_->isBroken = false;
    if (session.openFile(ssh_->file)) return 1;
    const SAnsiString text = "Could not create the sftpHandle for file [" + ssh_->file +
                             "] to write to sftp server. SFTP Code:" + STraceHelper("%1", session.sftpCode());
    dropLostSession();
    fail(CSIftpException::dataConnectionError, sftp::kConnectionFailed, text);
}

/// Writes until no more than so many bytes may be under way.
bool CSIsftp::writePending(std::size_t mostLeft) {
    std::vector<char>& pending = ssh_->pending;
    std::size_t stored = 0;
    while (!ssh_->isBroken && pending.size() - stored > mostLeft) {
        ssh_->session->setLimit(timeout_);
        const int more =
            ssh_->session->write(pending.data() + stored, static_cast<unsigned>(pending.size() - stored));
        ssh_->isBroken = more < 0;
        stored += static_cast<std::size_t>(std::max(more, 0));
    }
    pending.erase(pending.begin(), pending.begin() + static_cast<std::ptrdiff_t>(stored));
    return !ssh_->isBroken;
}

int CSIsftp::SendDataMsg(const char* data, unsigned count) {
    const Step step("SendDataMsg");
    if (!ssh_->session || !ssh_->session->hasFile()) return -1;
    ssh_->pending.insert(ssh_->pending.end(), data, data + count);
    if (writePending(kWindowBytes)) return static_cast<int>(count);
    ssh_->answerLoss();
    return -1;
}

void CSIsftp::CloseDataConnection() {
    constexpr int kStored = 226;
    const Step step("CloseDataConnection");
    if (!ssh_->session || !ssh_->session->hasFile()) return;
    SshSession& session = *ssh_->session;
    const bool wasBroken = ssh_->isBroken;
    const bool isWritten = writePending(0);
    session.setLimit(timeout_);
    const bool isStored = session.closeFile() && isWritten;
    if (isStored) {
        ssh_->answer(kStored, "stored");
    } else if (!wasBroken) {
        ssh_->answerLoss();
    }
    dropLostSession();
}

}  // namespace TarnLibA500
