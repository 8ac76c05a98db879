#pragma once

#include "tarnlib/csiftpexception.h"
#include "tarnlib/sstring.h"
#include "tarnlib/tarnapi.h"

struct sockaddr_storage;  // the system's own, from winsock2.h

/// An FTP client (RFC 959): puts files on a server and manages its directories.
///
/// A server that says no gives false; a connection or a dialogue that fails throws CSIftpException, and so does
/// every operation without a connection. Everything waits with a time-out (60 s), for each piece of a reply, for
/// the data connection and for each piece of a file; a reply that does not come closes the connection, because it
/// would be taken for the next one's. Names are sent byte for byte, as they are; with a line end or a zero byte
/// they are reported by assertion and give false, and nothing is sent. Lines are traced, without passwords.
///
/// Data goes over a connection that the server opens (active mode), and only the server's address may open it.
/// SetPassive turns that round for networks that do not let him. CSISocket::initialize must have run. One thread
/// at a time uses an object.
///
///     CSIftp ftp;
///     if (!ftp.Connect("files.example.com") || !ftp.Login("reports", password)) return false;
///     if (!ftp.CreateDirs("2026/november") || !ftp.PutFile("C:\\data\\day.csv", "2026/november/day.csv"))
///         return false;
///     ftp.Disconnect();
namespace TarnLibA500 {

class SFile;
class SocketLines;

/// An FTP client.
class TARN_API CSIftp {
  public:
    // --- the words of the commands ---
    static constexpr const char* CTRL_FTP_USER = "USER";  ///< the user's name
    static constexpr const char* CTRL_FTP_PASS = "PASS";  ///< his password
    static constexpr const char* CTRL_FTP_ACCT = "ACCT";  ///< his account
    static constexpr const char* CTRL_FTP_CWD = "CWD";    ///< changes the working directory
    static constexpr const char* CTRL_FTP_CDUP = "CDUP";  ///< changes to the directory above
    static constexpr const char* CTRL_FTP_PWD = "PWD";    ///< tells the working directory
    static constexpr const char* CTRL_FTP_MKDIR = "MKD";  ///< makes a directory
    static constexpr const char* CTRL_FTP_RMDIR = "RMD";  ///< removes a directory
    static constexpr const char* CTRL_FTP_RM = "DELE";    ///< removes a file
    static constexpr const char* CTRL_FTP_PUT = "STOR";   ///< stores a file
    static constexpr const char* CTRL_FTP_TYPE = "TYPE";  ///< sets the representation type
    static constexpr const char* CTRL_FTP_NOOP = "NOOP";  ///< does nothing
    static constexpr const char* CTRL_FTP_OPTS = "OPTS";  ///< sets an option
    static constexpr const char* CTRL_FTP_QUIT = "QUIT";  ///< ends the session
    static constexpr const char* CTRL_FTP_PORT = "PORT";  ///< tells where to connect to, IPv4
    static constexpr const char* CTRL_FTP_EPRT = "EPRT";  ///< the same, RFC 2428
    static constexpr const char* CTRL_FTP_PASV = "PASV";  ///< asks where to connect to, IPv4
    static constexpr const char* CTRL_FTP_EPSV = "EPSV";  ///< the same, RFC 2428

    /// What is transferred.
    enum RepresentationType {
        ascii,  ///< text: a line feed alone is sent as CR LF
        binary  ///< bytes as they are
    };

    /// Not connected.
    CSIftp();
    /// Closes the connections, without a word to the server.
    virtual ~CSIftp();
    /// A connection is one object's.
    CSIftp(const CSIftp&) = delete;
    /// A connection is one object's.
    CSIftp& operator=(const CSIftp&) = delete;

    /// Connects and reads the greeting; a connection that is open is closed first. A port of 0 is that of SetPortA.
    /// False when the greeting is not 220; throws when nobody takes the connection.
    virtual bool Connect(const SAnsiString& host, unsigned short port = 0);
    /// Takes leave of the server and closes the connection. Nothing happens without one.
    virtual void Disconnect();
    /// Logs in, asks for binary transfer and for names in UTF-8. Nothing is sent without a user and a password. The
    /// account is for servers that ask for one. Throws when user or password are refused.
    virtual bool Login(const SAnsiString& user, const SAnsiString& password,
                       const SAnsiString& account = SAnsiString());
    /// True between a greeting and the end of the connection, as far as this end knows.
    bool Connected() const noexcept { return connected_; }

    /// Changes the working directory.
    bool ChangeWorkingDir(const SAnsiString& directory);
    /// Changes to the directory above.
    bool ChangeToParentDir();
    /// The working directory: what the reply has between its first two quotes. Empty when the server says no.
    SAnsiString GetWorkingDir();
    /// Makes a directory; false, too, when it exists.
    bool CreateDir(const SAnsiString& directory);
    /// Makes what is missing of a path, level by level; both slashes part them. Stops at the first level that is
    /// refused.
    bool CreateDirs(const SAnsiString& path);
    /// Removes a directory.
    bool RemoveDir(const SAnsiString& directory);
    /// Removes a file.
    bool RemoveFile(const SAnsiString& file);
    /// True when one can change to the directory, which is tried; the working directory stays.
    bool IsDirExist(const SAnsiString& directory);
    /// Sends a local file under a name. False when the local file cannot be read, which is found before anything is
    /// sent, when the server says no, also instead of taking the data, or when the transfer breaks off: the server is told so by a
    /// reset.
    bool PutFile(const SAnsiString& local, const SAnsiString& remote);
    /// Sends the account; true for 202 and 230.
    bool SendAcct(const SAnsiString& account);
    /// True when the server still answers.
    bool CheckAliveness();

    /// As SetType.
    void SetASCII();
    /// As SetType.
    void SetBinary();
    /// Sets what is transferred from now on; throws when the server refuses it.
    void SetType(RepresentationType type);
    /// The port for Connect without one; 21 at first.
    void SetPortA(unsigned short port) noexcept { port_ = port; }
    /// Seconds that each wait may take; 60 at first.
    void SetTimeout(unsigned seconds) noexcept;
    /// From now on this end opens the data connections, too (EPSV, then PASV); to the address of the control
    /// connection, whatever address the reply names. Off at first.
    void SetPassive(bool isPassive) noexcept { isPassive_ = isPassive; }
    /// The directory for local files without an absolute path; this object's alone. False when there is none such.
    bool ChangeLocalWorkingDir(const SAnsiString& directory);
    /// That directory; the process's unless it was changed.
    SAnsiString GetLocalWorkingDir() const;

  protected:
    // What a secure channel replaces.
    /// Sends "COMMAND argument"; a null argument is none. False when it cannot be sent.
    virtual bool SendControlMsg(const char* command, const char* argument, unsigned argumentBytes);
    /// Reads a reply. Its code, 0 when there is none; throws when the connection cannot be read.
    virtual int GetReply(SAnsiString& text);
    /// Opens the listening socket and tells the server of it; throws when that fails.
    virtual bool InitializeListenSocket(int family);
    /// The data connection that the server opens, at least 1. 0 when the server says instead that it does not come, which is the
    /// next reply; throws when nothing comes.
    virtual int AcceptConnection();
    /// Sends all bytes over the data connection; returns their number, -1 when that fails.
    virtual int SendDataMsg(const char* data, unsigned count);
    /// Closes the data connection and the listening socket.
    virtual void CloseDataConnection();
    /// Finds out whether a directory exists: tries to change to it, and then to "back", the working directory. False when
    /// there is no way back.
    virtual bool changesTo(const SAnsiString& directory, const SAnsiString& back, bool& exists);
    /// After a transfer that ended by an exception: its reply may still come. Closes the control connection.
    virtual void dropReply() noexcept;

    /// Traces and throws.
    [[noreturn]] void fail(CSIftpException::ErrorCodes code, unsigned short messageID,
                           const SAnsiString& detail) const;

    unsigned control_;                  ///< CSISocket::kInvalid when closed
    unsigned data_;                     ///< CSISocket::kInvalid when closed
    unsigned listening_;                ///< CSISocket::kInvalid when closed
    unsigned short port_ = 21;          ///< for Connect without one
    bool connected_ = false;            ///< see Connected
    RepresentationType type_ = binary;  ///< what the server was told last
    unsigned timeout_ = 60;             ///< seconds

  private:
    class Deadline;

    int command(const char* word, const SAnsiString* argument, SAnsiString& reply);
    [[noreturn]] void failToSend(const char* word, const SAnsiString& reason) const;
    bool isDone(const char* word, const SAnsiString* argument, int code, int otherCode = 0);
    int sendPassword(const SAnsiString& password, const SAnsiString& account, SAnsiString& reply);
    SAnsiString localPath(const SAnsiString& name) const;
    void closeControl() noexcept;
    int controlFamily();
    void requireStep(bool isDone, const char* detail);
    void offerPort(const sockaddr_storage& address);
    void openPassively();
    unsigned short askForPort(int family);
    bool awaitData(unsigned socket, bool isToSend, const Deadline& deadline);
    bool isOpened();
    int lastReply(SAnsiString& reply);
    bool transfer(SFile& file, const SAnsiString& remote);
    bool put(SFile& file, const SAnsiString& remote);
    bool sendFile(SFile& file, const SAnsiString& remote);
    void breakDataConnection();

    SocketLines* lines_;
    SAnsiString localDirectory_;  ///< empty for the process's
    bool isPassive_ = false;
    bool wantsLastBar_ = false;  ///< the server takes EPRT only as RFC 2428 writes it
};

}  // namespace TarnLibA500
