#pragma once

#include "tarnlib/siarray.h"
#include "tarnlib/sstring.h"
#include "tarnlib/tarnapi.h"

/// A mail to be sent: addresses, a subject, a text and files.
///
/// Texts are narrow text and go as UTF-8. An address is `addr` or `Name <addr>`; the addr is ASCII. The header has
/// encoded words where it needs them, and files go as Base64. What is wrong shows when the message is built, as
/// CSISMTPMailException with the code 5 and before anything of it is sent: no sender, no recipient, a control
/// character or an angle bracket in an address, a file that cannot be read. A line end in a subject, in the name
/// of a file or in its type becomes a blank. One thread at a time uses an object.
///
///     CSISMTPMessage message;
///     message.SetSender("Reports <reports@example.com>");
///     SIArray<SAnsiString> to;
///     to.Add("ann@example.com");
///     message.SetTo(to);
///     message.SetSubject("The figures of November");
///     message.SetBody("Dear Ann,\n\nhere they are.\n");
///     message.AddAttachment(CSISMTPMessage::MimeAttachment("C:\\data\\november.csv", "text/csv"));
namespace TarnLibA500 {

class SFile;

namespace smtp {
class MessageFile;
struct Form;
}  // namespace smtp

/// A mail to be sent.
class TARN_API CSISMTPMessage {
  public:
    /// A file that goes with a message.
    class TARN_API MimeAttachment {
      public:
        /// The file, its content type ("application/octet-stream" for an empty one), and the name that the reader
        /// sees (the file's own, without directories, for an empty one).
        MimeAttachment(const SAnsiString& path, const SAnsiString& type = SAnsiString(),
                       const SAnsiString& name = SAnsiString());

        /// The file.
        const SAnsiString& GetPath() const noexcept { return path_; }
        /// The content type.
        const SAnsiString& GetType() const noexcept { return type_; }
        /// The name that the reader sees.
        const SAnsiString& GetName() const noexcept { return name_; }

      private:
        SAnsiString path_;
        SAnsiString type_;
        SAnsiString name_;
    };

    /// Without anything.
    CSISMTPMessage();
    /// Takes everything that the other one has.
    CSISMTPMessage(const CSISMTPMessage& other);
    /// Takes everything that the other one has.
    CSISMTPMessage& operator=(const CSISMTPMessage& other);
    /// Not virtual: a message is a value.
    ~CSISMTPMessage();

    /// Who sends it; delivery reports go there, too.
    void SetSender(const SAnsiString& address);
    /// Whom it is for.
    void SetTo(const SIArray<SAnsiString>& addresses);
    /// Who gets a copy.
    void SetCc(const SIArray<SAnsiString>& addresses);
    /// Who gets a copy that the others do not know of: these are not in the header, unless that is asked for.
    void SetBcc(const SIArray<SAnsiString>& addresses);
    /// Where answers go, if not to the sender.
    void SetReplyTo(const SIArray<SAnsiString>& addresses);
    /// The subject.
    void SetSubject(const SAnsiString& subject);
    /// The text, with line ends of any kind.
    void SetBody(const SAnsiString& text);
    /// What the text is: "html" without regard to case, and plain text for anything else.
    void SetBodyFormat(const SAnsiString& format);
    /// The files, in place of those before.
    void SetAttachments(const SIArray<MimeAttachment>& attachments);
    /// One file more.
    void AddAttachment(const MimeAttachment& attachment);

    /// Writes the message into a new file, or over an old one, as mail programs read it (.eml); with the Bcc
    /// line if that is asked for. Nothing is left of a file that does not become whole.
    void Save(const SAnsiString& path, bool writeBcc = false) const;

  private:
    friend class CSISMTPClient;
    friend class CSISMTPMail;

    void check() const;
    void build(SFile& file, const smtp::Form& form) const;
    void CreateSMTPHeader(smtp::MessageFile& file, const smtp::Form& form) const;
    void CreateSMTPBody(smtp::MessageFile& file, const smtp::Form& form) const;
    static void AddFileInBody(const MimeAttachment& attachment, smtp::MessageFile& file);
    static SAnsiString GenerateDate(bool isUniversal);

    SAnsiString sender_;
    SIArray<SAnsiString> to_;
    SIArray<SAnsiString> cc_;
    SIArray<SAnsiString> bcc_;
    SIArray<SAnsiString> replyTo_;
    SAnsiString subject_;
    SAnsiString body_;
    SAnsiString bodyFormat_;
    SIArray<MimeAttachment> attachments_;
};

}  // namespace TarnLibA500
