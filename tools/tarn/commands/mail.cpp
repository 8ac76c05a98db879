#include <optional>

#include "command.h"
#include "libraryprogress.h"
#include "network.h"
#include "options.h"
#include "passphrase.h"
#include "streams.h"
#include "system.h"
#include "tarnlib/csismtpmail.h"

namespace tarn {
namespace {

using TarnLibA500::CSISMTPClient;
using TarnLibA500::CSISMTPMail;
using TarnLibA500::CSISMTPMailException;
using TarnLibA500::CSISMTPMessage;
using TarnLibA500::SAnsiString;
using TarnLibA500::SIArray;

constexpr const char* kHelp =
    "(-host H | -write FILE) -from A -to A,B -subject S -body F [options]\n\n"
    "Sends a mail, or writes it into a file (.eml) and sends nothing.\n\n"
    "  -from A       the sender: addr or \"Name <addr>\"\n"
    "  -to A,B       the recipients; -cc, -bcc and -reply-to take such lists, too\n"
    "  -subject S    the subject\n"
    "  -body F       the file with the text in UTF-8, - for standard input\n"
    "  -html         the text is HTML\n"
    "  -attach F     a file that goes with it; may be given several times\n\n"
    "  -host H       the mail server\n"
    "  -port N       its port (25; 465 with -tls)\n"
    "  -tls          speaks TLS from the first byte on\n"
    "  -starttls     begins in clear text and goes over to TLS, or sends nothing\n"
    "  -store PEM    the certificates that are trusted (otherwise the system's)\n"
    "  -user U       logs in\n"
    "  -pass-env N   the environment variable that has the password\n"
    "  -pass-file F  the file whose first line is the password\n"
    "  -timeout S    seconds that each wait may take (60)\n\n"
    "Exit status: 0; 1 when the server refuses the mail or some recipients, with a line for each; 2 when "
    "the\n"
    "connection or the login failed, or the mail cannot be built.\n";

/// The addresses of a list by commas, which may stand in names between quotes.
SIArray<SAnsiString> Addresses(const Options& options, const char* name) {
    SIArray<SAnsiString> addresses;
    for (const std::string& list : options.values(name)) {
        std::string address;
        bool isQuoted = false;
        for (const char c : list + ",") {
            if (c == '"') isQuoted = !isQuoted;
            if (c != ',' || isQuoted) {
                address += c;
            } else {
                if (address.find_first_not_of(' ') != address.npos) addresses.Add(address.c_str());
                address.clear();
            }
        }
        if (isQuoted) throw Failure(std::string("a quote is missing in -") + name);
    }
    return addresses;
}

SAnsiString TextOf(const std::string& name) {
    constexpr std::size_t kPiece = 64 * 1024;
    Source source(name);
    SAnsiString text;
    for (std::string piece = source.read(kPiece); !piece.empty(); piece = source.read(kPiece))
        text.concat(piece.data(), static_cast<std::uint32_t>(piece.size()));
    return text;
}

CSISMTPMessage MessageOf(const Options& options) {
    CSISMTPMessage message;
    message.SetSender(options.value("from").c_str());
    message.SetTo(Addresses(options, "to"));
    message.SetCc(Addresses(options, "cc"));
    message.SetBcc(Addresses(options, "bcc"));
    message.SetReplyTo(Addresses(options, "reply-to"));
    message.SetSubject(options.value("subject").c_str());
    message.SetBody(TextOf(options.value("body")));
    if (options.has("html")) message.SetBodyFormat("html");
    for (const std::string& file : options.values("attach"))
        message.AddAttachment(CSISMTPMessage::MimeAttachment(file.c_str()));
    return message;
}

CSISMTPMail::Settings SettingsOf(const Options& options) {
    constexpr int kMostPort = 65535;
    constexpr int kMostSeconds = 86'400;
    CSISMTPMail::Settings settings;
    settings.host = options.value("host").c_str();
    if (options.has("port"))
        settings.port = static_cast<unsigned short>(options.number("port", 1, kMostPort));
    if (options.has("timeout")) {
        settings.seconds = static_cast<unsigned>(options.number("timeout", 1, kMostSeconds));
        settings.secondsForMessage = settings.seconds;
    }
    settings.user = options.value("user").c_str();
    settings.tls = options.has("tls");
    if (options.has("starttls")) settings.startTls = CSISMTPClient::startTlsRequired;
    settings.ssl.SetCertificateStore(options.value("store").c_str());
    return settings;
}

ExitStatus Send(const Options& options, const CSISMTPMessage& message) {
    std::optional<PassPhrase> password;  // goes last, when nobody shares it any more
    CSISMTPMail::Settings settings = SettingsOf(options);
    if (options.has("user")) settings.password = password.emplace(options);
    LibraryProgress progress;
    settings.progress = &progress;
    CSISMTPMail mail(settings);
    try {
        mail.Send(message);
    } catch (const CSISMTPMailException& failure) {
        constexpr int kLeastReply = 100;
        if (failure.GetErrorCode() < kLeastReply) throw;
        PrintError("tarn mail: " + Str(failure.toString()));
        return kNo;
    }
    for (const SAnsiString& recipient : mail.GetRejectedRecipients())
        PrintError("tarn mail: the server refuses " + Str(recipient));
    return mail.GetRejectedRecipients().GetSize() != 0 ? kNo : kYes;
}

ExitStatus Mail(const Words& arguments) {
    const Options options(
        arguments, {.required = {"from", "subject", "body"},
                    .values = {"host", "write", "port", "store", "user", "pass-env", "pass-file", "timeout",
                               "to", "cc", "bcc", "reply-to", "attach"},
                    .switches = {"html", "tls", "starttls"}});
    if (options.count({"host", "write"}) != 1) throw Failure("one of -host and -write must be given");
    if (options.count({"tls", "starttls"}) == 2) throw Failure("-tls and -starttls are two ways");
    const Network network;
    const CSISMTPMessage message = MessageOf(options);
    if (options.has("host")) return Send(options, message);
    message.Save(options.value("write").c_str());
    return kYes;
}

}  // namespace

const Command kMailCommand = {"mail", "sends a mail with files, or writes it into a file", kHelp, Mail};

}  // namespace tarn
