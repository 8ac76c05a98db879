// The dialogue with a mail server: greeting, envelope, message. How a user logs in is in csismtpauth.cpp.
#include "tarnlib/csismtpclient.h"

#include <cstring>
#include <string_view>
#include <utility>
#include <vector>

#include "diag/assert/require.h"
#include "net/dialogue.h"
#include "net/smtpcapability.h"
#include "net/smtpfailure.h"
#include "net/smtpfile.h"
#include "net/smtpform.h"
#include "net/smtpheader.h"
#include "seam/osclock.h"
#include "strings/base/asciichar.h"
#include "strings/base/wipe.h"
#include "tarnlib/cclsocket.h"
#include "tarnlib/csisocket.h"
#include "tarnlib/csitcpsocket.h"
#include "tarnlib/sfilesysexception.h"
#include "tarnlib/smtphelper.h"
#include "tarnlib/sprogress.h"

namespace TarnLibA500 {
namespace {

constexpr const char* kUnit = "csismtpclient";
constexpr const char* kConnect = "CSISMTPClient::Connect";
constexpr const char* kSend = "CSISMTPClient::SendSMTPMessage";
constexpr const char* kSendMessage = "CSISMTPClient::SendMailMessageToSMTPServer";

constexpr unsigned short kPort = 25;
constexpr unsigned short kSecurePort = 465;
constexpr unsigned kLeaveSeconds = 5;

// Codes of replies.
constexpr unsigned kLeastCode = 100;
constexpr unsigned kDone = 250;
constexpr unsigned kWillForward = 251;
constexpr unsigned kGoOn = 354;

bool IsDone(unsigned code) {
    return code == kDone || code == kWillForward;
}

bool IsCompletion(unsigned code) {
    return code >= 200 && code < 300;
}

bool IsCommandRefused(unsigned code) {
    return code >= 500 && code <= 599;
}

/// A recipient is refused, and the others need not be.
bool IsRecipientRefused(unsigned code) {
    return code >= 550 && code <= 553;
}

bool IsContinued(std::string_view line) {
    return line.size() > 3 && line[3] == '-';
}

/// The code of a line; 0 when it has none.
unsigned CodeOf(std::string_view line) {
    if (line.size() < 3 || !IsDigit(line[0]) || !IsDigit(line[1]) || !IsDigit(line[2])) return 0;
    const unsigned code = static_cast<unsigned>(line[0] - '0') * 100 +
                          static_cast<unsigned>(line[1] - '0') * 10 + static_cast<unsigned>(line[2] - '0');
    return code >= kLeastCode ? code : 0;
}

}  // namespace

// ----------------------------------------------------------------------------------------- the object

CSISMTPClient::CSISMTPClient(CSITcpSocket* socket, CCLSocket* secure) noexcept
    : socket_(socket), secure_(secure) {}

// From here on the destructor runs whatever fails.
CSISMTPClient::CSISMTPClient(CSITcpSocket* socket, CCLSocket* secure, const SAnsiString& localHost,
                             const SAnsiString& user, const SAnsiString& password,
                             Authentication authentication)
    : CSISMTPClient(socket, secure) {
    localHost_ = localHost;
    user_ = user;
    password_.copyFrom(password);
    authentication_ = authentication;
}

CSISMTPClient::CSISMTPClient(const SAnsiString& host, unsigned short port, const SAnsiString& localHost,
                             const SAnsiString& user, const SAnsiString& password,
                             Authentication authentication)
    : CSISMTPClient(new CSITcpSocket(host, port != 0 ? port : kPort), nullptr, localHost, user, password,
                    authentication) {}

CSISMTPSClient::CSISMTPSClient(CCLSocket* socket, const SAnsiString& localHost, const SAnsiString& user,
                               const SAnsiString& password, Authentication authentication)
    : CSISMTPClient(socket, socket, localHost, user, password, authentication) {}

CSISMTPSClient::CSISMTPSClient(const SAnsiString& host, unsigned short port, const SAnsiString& localHost,
                               const SAnsiString& user, const SAnsiString& password,
                               Authentication authentication, const SSLConfig& config)
    : CSISMTPSClient(new CCLSocket(host, port != 0 ? port : kSecurePort, config), localHost, user, password,
                     authentication) {}

CSISMTPSClient::~CSISMTPSClient() = default;

CSISMTPClient::~CSISMTPClient() {
    delete socket_;
    Wipe(const_cast<char*>(password_.getString()), password_.getLength());
}

void CSISMTPClient::SetTimeout(unsigned seconds, unsigned secondsForMessage) noexcept {
    timeout_ = seconds;
    messageTimeout_ = secondsForMessage;
}

void CSISMTPClient::SetStartTls(StartTls startTls, const SSLConfig& config) {
    const bool isSecureFromStart = secure_ != nullptr && startTls_ == startTlsNever;
    if (socket_ == nullptr || isSecureFromStart || (secure_ == nullptr && startTls == startTlsNever)) return;
    Disconnect();
    if (startTls == startTlsNever) {
        auto* const plain = new CSITcpSocket(*socket_);
        delete std::exchange(socket_, plain);
        secure_ = nullptr;
    } else {
        auto* const secure = new CCLSocket(socket_->GetHost(), socket_->GetPort(), config);
        delete std::exchange(socket_, secure);
        secure_ = secure;
    }
    startTls_ = startTls;
}

// ----------------------------------------------------------------------------------------- the dialogue

/// Sends a line and reads the reply to it.
unsigned CSISMTPClient::ask(const dialogue::CommandLine& line) {
    replyCode_ = 0;
    replyText_.empty();
    TARN_TRACE_AT(levels::kDetail, kUnit, "Command: %1", line.shown());
    if (!socket_->Send(line.bytes(), line.size(), timeout_)) return 0;
    return WaitForReplyFromSMTPServer(timeout_, nullptr);
}

unsigned CSISMTPClient::ask(const char* word) {
    return ask(dialogue::CommandLine(word, nullptr, 0));
}

unsigned CSISMTPClient::WaitForReplyFromSMTPServer(unsigned seconds, SAnsiString* text) {
    constexpr unsigned long long kTimeouts = 10;  // for all lines together
    constexpr unsigned long long kMillisecondsPerSecond = 1000;
    const unsigned long long deadline =
        osclock::Tick() + (seconds + 1ULL) * kTimeouts * kMillisecondsPerSecond;
    char line[CSITcpSocket::kLineBytes];
    replyCode_ = 0;
    replyText_.empty();
    bool isContinued = true;
    while (isContinued && socket_->GetLine(line, seconds)) {
        TARN_TRACE_AT(levels::kDetail, kUnit, "CSISMTPClient::WaitForReply SMTPreply: %1", line);
        if (!replyText_.isEmpty()) replyText_ += "\r\n";
        replyText_ += line;
        isContinued = IsContinued(line);
        if (!isContinued) replyCode_ = CodeOf(line);
        if (replyText_.getLength() > dialogue::kMostReplyBytes || osclock::Tick() >= deadline) break;
    }
    // What comes later would be taken for the reply to the next command.
    if (replyCode_ == 0) socket_->AbortSocket();
    if (text != nullptr) *text = replyText_;
    return replyCode_;
}

/// Traces the last reply and throws it, or that there was none.
void CSISMTPClient::failWithReply(const char* step, const SAnsiString& command) const {
    const int code = replyCode_ != 0 ? static_cast<int>(replyCode_) : CSISMTPMailException::noReply;
    const SAnsiString reply = replyText_.isEmpty() ? SAnsiString("no reply") : replyText_;
    smtp::Fail(kUnit, step, code, command + ": " + reply);
}

bool CSISMTPClient::isUsable() const {
    return isReady_ && socket_->IsOpen();
}

// ----------------------------------------------------------------------------------------- the session

bool CSISMTPClient::Connect() {
    try {
        establish();
        return true;
    } catch (const CSISMTPMailException& failure) {  // traced where it failed
        if (failure.GetErrorCode() == CSISMTPMailException::messageNotPossible) throw;
        return false;
    }
}

/// What would end a line, or a text of the authentication, in the middle.
void CSISMTPClient::checkSettings() const {
    const auto refuse = [](const char* what) {
        smtp::Fail(kUnit, kConnect, CSISMTPMailException::messageNotPossible,
                   what + SAnsiString(" with a character that must not be sent"));
    };
    if (socket_ != nullptr && smtp::HasControls(smtp::View(socket_->GetHost()))) refuse("a host");
    if (!smtp::IsPrintable(smtp::View(localHost_)) ||
        smtp::View(localHost_).find_first_of(" <>") != std::string_view::npos)
        refuse("a local host");
    if (smtp::HasControls(smtp::View(user_))) refuse("a user");
    if (smtp::HasControls(smtp::View(password_))) refuse("a password");
}

/// Connects, or throws.
void CSISMTPClient::establish() {
    checkSettings();
    if (socket_ != nullptr) socket_->AbortSocket();
    isGreeted_ = isReady_ = isInTransaction_ = false;
    replyCode_ = 0;
    replyText_.empty();
    if (!openSocket()) smtp::Fail(kUnit, kConnect, CSISMTPMailException::cannotConnect, whyNoConnection());
    greet(true);
    if (startTls_ != startTlsNever) upgrade();
    if (!user_.isEmpty()) SecurityCheck(isExtended_ ? hello_ : SAnsiString());
    isReady_ = true;
}

SAnsiString CSISMTPClient::whyNoConnection() const {
    if (socket_ == nullptr) return "no socket";
    SAnsiString reason = CSISocket::appendPort(socket_->GetHost(), socket_->GetPort());
    if (secure_ != nullptr && !secure_->GetFailureText().isEmpty())
        reason << ": " << secure_->GetFailureText();
    return reason;
}

/// Until the server knows the client, or throws.
void CSISMTPClient::greet(bool waitsForGreeting) {
    unsigned reply = 0;
    if (negotiateSMTP(reply, &hello_, waitsForGreeting)) return;
    const SAnsiString command = isGreeted_ ? "the greeting of the client" : "the greeting of the server";
    if (reply == 0) failWithReply(kConnect, command);
    smtp::Fail(kUnit, kConnect, CSISMTPMailException::cannotConnect, command + ": " + replyText_);
}

/// Goes over to TLS where the server does, or throws.
void CSISMTPClient::upgrade() {
    constexpr unsigned kGoAhead = 220;
    const bool isOffered = isExtended_ && smtp::Offers(smtp::View(hello_), "STARTTLS");
    const unsigned code = isOffered ? ask("STARTTLS") : 0;
    if (isOffered && code == 0) failWithReply(kConnect, "STARTTLS");
    if (code != kGoAhead) {
        const SAnsiString reason = isOffered ? replyText_ : SAnsiString("it does not offer STARTTLS");
        if (startTls_ == startTlsRequired)
            smtp::Fail(kUnit, kConnect, CSISMTPMailException::cannotConnect,
                       "the server speaks no TLS: " + reason);
        TARN_TRACE_AT(levels::kLoss, kUnit, "the connection to %1 stays in clear text: %2",
                      socket_->GetHost(), reason);
        return;
    }
    if (!secure_->NegotiateCCL())
        smtp::Fail(kUnit, kConnect, CSISMTPMailException::cannotConnect, "STARTTLS: " + whyNoConnection());
    greet(false);  // what the server said in clear text may be somebody else's word
}

bool CSISMTPClient::openSocket() {
    if (!Require(socket_ != nullptr, kUnit, "Error opening connection, socket was not initialized."))
        return false;
    const auto open = [this] {
        return startTls_ != startTlsNever ? secure_->SetupBaseTcp() : socket_->TcpOpen();
    };
    if (open()) return true;
    TARN_TRACE_AT(levels::kFailure, kUnit, "TCP open failed for %1, retrying", socket_->GetHost());
    if (open()) return true;
    TARN_TRACE_AT(levels::kFailure, kUnit, "TCP open still failed for %1, give up", socket_->GetHost());
    return false;
}

bool CSISMTPClient::negotiateSMTP(unsigned& reply, SAnsiString* text, bool waitsForGreeting) {
    if (waitsForGreeting) {
        reply = WaitForReplyFromSMTPServer(timeout_, text);
        isGreeted_ = IsCompletion(reply);
        if (!isGreeted_) socket_->AbortSocket();
        if (!isGreeted_) return false;
    }
    if (localHost_.isEmpty()) localHost_ = SMTPHelper::GetLocalHost();
    const auto greet = [this](const char* word) {
        return ask(dialogue::CommandLine(word, localHost_.getString(), localHost_.getLength()));
    };
    reply = greet("EHLO");
    isExtended_ = !IsCommandRefused(reply);
    if (!isExtended_) reply = greet("HELO");
    takes8Bit_ = isExtended_ && smtp::Offers(smtp::View(replyText_), "8BITMIME");
    if (text != nullptr) *text = replyText_;
    return reply == kDone;
}

unsigned CSISMTPClient::SMTPQuit() {
    replyCode_ = 0;
    replyText_.empty();
    TARN_TRACE_AT(levels::kDetail, kUnit, "Command: QUIT");
    if (!socket_->SendString("QUIT\r\n", kLeaveSeconds)) return 0;
    return WaitForReplyFromSMTPServer(kLeaveSeconds, nullptr);
}

void CSISMTPClient::Disconnect() {
    constexpr unsigned kCloses = 221;
    const bool isTakingLeave = isGreeted_ && socket_->IsOpen();
    isGreeted_ = isReady_ = isInTransaction_ = false;
    if (isTakingLeave && SMTPQuit() != kCloses)
        TARN_TRACE_AT(levels::kFailure, kUnit, "CSISMTPClient::Disconnect: %1", replyText_);
    if (socket_ != nullptr) socket_->AbortSocket();
}

bool CSISMTPClient::CheckAliveness() {
    SAnsiString reason("no connection");
    if (isUsable()) {
        if (ask("NOOP") == kDone) return true;
        reason = replyText_.isEmpty() ? SAnsiString("no reply") : replyText_;
    }
    TARN_TRACE_AT(levels::kFailure, kUnit, "CSISMTPClient::CheckAliveness: %1", reason);
    return false;
}

// ----------------------------------------------------------------------------------------- a message

unsigned CSISMTPClient::SendSMTPMessage(const CSISMTPMessage& message, bool writeBcc) {
    rejected_.RemoveAll();
    message.check();
    if (!isUsable()) smtp::Fail(kUnit, kSend, CSISMTPMailException::cannotConnect, "no connection");
    smtp::Form form;
    form.localHost = localHost_;
    form.writesBcc = writeBcc;
    form.takes8Bit = takes8Bit_;
    form.doublesDots = true;
    try {
        smtp::TemporaryFile built;
        message.build(built.file(), form);
        sendEnvelope(message);
        return SendMailMessageToSMTPServer(built.file());
    } catch (const SFileException& failure) {
        smtp::Fail(kUnit, kSend, CSISMTPMailException::messageNotPossible, failure.toString());
    } catch (const SFileSysException& failure) {
        smtp::Fail(kUnit, kSend, CSISMTPMailException::messageNotPossible, failure.toString());
    }
}

void CSISMTPClient::sendEnvelope(const CSISMTPMessage& message) {
    // The envelope of a message that came to nothing is still open.
    if (isInTransaction_ && ask("RSET") != kDone) failWithReply(kSend, "RSET");
    isInTransaction_ = false;
    SendFromAddressToSMTPServer(message);
    isInTransaction_ = true;
    sendList(message.to_);
    sendList(message.cc_);
    sendList(message.bcc_);
}

unsigned CSISMTPClient::SendFromAddressToSMTPServer(const CSISMTPMessage& message) {
    const SAnsiString command = "MAIL From:<" + SMTPHelper::GetAddress(message.sender_) + ">";
    const unsigned code = ask(command.getString());
    if (!IsDone(code)) failWithReply("CSISMTPClient::SendFromAddressToSMTPServer", command);
    return code;
}

/// What the server said last decides for the list.
void CSISMTPClient::sendList(const SIArray<SAnsiString>& addresses) {
    if (IsDone(SendAddressesToSMTPServer(addresses))) return;
    const SAnsiString& last = addresses[recipientsAsked_ - 1];
    failWithReply(kSend, "RCPT To:<" + SMTPHelper::GetAddress(last) + ">");
}

unsigned CSISMTPClient::SendAddressesToSMTPServer(const SIArray<SAnsiString>& addresses) {
    unsigned code = kDone;
    recipientsAsked_ = 0;
    for (const SAnsiString& address : addresses) {
        const SAnsiString command = "RCPT To:<" + SMTPHelper::GetAddress(address) + ">";
        code = ask(command.getString());
        ++recipientsAsked_;
        if (IsDone(code)) continue;
        TARN_TRACE_AT(levels::kLoss, kUnit, "CSISMTPClient::SendAddressesToSMTPServer: %1: %2", command,
                      replyText_);
        if (!IsRecipientRefused(code)) break;
        rejected_.Add(address);
    }
    return code;
}

unsigned CSISMTPClient::SendMailMessageToSMTPServer(SFile& file) {
    if (ask("DATA") != kGoOn) failWithReply(kSendMessage, "DATA");
    try {
        sendFile(file);
    } catch (...) {
        socket_->AbortSocket();  // an orderly end would make a part of a message a whole one
        throw;
    }
    isInTransaction_ = false;
    if (!IsDone(WaitForReplyFromSMTPServer(messageTimeout_, nullptr)))
        failWithReply(kSendMessage, "the message");
    return replyCode_;
}

/// With the end of a message behind it: a small packet of its own would wait until the one before is acknowledged.
void CSISMTPClient::sendFile(SFile& file) {
    constexpr unsigned kBlockBytes = 256 * 1024;
    constexpr std::string_view kEnd = "\r\n.\r\n";
    std::vector<char> block(kBlockBytes + kEnd.size());
    const auto total = static_cast<unsigned long long>(file.sizeEx());
    unsigned long long sent = 0;
    file.seekEx(SFile::seekBegin, 0);
    replyCode_ = 0;
    replyText_.empty();
    while (sent < total) {
        if (progress_ != nullptr) progress_->advance(sent, total);
        const auto read = static_cast<unsigned>(file.read(block.data(), kBlockBytes));
        sent += read;
        const unsigned end = sent == total ? kEnd.size() : 0;
        std::memcpy(block.data() + read, kEnd.data(), end);
        if (read == 0 || !socket_->Send(block.data(), read + end, timeout_))
            failWithReply(kSendMessage, "the message");
    }
}

}  // namespace TarnLibA500
