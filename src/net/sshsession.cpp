#include "net/sshsession.h"

#include <algorithm>
#include <cerrno>

#include "diag/assert/levels.h"
#include "net/ossockets.h"
#include "net/socketfailure.h"
#include "net/sshmemory.h"
#include "seam/osclock.h"
#include "tarnlib/straceobj.h"

namespace TarnLibA500 {
namespace {

constexpr const char* kUnit = "csisftp";
constexpr unsigned long kMillisecondsPerSecond = 1000;

// The library wants the negative number of an error, and no exception.

/// What is to be said of a transfer.
ssize_t Judged(SshWire& wire, int transferred) noexcept {
    if (transferred >= 0) return transferred;
    if (IsToBeAskedAgain(ossockets::LastError())) return -EAGAIN;
    wire.isBroken = true;
    wire.error = ossockets::LastError();
    return -EIO;
}

bool IsOver(SshWire& wire) noexcept {
    if (!wire.isBroken && osclock::Tick() > wire.deadline) {
        wire.isBroken = true;
        wire.error = WSAETIMEDOUT;
    }
    return wire.isBroken;
}

int BytesOf(size_t count) noexcept {
    return static_cast<int>(std::min<size_t>(count, INT_MAX));
}

ssize_t Receive(libssh2_socket_t, void* bytes, size_t count, int flags, void** abstract) noexcept {
    auto& wire = *static_cast<SshWire*>(*abstract);
    if (IsOver(wire)) return -EIO;
    const int received = ossockets::Receive(wire.socket, static_cast<char*>(bytes), BytesOf(count), flags);
    if (received == 0) wire.isBroken = true;
    return Judged(wire, received);
}

ssize_t Send(libssh2_socket_t, const void* bytes, size_t count, int flags, void** abstract) noexcept {
    auto& wire = *static_cast<SshWire*>(*abstract);
    if (IsOver(wire)) return -EIO;
    return Judged(wire, ossockets::Send(wire.socket, static_cast<const char*>(bytes), BytesOf(count), flags));
}

}  // namespace

SshSession::SshSession(const oslibssh2::Table& library, unsigned socket) noexcept
    : library_(library), wire_{socket} {}

SshSession::~SshSession() {
    wire_.isBroken = true;
    end(nullptr);
}

void SshSession::setLimit(unsigned seconds) noexcept {
    constexpr unsigned kMostSeconds = LONG_MAX / kMillisecondsPerSecond;
    const unsigned long milliseconds = std::clamp(seconds, 1U, kMostSeconds) * kMillisecondsPerSecond;
    // A second more: the library counts whole ones, and tells better what it has waited for.
    wire_.deadline = osclock::Tick() + milliseconds + kMillisecondsPerSecond;
    if (session_ != nullptr) library_.setTimeout(session_, static_cast<long>(milliseconds));
}

// ----------------------------------------------------------------------------------------- what calls come to

/// What the server alone says is told by the caller, who knows what was asked.
void SshSession::noteFailure(const char* what, int code, const char* text) {
    reason_ = STraceHelper("%1 (%2)", text, code);
    if (wire_.isBroken) {
        reason_ += wire_.error != 0 ? STraceHelper(", WSA%1", wire_.error)
                                    : SAnsiString(", the connection was ended");
    }
    TARN_TRACE_AT(isLost_ ? levels::kFailure : levels::kDetail, kUnit, "%1: %2", what, reason_);
}

/// For a step before there is a channel: the server may say no and go on.
bool SshSession::passes(const char* what, int result) {
    if (result >= 0) return true;
    const char* text = "";
    oslibssh2::LastError(library_, session_, text);
    isLost_ = isLost_ || wire_.isBroken || result == LIBSSH2_ERROR_TIMEOUT ||
              result == LIBSSH2_ERROR_SOCKET_SEND || result == LIBSSH2_ERROR_SOCKET_DISCONNECT ||
              result == LIBSSH2_ERROR_SOCKET_RECV;
    noteFailure(what, result, text);
    return false;
}

/// For a step on a file: what is not the server's answer to it may be the answer to the next one, later.
bool SshSession::passesOnFile(const char* what, bool isDone) {
    if (isDone) return true;
    const char* text = "";
    const int code = oslibssh2::LastError(library_, session_, text);
    sftpCode_ = code == LIBSSH2_ERROR_SFTP_PROTOCOL ? library_.sftpLastError(channel_) : LIBSSH2_FX_OK;
    if (sftpCode_ == LIBSSH2_FX_OK || sftpCode_ == LIBSSH2_FX_NO_CONNECTION)
        sftpCode_ = LIBSSH2_FX_CONNECTION_LOST;
    isLost_ = isLost_ || sftpCode_ == LIBSSH2_FX_CONNECTION_LOST;
    noteFailure(what, code, text);
    return false;
}

/// Gives something back, also when the peer does not let that finish.
template <class What>
int SshSession::finish(int (*function)(What*), What* what) {
    int result = function(what);
    if (result == LIBSSH2_ERROR_TIMEOUT || result == LIBSSH2_ERROR_EAGAIN) {
        isLost_ = wire_.isBroken = true;
        result = function(what);
    }
    oslibssh2::Calls::Closed();
    return oslibssh2::Calls::Error() == 0 ? result : LIBSSH2_ERROR_SOCKET_SEND;
}

// ----------------------------------------------------------------------------------------- the session

bool SshSession::create() {
    using namespace sshmemory;
    const auto allocate = [](size_t count, void** own) { return Allocate(count, own); };
    const auto release = [](void* block, void** own) { Free(block, own); };
    const auto reallocate = [](void* block, size_t count, void** own) {
        return Reallocate(block, count, own);
    };
    session_ =
        oslibssh2::Open(library_.sessionInit, +allocate, +release, +reallocate, static_cast<void*>(&wire_));
    if (session_ == nullptr) return false;
    library_.setBlocking(session_, 1);
    if (library_.callbackSet != nullptr) {
        library_.callbackSet(session_, LIBSSH2_CALLBACK_RECV, reinterpret_cast<void*>(&Receive));
        library_.callbackSet(session_, LIBSSH2_CALLBACK_SEND, reinterpret_cast<void*>(&Send));
    }
    return true;
}

int SshSession::shakeHands() {
    const int result =
        oslibssh2::Call(library_.handshake, session_, static_cast<libssh2_socket_t>(wire_.socket));
    passes("the handshake", result);
    return result;
}

const unsigned char* SshSession::keyDigest(int hash) {
    return reinterpret_cast<const unsigned char*>(oslibssh2::Find(library_.hostkeyHash, session_, hash));
}

void SshSession::end(const char* description) {
    if (file_ != nullptr) finish(library_.sftpClose, std::exchange(file_, nullptr));
    if (channel_ != nullptr) finish(library_.sftpShutdown, std::exchange(channel_, nullptr));
    if (session_ == nullptr) return;
    if (description != nullptr && !isLost_) {
        oslibssh2::Succeeds(library_.disconnect, session_, SSH_DISCONNECT_BY_APPLICATION, description, "");
    }
    finish(library_.sessionFree, std::exchange(session_, nullptr));
}

// ----------------------------------------------------------------------------------------- logging in

bool SshSession::askMethods(const SAnsiString& user, SAnsiString& methods, bool& isLetIn) {
    const char* const list =
        oslibssh2::Find(library_.userauthList, session_, user.getString(), user.getLength());
    isLetIn = false;
    if (list != nullptr) {
        methods = list;
        return true;
    }
    const char* text = "";
    const int code = oslibssh2::LastError(library_, session_, text);
    isLetIn = code == LIBSSH2_ERROR_NONE;
    if (isLetIn) return true;
    isLost_ = true;
    noteFailure("the question how to log in", code, text);
    return false;
}

bool SshSession::usePassword(const SAnsiString& user, const SAnsiString& password) {
    return passes("the password",
                  oslibssh2::Call(library_.userauthPassword, session_, user.getString(), user.getLength(),
                                  password.getString(), password.getLength(), nullptr));
}

SshSession::KeyUse SshSession::useKey(const SAnsiString& user, const unsigned char* key, unsigned bytes,
                                      const char* passphrase) {
    if (library_.userauthKey == nullptr) {
        reason_ = "libssh2.dll takes none";
        return KeyUse::Unreadable;
    }
    const int result = oslibssh2::Call(library_.userauthKey, session_, user.getString(), user.getLength(),
                                       nullptr, 0, reinterpret_cast<const char*>(key), bytes, passphrase);
    if (passes("the private key", result)) return KeyUse::Accepted;
    const bool isServers = isLost_ || result == LIBSSH2_ERROR_AUTHENTICATION_FAILED ||
                           result == LIBSSH2_ERROR_PUBLICKEY_UNVERIFIED;
    return isServers ? KeyUse::Refused : KeyUse::Unreadable;
}

bool SshSession::openChannel() {
    channel_ = oslibssh2::Open(library_.sftpInit, session_);
    if (channel_ != nullptr) return true;
    const char* text = "";
    const int code = oslibssh2::LastError(library_, session_, text);
    isLost_ = true;
    noteFailure("the channel for files", code, text);
    return false;
}

// ----------------------------------------------------------------------------------------- files and directories

LIBSSH2_SFTP_HANDLE* SshSession::open(const SAnsiString& path, unsigned long flags, int type) {
    constexpr long kRights = 0644;
    LIBSSH2_SFTP_HANDLE* const handle = oslibssh2::Open(library_.sftpOpen, channel_, path.getString(),
                                                        path.getLength(), flags, kRights, type);
    passesOnFile("the opening", handle != nullptr);
    return handle;
}

bool SshSession::isDirectory(const SAnsiString& path) {
    LIBSSH2_SFTP_HANDLE* const directory = open(path, 0, LIBSSH2_SFTP_OPENDIR);
    return directory != nullptr && passesOnFile("the closing", finish(library_.sftpClose, directory) >= 0);
}

bool SshSession::makeDirectory(const SAnsiString& path) {
    constexpr long kRights = 0755;
    return passesOnFile("a directory", oslibssh2::Call(library_.sftpMkdir, channel_, path.getString(),
                                                       path.getLength(), kRights) >= 0);
}

bool SshSession::removeDirectory(const SAnsiString& path) {
    return passesOnFile(
        "a removal", oslibssh2::Call(library_.sftpRmdir, channel_, path.getString(), path.getLength()) >= 0);
}

bool SshSession::removeFile(const SAnsiString& path) {
    return passesOnFile(
        "a removal", oslibssh2::Call(library_.sftpUnlink, channel_, path.getString(), path.getLength()) >= 0);
}

bool SshSession::isAlive(const SAnsiString& directory) {
    int secondsToNext = 0;
    if (!passes("a keep-alive", oslibssh2::Call(library_.keepaliveSend, session_, &secondsToNext)))
        isLost_ = true;
    if (!isLost_) isDirectory(directory);
    return !isLost_;
}

bool SshSession::openFile(const SAnsiString& path) {
    constexpr unsigned long kFlags = LIBSSH2_FXF_WRITE | LIBSSH2_FXF_CREAT | LIBSSH2_FXF_TRUNC;
    file_ = open(path, kFlags, LIBSSH2_SFTP_OPENFILE);
    return file_ != nullptr;
}

int SshSession::write(const char* bytes, unsigned count) {
    const ssize_t written = oslibssh2::Call(library_.sftpWrite, file_, bytes, count);
    return passesOnFile("the writing", written >= 0) ? static_cast<int>(written) : -1;
}

bool SshSession::closeFile() {
    return passesOnFile("the closing", finish(library_.sftpClose, std::exchange(file_, nullptr)) >= 0);
}

}  // namespace TarnLibA500
