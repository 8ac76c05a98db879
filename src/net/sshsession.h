#pragma once

#include "net/oslibssh2.h"
#include "tarnlib/sstring.h"

namespace TarnLibA500 {

/// The way from the SSH library to a socket, which ends with a time limit whatever the peer sends: inside one call the library
/// goes on as long as bytes come.
struct SshWire {
    unsigned socket;
    unsigned long long deadline = 0;  ///< by the monotonic clock
    bool isBroken = false;            ///< nothing goes over it any more
    int error = 0;                    ///< of the socket then; 0 when it was ended
};

/// An SSH session over a connected socket, with a channel for files and at most one open file. Each call waits for the limit at
/// most. What fails is traced, and told by reason, isLost and sftpCode.
class SshSession {
  public:
    /// The socket does not block, and is closed by its owner when this is gone.
    SshSession(const oslibssh2::Table& library, unsigned socket) noexcept;
    /// Ends without a word to the server and without waiting.
    ~SshSession();
    SshSession(const SshSession&) = delete;
    SshSession& operator=(const SshSession&) = delete;

    /// From now on calls may take so long, all together.
    void setLimit(unsigned seconds) noexcept;

    bool create();
    /// 0, or the library's number of a failure; LIBSSH2_ERROR_EAGAIN when it is not complete.
    int shakeHands();
    /// Of the server's key, by the library's number of a hash; null when there is none.
    const unsigned char* keyDigest(int hash);

    /// The ways to log in, by commas, for a user who is not let in without any. False when it cannot be asked.
    bool askMethods(const SAnsiString& user, SAnsiString& methods, bool& isLetIn);
    bool usePassword(const SAnsiString& user, const SAnsiString& password);
    /// What came of a private key.
    enum class KeyUse { Accepted, Refused, Unreadable };
    /// A private key as it stands in a file, with a zero byte behind it.
    KeyUse useKey(const SAnsiString& user, const unsigned char* key, unsigned bytes, const char* passphrase);
    bool openChannel();
    bool hasChannel() const noexcept { return channel_ != nullptr; }

    bool isDirectory(const SAnsiString& path);
    bool makeDirectory(const SAnsiString& path);
    bool removeDirectory(const SAnsiString& path);
    bool removeFile(const SAnsiString& path);
    /// Asks something, and takes every answer.
    bool isAlive(const SAnsiString& directory);

    /// Makes a file, or empties one.
    bool openFile(const SAnsiString& path);
    bool hasFile() const noexcept { return file_ != nullptr; }
    /// How many of the first bytes are stored by now, which may be none; -1 when that fails. The next call begins with those
    /// behind them, and may have more.
    int write(const char* bytes, unsigned count);
    bool closeFile();

    /// Takes leave of the server and ends.
    void end(const char* description);

    /// Of the last failure, in the library's words.
    const SAnsiString& reason() const noexcept { return reason_; }
    /// Of the last failure of a file or directory; LIBSSH2_FX_CONNECTION_LOST when it was not the server who said no.
    unsigned long sftpCode() const noexcept { return sftpCode_; }
    /// Nothing can be asked any more.
    bool isLost() const noexcept { return isLost_; }

  private:
    void noteFailure(const char* what, int code, const char* text);
    bool passes(const char* what, int result);
    bool passesOnFile(const char* what, bool isDone);
    template <class What>
    int finish(int (*function)(What*), What* what);
    LIBSSH2_SFTP_HANDLE* open(const SAnsiString& path, unsigned long flags, int type);

    const oslibssh2::Table& library_;
    SshWire wire_;
    LIBSSH2_SESSION* session_ = nullptr;
    LIBSSH2_SFTP* channel_ = nullptr;
    LIBSSH2_SFTP_HANDLE* file_ = nullptr;
    SAnsiString reason_;
    unsigned long sftpCode_ = 0;
    bool isLost_ = false;
};

}  // namespace TarnLibA500
