#pragma once

#include "tarnlib/csismtpclient.h"

namespace TarnLibA500 {

/// Sends mails, each over a connection of its own. One thread at a time uses an object.
///
///     CSISMTPMail::Settings settings;
///     settings.host = "mail.example.com";
///     settings.user = "reports";
///     settings.password = password;
///     CSISMTPMail mail(settings);
///     mail.Send(message);            // throws CSISMTPMailException
class TARN_API CSISMTPMail {
  public:
    /// Where and as whom.
    struct Settings {
        SAnsiString host;         ///< the server
        unsigned short port = 0;  ///< 0: 25, with TLS 465
        SAnsiString localHost;    ///< how the server is greeted; empty: SMTPHelper::GetLocalHost
        SAnsiString user;         ///< empty: nobody logs in
        SAnsiString password;     ///< his
        CSISMTPClient::Authentication auth = CSISMTPClient::authNone;     ///< how he logs in
        bool tls = false;                                                 ///< TLS from the first byte on
        SSLConfig ssl;                                                    ///< for that, and for STARTTLS
        CSISMTPClient::StartTls startTls = CSISMTPClient::startTlsNever;  ///< when TLS begins later
        unsigned seconds = 60;                                            ///< that each wait may take
        unsigned secondsForMessage = 300;  ///< that the server may take for the message
        SProgress* progress = nullptr;     ///< told how much of a message is sent
    };

    /// Nothing is connected yet.
    explicit CSISMTPMail(const Settings& settings);
    /// Overwrites the password.
    ~CSISMTPMail();
    /// A password is one object's.
    CSISMTPMail(const CSISMTPMail&) = delete;
    /// A password is one object's.
    CSISMTPMail& operator=(const CSISMTPMail&) = delete;

    /// Connects, sends and takes leave, whatever happens in between; throws when the message is not sent. With the
    /// Bcc line in the header if that is asked for.
    void Send(const CSISMTPMessage& message, bool writeBcc = false);
    /// The recipients of the last message that the server refused, although it was sent.
    const SIArray<SAnsiString>& GetRejectedRecipients() const noexcept { return rejected_; }

  private:
    Settings settings_;
    SIArray<SAnsiString> rejected_;
};

}  // namespace TarnLibA500
