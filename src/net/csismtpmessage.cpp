// What a message is made of, and in which order. The lines of the header are in smtpheader.cpp, the text in
// smtptext.cpp.
#include "tarnlib/csismtpmessage.h"

#include <vector>

#include "kcm/kcm.h"
#include "net/smtpbase64.h"
#include "net/smtpfailure.h"
#include "net/smtpform.h"
#include "net/smtpheader.h"
#include "net/smtptext.h"
#include "security/freshfile.h"
#include "strings/text/lineend.h"
#include "tarnlib/pathparts.h"
#include "tarnlib/sdatetime.h"
#include "tarnlib/sfilesysexception.h"
#include "tarnlib/smtphelper.h"

namespace TarnLibA500 {
namespace {

constexpr const char* kUnit = "csismtpmessage";

[[noreturn]] void Refuse(const SAnsiString& details) {
    smtp::Fail(kUnit, "CSISMTPMessage", CSISMTPMailException::messageNotPossible, details);
}

/// A text that may have characters which end a line, for a message about it.
SAnsiString Shown(const SAnsiString& text) {
    SAnsiString shown;
    for (const char c : smtp::View(text)) shown += smtp::HasControls({&c, 1}) ? '?' : c;
    return shown;
}

void CheckAddress(const char* field, const SAnsiString& address) {
    if (!smtp::Mailbox(address).isValid()) {
        Refuse(STraceHelper("%1: '%2' is no address that can be sent", field, Shown(address)));
    }
}

void CheckAddresses(const char* field, const SIArray<SAnsiString>& addresses) {
    for (const SAnsiString& address : addresses) CheckAddress(field, address);
}

/// 32 hexadecimal digits that no other message has.
SAnsiString UniqueDigits() {
    unsigned char bytes[16];
    if (!KCM400::random(bytes, sizeof bytes)) Refuse("there are no random bytes for an identifier");
    SAnsiString digits;
    constexpr const char* kDigits = "0123456789abcdef";
    for (const unsigned char byte : bytes) digits.concat(kDigits[byte >> 4]).concat(kDigits[byte & 0xF]);
    return digits;
}

SAnsiString TypeOf(const CSISMTPMessage::MimeAttachment& attachment) {
    const SAnsiString type = smtp::WithoutLineEnds(smtp::ToUtf8(attachment.GetType()));
    if (!smtp::IsPrintable(smtp::View(type)))
        Refuse(STraceHelper("'%1' is no content type", Shown(attachment.GetType())));
    return type;
}

/// The end of a part's content and the line behind it, which belong together.
void WriteDelimiter(smtp::MessageFile& file, std::string_view end) {
    file.write("\r\n--");
    file.write(smtp::kBoundary);
    file.write(end);
}

}  // namespace

// ----------------------------------------------------------------------------------------- what it has

CSISMTPMessage::MimeAttachment::MimeAttachment(const SAnsiString& path, const SAnsiString& type,
                                               const SAnsiString& name)
    : path_(path),
      type_(type.isEmpty() ? SAnsiString("application/octet-stream") : type),
      name_(name.isEmpty() ? GetBottomLevelDir(UnifyAllSlashes(path), '\\') : name) {}

CSISMTPMessage::CSISMTPMessage() = default;
CSISMTPMessage::CSISMTPMessage(const CSISMTPMessage& other) = default;
CSISMTPMessage& CSISMTPMessage::operator=(const CSISMTPMessage& other) = default;
CSISMTPMessage::~CSISMTPMessage() = default;

void CSISMTPMessage::SetSender(const SAnsiString& address) {
    sender_ = address;
}

void CSISMTPMessage::SetTo(const SIArray<SAnsiString>& addresses) {
    to_ = addresses;
}

void CSISMTPMessage::SetCc(const SIArray<SAnsiString>& addresses) {
    cc_ = addresses;
}

void CSISMTPMessage::SetBcc(const SIArray<SAnsiString>& addresses) {
    bcc_ = addresses;
}

void CSISMTPMessage::SetReplyTo(const SIArray<SAnsiString>& addresses) {
    replyTo_ = addresses;
}

void CSISMTPMessage::SetSubject(const SAnsiString& subject) {
    subject_ = subject;
}

void CSISMTPMessage::SetBody(const SAnsiString& text) {
    body_ = text;
}

void CSISMTPMessage::SetBodyFormat(const SAnsiString& format) {
    bodyFormat_ = format;
}

void CSISMTPMessage::SetAttachments(const SIArray<MimeAttachment>& attachments) {
    attachments_ = attachments;
}

void CSISMTPMessage::AddAttachment(const MimeAttachment& attachment) {
    attachments_.Add(attachment);
}

// ----------------------------------------------------------------------------------------- what is built

/// Throws for what must not be sent.
void CSISMTPMessage::check() const {
    CheckAddress("From", sender_);
    CheckAddresses("To", to_);
    CheckAddresses("Cc", cc_);
    CheckAddresses("Bcc", bcc_);
    CheckAddresses("Reply-To", replyTo_);
    if (to_.GetSize() + cc_.GetSize() + bcc_.GetSize() == 0) Refuse("there is no recipient");
}

/// Into a file that is empty.
void CSISMTPMessage::build(SFile& file, const smtp::Form& form) const {
    smtp::MessageFile message(file);
    CreateSMTPHeader(message, form);
    CreateSMTPBody(message, form);
    message.flush();
}

void CSISMTPMessage::Save(const SAnsiString& path, bool writeBcc) const {
    check();
    smtp::Form form;
    form.localHost = SMTPHelper::GetLocalHost();
    form.writesBcc = writeBcc;
    try {
        FreshFile fresh(path);
        {
            SFile file(fresh.path(), SFile::writeOnly | SFile::noInherit, SFile::readWriteMask,
                       SFile::denyReadAndWrite);
            build(file, form);
        }
        fresh.takePlace();
    } catch (const SFileException& failure) {
        Refuse(failure.toString());
    } catch (const SFileSysException& failure) {
        Refuse(failure.toString());
    }
}

void CSISMTPMessage::CreateSMTPHeader(smtp::MessageFile& file, const smtp::Form& form) const {
    const auto write = [&file](const char* field, const SIArray<SAnsiString>& addresses, const char* traced) {
        if (addresses.GetSize() == 0) return;
        const SAnsiString line = smtp::AddressLine(field, addresses);
        TARN_TRACE_AT(levels::kDetail, kUnit, traced, WithoutLineEnd(line));
        file.write(line);
    };
    SIArray<SAnsiString> sender;
    sender.Add(sender_);
    file.write("Message-ID: <" + UniqueDigits() + "@" + form.localHost + ">\r\n");
    file.write("Date: " + GenerateDate(false) + "\r\n");
    file.write(smtp::AddressLine("From", sender));
    write("To", to_, "TO: addresses in mail header: %1");
    write("Cc", cc_, "CC: addresses in mail header: %1");
    if (form.writesBcc) write("Bcc", bcc_, "BCC: addresses in mail header: %1");
    write("Reply-To", replyTo_, "Reply-To: addresses in mail header: %1");
    const SAnsiString subject("Subject: ");
    file.write(subject + smtp::HeaderText(smtp::ToUtf8(subject_), subject.getLength()) + "\r\n");
    file.write("Mime-Version: 1.0\r\n");
}

/// The zone is that of the system, or universal time.
SAnsiString CSISMTPMessage::GenerateDate(bool isUniversal) {
    constexpr const char* kMonths[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                       "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    const STimeZone& zone = isUniversal ? STimeZone::TZ_UTC() : STimeZone::TZ_Local();
    const SDateTime now = SDateTime::GetCurrentDateTime();
    // The name comes from here and not from the pattern: that would take it from the thread's locale.
    const SAnsiString month(kMonths[now.GetMonth(zone) - 1]);
    const long long minutes = -zone.UTCOffset(now).GetTotalMinutes();
    const long long distance = minutes < 0 ? -minutes : minutes;
    const long long digits = distance / 60 * 100 + distance % 60;
    SAnsiString number;
    number << digits;
    while (number.getLength() < 4) number.insertChars(0, "0");
    const SAnsiString pattern = "dd '" + month + "' yyyy HH':'mm':'ss";
    return now.Format(pattern.getString(), zone) + (minutes < 0 ? " -" : " +") + number;
}

void CSISMTPMessage::CreateSMTPBody(smtp::MessageFile& file, const smtp::Form& form) const {
    const SAnsiString text = smtp::ToUtf8(body_);
    const smtp::Encoding encoding = smtp::EncodingOf(smtp::View(text), form.takes8Bit);
    // A parameter in a line of its own is one only behind a blank.
    file.write("Content-Type: multipart/mixed;\r\n boundary=\"");
    file.write(smtp::kBoundary);
    file.write("\"\r\n\r\nThis is a multi-part message in MIME format.");
    WriteDelimiter(file, "\r\n");
    file.write(bodyFormat_.compareNoCase("html") == 0 ? "Content-Type: text/html;\r\n"
                                                      : "Content-Type: text/plain;\r\n");
    file.write(" charset=\"UTF-8\"\r\n");
    if (encoding == smtp::Encoding::EightBit) file.write("Content-Transfer-Encoding: 8bit\r\n");
    if (encoding == smtp::Encoding::Base64) file.write("Content-Transfer-Encoding: base64\r\n");
    file.write("\r\n");
    smtp::WriteText(smtp::View(text), encoding, form.doublesDots, file);
    for (const MimeAttachment& attachment : attachments_) {
        WriteDelimiter(file, "\r\n");
        AddFileInBody(attachment, file);
    }
    WriteDelimiter(file, "--\r\n");
}

void CSISMTPMessage::AddFileInBody(const MimeAttachment& attachment, smtp::MessageFile& file) {
    constexpr unsigned kBlockBytes = 57 * 1024;  // whole lines
    const SAnsiString type = "Content-Type: " + TypeOf(attachment) + "; name=\"";
    const SAnsiString name("Content-Disposition: attachment; filename=\"");
    const SAnsiString utf8 = smtp::ToUtf8(attachment.GetName());
    file.write(type + smtp::QuotedText(utf8, type.getLength()) + "\"\r\n");
    file.write("Content-Transfer-Encoding: base64\r\n");
    file.write(name + smtp::QuotedText(utf8, name.getLength()) + "\"\r\n\r\n");
    SFile source(attachment.GetPath(), SFile::readOnly | SFile::sequential | SFile::noInherit,
                 SFile::readWriteMask, SFile::denyNothing);
    std::vector<unsigned char> block(kBlockBytes);
    smtp::Base64Lines base64(file);
    for (;;) {
        const int read = source.read(block.data(), kBlockBytes);
        if (read <= 0) break;
        base64.add(block.data(), static_cast<unsigned>(read));
    }
    base64.finish();
}

}  // namespace TarnLibA500
