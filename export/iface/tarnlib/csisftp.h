#pragma once

#include "tarnlib/csiftp.h"
#include "tarnlib/sstring.h"
#include "tarnlib/tarnapi.h"

/// An SFTP client with the interface of CSIftp: puts files on an SSH server and manages its directories. The SSH library,
/// "libssh2.dll", is loaded when it is first needed.
///
/// A server is known by the fingerprint of its key, and nothing is said to one that has another. Without a
/// fingerprint, or with a text that is none, Connect fails, too. Names are sent byte for byte; the working directory is
/// kept by this end, where links on the server do not count: it is "." after a login, and a path from there until an
/// absolute one is set.
///
/// A server that says no gives false, but a file that he does not let be written throws CSIftpException
/// (dataConnectionError, 41327), and so does a key, a user or a password that he refuses (41322). What fails otherwise is
/// as with CSIftp. A session that is lost is closed: Connected tells. What FTP alone has is reported by assertion and
/// throws (41333): SetType, SetASCII, SetBinary, SendAcct, and SetPassive with the next PutFile. Each wait is limited by
/// SetTimeout, the handshake by 30 s besides. One thread at a time uses an object.
///
///     CSIsftp sftp("SHA256:tXnFkZnoNVmgDWeoLLVnkVmuRmCvEu7RHcRuVDLs3eU");
///     if (!sftp.Connect("files.example.com") || !sftp.Login("reports", password)) return false;
///     if (!sftp.PutFile("C:\\data\\day.csv", "in/day.csv")) return false;
///     sftp.Disconnect();
namespace TarnLibA500 {

/// An SFTP client.
class TARN_API CSIsftp : public CSIftp {
  public:
    /// Not connected; the port is 22 at first. The fingerprint as for SetFingerprint.
    explicit CSIsftp(const SAnsiString& fingerprint = SAnsiString());
    /// Closes the connection, without a word to the server and without waiting.
    ~CSIsftp() override;

    /// What the server's key is known by: "SHA256:" and Base64 as OpenSSH prints it, or hexadecimal digits, 64
    /// (SHA-256) or 40 (SHA-1), with a colon between any two pairs or none. MD5 is none. Counts from the next Connect on.
    void SetFingerprint(const SAnsiString& fingerprint);
    /// "SHA256:..." of the server that Connect spoke to last, also when it was refused. Empty when there was none.
    const SAnsiString& GetServerFingerprint() const noexcept;
    /// The next Login begins with this private key (Ed25519 or ECDSA; PEM or OpenSSH's form), which is read then, and tries the
    /// password only if that is refused and there is one. No key for an empty name. The passphrase is for a file
    /// that has one, and is overwritten with the object.
    void SetPrivateKey(const SAnsiString& file, const SAnsiString& passphrase = SAnsiString());

    /// Connects and makes sure of the server; an open connection is closed first. A port of 0 is that of SetPortA. True, or
    /// throws (controlConnectionError, 41327): nobody takes the connection, the handshake fails, or the fingerprint is
    /// not the server's.
    bool Connect(const SAnsiString& host, unsigned short port = 0) override;
    /// Takes leave of the server and closes the connection. Nothing happens without one.
    void Disconnect() override;
    /// Logs in with the key or the password. False without a user, or without both of those; nothing is sent then. The
    /// account is not used. Throws when all is refused (41322), or when the key cannot be read.
    bool Login(const SAnsiString& user, const SAnsiString& password,
               const SAnsiString& account = SAnsiString()) override;

  protected:
    /// Does what the FTP command stands for. False, by assertion, for one that SFTP does not have.
    bool SendControlMsg(const char* command, const char* argument, unsigned argumentBytes) override;
    /// The code that FTP would have for what was done last: 550 for an error, 530 before a login, 421 when the session is
    /// lost.
    int GetReply(SAnsiString& text) override;
    /// Nothing is to be opened. True.
    bool InitializeListenSocket(int family) override;
    /// Opens the remote file that STOR named; 1. Throws when the server refuses it.
    int AcceptConnection() override;
    /// Writes to the remote file; the number of bytes, -1 when that fails. The last of them may be under way until
    /// CloseDataConnection.
    int SendDataMsg(const char* data, unsigned count) override;
    /// Closes the remote file, if one is open, when all is written; GetReply tells how that went.
    void CloseDataConnection() override;
    /// Looks for a directory without going there. False when the session is lost.
    bool changesTo(const SAnsiString& directory, const SAnsiString& back, bool& exists) override;

    /// Nothing: replies are not mixed up.
    void dropReply() noexcept override;

    /// Loads the SSH library unless it is there; false, by assertion, when that fails.
    bool initSSHLib();
    /// Changes the working directory to one that exists.
    bool ChangeDir_sFtp(const SAnsiString& directory);
    /// Whether a directory can be opened.
    bool CheckDirExist_sFtp(const SAnsiString& directory);
    /// Makes a directory.
    bool CreateDir_sFtp(const SAnsiString& directory);
    /// Removes a directory.
    bool RemoveDir_sFtp(const SAnsiString& directory);
    /// Removes a file.
    bool RemoveFile_sFtp(const SAnsiString& file);
    /// Takes leave of the server, for 10 s at most, and closes the connection.
    void CleanUpSSH_sFtp();

  private:
    struct Ssh;

    [[noreturn]] void failToConnect(const SAnsiString& reason);
    void openSocket(const SAnsiString& host, unsigned short port, const SAnsiString& server);
    void shakeHands(const SAnsiString& server);
    void makeSureOfServer();
    void logIn(const SAnsiString& user, const SAnsiString& password);
    bool useKey(const SAnsiString& user);
    void dropSession() noexcept;
    void dropLostSession();
    bool isDoneOn(bool isDone, const char* failure, const SAnsiString& path);
    bool nameFile(const SAnsiString& file);
    bool changeToParent(const SAnsiString& none);
    bool tellDirectory(const SAnsiString& none);
    bool askWhetherAlive(const SAnsiString& none);
    bool writePending(std::size_t mostLeft);

    Ssh* ssh_;
};

}  // namespace TarnLibA500
