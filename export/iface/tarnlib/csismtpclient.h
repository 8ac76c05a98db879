#pragma once

#include "tarnlib/csismtpmailexception.h"
#include "tarnlib/csismtpmessage.h"
#include "tarnlib/siarray.h"
#include "tarnlib/sslconfig.h"
#include "tarnlib/sstring.h"
#include "tarnlib/tarnapi.h"

/// A connection to a mail server (SMTP), over which messages are sent one after another. CSISMTPMail sends a single
/// one.
///
/// Connect and CheckAliveness say false when the server does not serve; what fails in sending is thrown as
/// CSISMTPMailException. Every wait has a time-out, and a reply that does not come closes the connection, because it
/// would be taken for the next one's. With a user, nothing is sent before the server has let him in. Host, user,
/// password and addresses with control characters are refused (code 5) before anything is sent. Lines are
/// traced, without passwords. CSISocket::initialize must have run. One thread at a time uses an object.
///
///     CSISMTPClient client("mail.example.com", 25, "", "reports", password);
///     if (!client.Connect()) return false;
///     for (const CSISMTPMessage& message : messages) client.SendSMTPMessage(message);
///     client.Disconnect();
namespace TarnLibA500 {

class CCLSocket;
class CSITcpSocket;
class SProgress;

namespace dialogue {
class CommandLine;
}

/// A connection to a mail server.
class TARN_API CSISMTPClient {
  public:
    /// How a user shows who he is.
    enum Authentication {
        authNone,   ///< by what the server offers, LOGIN before PLAIN, if there is a user
        authLogin,  ///< by LOGIN alone
        authPlain   ///< by PLAIN alone
    };
    /// When a connection that begins in clear text goes on with TLS (RFC 3207).
    enum StartTls {
        startTlsNever,  ///< it stays as it is
        startTlsIfOffered,  ///< when the server offers it: keeps listeners out, but nobody who changes what passes
        startTlsRequired  ///< always; a server that does not do it is none
    };

    /// Not connected. A port of 0 is 25. The local host is the name that the server is greeted with; empty,
    /// SMTPHelper::GetLocalHost. Without a user nobody logs in.
    CSISMTPClient(const SAnsiString& host, unsigned short port, const SAnsiString& localHost,
                  const SAnsiString& user = SAnsiString(), const SAnsiString& password = SAnsiString(),
                  Authentication authentication = authNone);
    /// Closes the connection without a word to the server, and overwrites the password.
    virtual ~CSISMTPClient();
    /// A connection is one object's.
    CSISMTPClient(const CSISMTPClient&) = delete;
    /// A connection is one object's.
    CSISMTPClient& operator=(const CSISMTPClient&) = delete;

    /// Lets connections from the next one on go over to TLS before anybody logs in. A handshake that fails, and bytes that
    /// came before it, end the connection, in either of the two ways. For CSISMTPSClient nothing changes.
    void SetStartTls(StartTls startTls, const SSLConfig& config);

    /// Connects (twice, if need be), greets the server and logs the user in. False when one of that fails; the
    /// last reply says why, if there was one.
    bool Connect();
    /// Takes leave of the server, for whose answer it waits 5 s, and closes the connection. Nothing happens without
    /// one.
    void Disconnect();
    /// True when the server still answers.
    bool CheckAliveness();
    /// Sends a message and returns the server's last reply code, 250 or 251. Throws when it is not sent. Recipients
    /// that the server refuses by 550 to 553 do not hinder the others, unless one is the last of its list (To, Cc,
    /// Bcc): GetRejectedRecipients. The Bcc line is in the header only when that is asked for.
    unsigned SendSMTPMessage(const CSISMTPMessage& message, bool writeBcc = false);

    /// The code of the last reply; 0 when there was none.
    unsigned GetLastReplyCode() const noexcept { return replyCode_; }
    /// All lines of the last reply, with CR LF between them.
    SAnsiString GetLastReplyText() const { return replyText_; }
    /// The recipients of the last message that the server refused by 550 to 553, as the message has them.
    const SIArray<SAnsiString>& GetRejectedRecipients() const noexcept { return rejected_; }

    /// Seconds that each wait may take (60 at first), and the wait for the server to take a message (300).
    void SetTimeout(unsigned seconds, unsigned secondsForMessage = 300) noexcept;
    /// Tells from now on how much of a message is sent; null for nobody. An exception of it closes the connection.
    void SetProgress(SProgress* progress) noexcept { progress_ = progress; }

  protected:
    /// For a class with a connection of its own kind, which the object owns from here on. "secure" is the same when
    /// it speaks TLS.
    CSISMTPClient(CSITcpSocket* socket, CCLSocket* secure, const SAnsiString& localHost,
                  const SAnsiString& user, const SAnsiString& password, Authentication authentication);

    // --- the steps; those that give a code give that of the reply, 0 for none ---
    /// Opens the connection, in two attempts.
    bool openSocket();
    /// Waits for the greeting, if asked to, and says EHLO, or HELO after a reply of 500 to 599. True for 250; the
    /// reply's code and text come from the last of them.
    bool negotiateSMTP(unsigned& reply, SAnsiString* text, bool waitsForGreeting);
    /// Logs in by what a reply to EHLO offers; throws unless that gives 235.
    unsigned SecurityCheck(const SAnsiString& helloReply);
    /// Logs in by one method.
    unsigned SecurityCheckHelper(Authentication method);
    /// MAIL; throws unless that gives 250 or 251.
    unsigned SendFromAddressToSMTPServer(const CSISMTPMessage& message);
    /// RCPT for each address. The last reply; 250 for no address.
    unsigned SendAddressesToSMTPServer(const SIArray<SAnsiString>& addresses);
    /// DATA and the file from its beginning; throws unless that gives 250 or 251.
    unsigned SendMailMessageToSMTPServer(SFile& file);
    /// Reads a reply.
    unsigned WaitForReplyFromSMTPServer(unsigned seconds, SAnsiString* text);
    /// QUIT.
    unsigned SMTPQuit();

  private:
    friend class CSISMTPMail;

    void establish();
    void greet(bool waitsForGreeting);
    void upgrade();
    SAnsiString whyNoConnection() const;
    void checkSettings() const;
    CSISMTPClient(CSITcpSocket* socket, CCLSocket* secure) noexcept;
    unsigned ask(const dialogue::CommandLine& line);
    unsigned ask(const char* word);
    [[noreturn]] void failWithReply(const char* step, const SAnsiString& command) const;
    bool isUsable() const;
    unsigned sendSecret(const char* word, const unsigned char* bytes, unsigned count);
    void sendEnvelope(const CSISMTPMessage& message);
    void sendList(const SIArray<SAnsiString>& addresses);
    void sendFile(SFile& file);

    CSITcpSocket* socket_;
    CCLSocket* secure_;  ///< the same when it can speak TLS, otherwise null
    StartTls startTls_ = startTlsNever;
    SAnsiString localHost_;
    SAnsiString user_;
    SAnsiString password_;  ///< never shared
    Authentication authentication_ = authNone;
    SProgress* progress_ = nullptr;
    unsigned timeout_ = 60;
    unsigned messageTimeout_ = 300;
    unsigned replyCode_ = 0;
    SAnsiString replyText_;
    SAnsiString hello_;  ///< what the server said of itself
    SIArray<SAnsiString> rejected_;
    std::uint32_t recipientsAsked_ = 0;  ///< of the last list
    bool isExtended_ = false;       ///< it was EHLO that the server took, and its reply tells what it can do
    bool takes8Bit_ = false;        ///< text beyond ASCII as it is, for one
    bool isGreeted_ = false;        ///< the server has greeted us
    bool isReady_ = false;          ///< messages may be sent
    bool isInTransaction_ = false;  ///< the server has a sender for which no message came
};

/// The same over TLS from the first byte on (port 465).
///
///     CSISMTPSClient client("mail.example.com", 0, "", "reports", password);
class TARN_API CSISMTPSClient : public CSISMTPClient {
  public:
    /// As CSISMTPClient; a port of 0 is 465. The server's certificate must be for the host.
    CSISMTPSClient(const SAnsiString& host, unsigned short port, const SAnsiString& localHost,
                   const SAnsiString& user = SAnsiString(), const SAnsiString& password = SAnsiString(),
                   Authentication authentication = authNone, const SSLConfig& config = SSLConfig());
    /// As CSISMTPClient.
    ~CSISMTPSClient() override;

  private:
    explicit CSISMTPSClient(CCLSocket* socket, const SAnsiString& localHost, const SAnsiString& user,
                            const SAnsiString& password, Authentication authentication);
};

}  // namespace TarnLibA500
