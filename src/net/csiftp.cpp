// The control connection: dialogue, login, directories. The data connection is in csiftpdata.cpp.
#include "tarnlib/csiftp.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "net/dialogue.h"
#include "net/socketfailure.h"
#include "net/socketlines.h"
#include "tarnlib/csisocket.h"
#include "tarnlib/pathparts.h"
#include "tarnlib/sfilesys.h"
#include "tarnlib/sfilesysexception.h"

namespace TarnLibA500 {
namespace {

constexpr const char* kUnit = "csiftp";

// The numbers of the message texts.
constexpr unsigned short kNoTextType = 41318;
constexpr unsigned short kUserRefused = 41321;
constexpr unsigned short kPasswordRefused = 41322;
constexpr unsigned short kConnectionFailed = 41327;
constexpr unsigned short kNoBinaryType = 41332;
constexpr unsigned short kCommandNotSent = 41333;

// Codes of replies that stand for more than one thing, or decide a way.
constexpr int kReady = 220;
constexpr int kLoggedIn = 230;
constexpr int kNeedsPassword = 331;
constexpr int kNeedsAccount = 332;
constexpr int kRefusedAbove = 400;
constexpr int kServiceCloses = 421;

/// Between the first two quotes.
SAnsiString Quoted(const SAnsiString& reply) {
    const char* const open = std::strchr(reply.getString(), '"');
    const char* const close = open != nullptr ? std::strchr(open + 1, '"') : nullptr;
    if (close == nullptr) return SAnsiString();
    return SAnsiString(open + 1, static_cast<std::uint32_t>(close - open - 1));
}

}  // namespace

CSIftp::CSIftp()
    : control_(CSISocket::kInvalid),
      data_(CSISocket::kInvalid),
      listening_(CSISocket::kInvalid),
      lines_(new SocketLines) {
    lines_->setTimeout(timeout_);
}

CSIftp::~CSIftp() {
    const ossockets::Socket data(data_);
    const ossockets::Socket listening(listening_);
    closeControl();
    delete lines_;
}

void CSIftp::fail(CSIftpException::ErrorCodes code, unsigned short messageID,
                  const SAnsiString& detail) const {
    const CSIftpException failure(code, messageID, detail);
    TARN_TRACE_AT(levels::kFailure, kUnit, "%1", failure.GetDetails());
    throw failure;
}

void CSIftp::closeControl() noexcept {
    const ossockets::Socket closed(std::exchange(control_, CSISocket::kInvalid));
    lines_->attach(CSISocket::kInvalid);
    connected_ = false;
    wantsLastBar_ = false;
}

void CSIftp::SetTimeout(unsigned seconds) noexcept {
    timeout_ = seconds;
    lines_->setTimeout(seconds);
}

// ----------------------------------------------------------------------------------------- the dialogue

bool CSIftp::SendControlMsg(const char* command, const char* argument, unsigned argumentBytes) {
    const dialogue::CommandLine line(command, argument, argumentBytes);
    TARN_TRACE_AT(levels::kDetail, kUnit, "Command: %1", line.shown());
    if (SendAll(control_, line.bytes(), line.size(), timeout_)) return true;
    closeControl();  // a part of the line may have gone out
    TraceSocketFailure(kUnit, "the command %1 cannot be sent: %2", command, CSISocket::getLastErrorStr());
    return false;
}

int CSIftp::GetReply(SAnsiString& text) {
    dialogue::Reply reply;
    dialogue::Outcome outcome = dialogue::Outcome::Failed;
    WSASetLastError(0);
    lines_->beginReply();
    try {
        outcome = dialogue::ReadReply(*lines_, reply);
    } catch (...) {
        closeControl();
        throw;
    }
    // What comes later would be taken for the reply to the next command.
    if (outcome != dialogue::Outcome::Whole || reply.code == kServiceCloses) closeControl();
    const int error = CSISocket::getLastError();
    text = reply.text.isEmpty() && outcome != dialogue::Outcome::Whole
               ? SAnsiString("Failed to get replay from ftp server")
               : reply.text;
    TARN_TRACE_AT(outcome == dialogue::Outcome::Whole ? levels::kDetail : levels::kFailure, kUnit,
                  "Reply: %1", text);
    if (outcome == dialogue::Outcome::Failed) {
        WSASetLastError(error);
        fail(CSIftpException::controlConnectionError, kConnectionFailed,
             "Failed to read reply from control connection: " +
                 (error != 0 ? CSISocket::getLastErrorStr() : SAnsiString("it is too long")));
    }
    return reply.code;
}

/// Sends a command and reads the reply. 0 when the argument is refused.
int CSIftp::command(const char* word, const SAnsiString* argument, SAnsiString& reply) {
    if (argument != nullptr && !dialogue::IsOneLine(*argument, kUnit)) return 0;
    const bool wasConnected = connected_;
    const char* const bytes = argument != nullptr ? argument->getString() : nullptr;
    const unsigned count = argument != nullptr ? argument->getLength() : 0;
    if (wasConnected && SendControlMsg(word, bytes, count)) return GetReply(reply);
    failToSend(word, wasConnected ? CSISocket::getLastErrorStr() : SAnsiString("no connection"));
}

void CSIftp::failToSend(const char* word, const SAnsiString& reason) const {
    fail(CSIftpException::controlConnectionError, kCommandNotSent, word + (": " + reason));
}

/// True when a command is answered with one of two codes.
bool CSIftp::isDone(const char* word, const SAnsiString* argument, int code, int otherCode) {
    SAnsiString reply;
    const int answer = command(word, argument, reply);
    if (answer == code || (otherCode != 0 && answer == otherCode)) return true;
    TARN_TRACE_AT(levels::kFailure, kUnit, "%1 is refused: %2", word, reply);
    return false;
}

// ----------------------------------------------------------------------------------------- the session

bool CSIftp::Connect(const SAnsiString& host, unsigned short port) {
    CloseDataConnection();
    closeControl();
    const unsigned short number = port != 0 ? port : port_;
    const int error = CSISocket::connectMulti(host, number, control_);
    if (error == 0 && ossockets::SetNonBlocking(control_) != 0) closeControl();
    if (control_ == CSISocket::kInvalid) {
        const SAnsiString reason = CSISocket::getLastErrorStr();
        fail(CSIftpException::controlConnectionError, kConnectionFailed,
             CSISocket::appendPort(host, number) + ": " + reason);
    }
    SAnsiString greeting;
    lines_->attach(control_);
    connected_ = GetReply(greeting) == kReady;
    if (connected_) return true;
    TARN_TRACE_AT(levels::kFailure, kUnit, "%1 does not serve: %2", host, greeting);
    closeControl();
    return false;
}

void CSIftp::Disconnect() {
    if (!connected_) return;
    SAnsiString reply;
    try {
        command(CTRL_FTP_QUIT, nullptr, reply);
    } catch (...) {
        CloseDataConnection();
        closeControl();
        throw;
    }
    CloseDataConnection();
    closeControl();
}

/// The code of the last reply, after what the server asked for.
int CSIftp::sendPassword(const SAnsiString& password, const SAnsiString& account, SAnsiString& reply) {
    const int code = command(CTRL_FTP_PASS, &password, reply);
    if (code > kRefusedAbove) fail(CSIftpException::controlConnectionError, kPasswordRefused, reply);
    return code == kNeedsAccount && SendAcct(account) ? kLoggedIn : code;
}

bool CSIftp::Login(const SAnsiString& user, const SAnsiString& password, const SAnsiString& account) {
    if (user.isEmpty() || password.isEmpty()) {
        TARN_TRACE_AT(levels::kFailure, kUnit, "a login takes a user and a password");
        return false;
    }
    if (!dialogue::IsOneLine(user, kUnit) || !dialogue::IsOneLine(password, kUnit) ||
        !dialogue::IsOneLine(account, kUnit))
        return false;
    SAnsiString reply;
    int code = command(CTRL_FTP_USER, &user, reply);
    if (code > kRefusedAbove) fail(CSIftpException::controlConnectionError, kUserRefused, reply);
    if (code == kNeedsPassword || code == kNeedsAccount) code = sendPassword(password, account, reply);
    if (code != kLoggedIn) {
        TARN_TRACE_AT(levels::kFailure, kUnit, "the login of %1 is refused: %2", user, reply);
        return false;
    }
    SetType(binary);
    const SAnsiString utf8("UTF8 ON");
    command(CTRL_FTP_OPTS, &utf8, reply);  // whatever the server says
    return connected_;
}

bool CSIftp::SendAcct(const SAnsiString& account) {
    constexpr int kNotNeeded = 202;
    return isDone(CTRL_FTP_ACCT, &account, kLoggedIn, kNotNeeded);
}

bool CSIftp::CheckAliveness() {
    constexpr int kOkay = 200;
    return isDone(CTRL_FTP_NOOP, nullptr, kOkay);
}

void CSIftp::SetASCII() {
    SetType(ascii);
}

void CSIftp::SetBinary() {
    SetType(binary);
}

void CSIftp::SetType(RepresentationType type) {
    constexpr int kOkay = 200;
    const SAnsiString letter(type == ascii ? "A" : "I");
    SAnsiString reply;
    if (command(CTRL_FTP_TYPE, &letter, reply) != kOkay) {
        fail(CSIftpException::controlConnectionError, type == ascii ? kNoTextType : kNoBinaryType, reply);
    }
    type_ = type;
}

// ----------------------------------------------------------------------------------------- directories

namespace {

constexpr int kFileActionDone = 250;
constexpr int kPathCreated = 257;

}  // namespace

bool CSIftp::ChangeWorkingDir(const SAnsiString& directory) {
    return isDone(CTRL_FTP_CWD, &directory, kFileActionDone);
}

bool CSIftp::ChangeToParentDir() {
    constexpr int kOkay = 200;
    return isDone(CTRL_FTP_CDUP, nullptr, kFileActionDone, kOkay);
}

SAnsiString CSIftp::GetWorkingDir() {
    SAnsiString reply;
    SAnsiString directory;
    if (command(CTRL_FTP_PWD, nullptr, reply) == kPathCreated) directory = Quoted(reply);
    if (!directory.isEmpty()) return directory;
    TARN_TRACE_AT(levels::kFailure, kUnit, "the server does not tell its working directory: %1", reply);
    return directory;
}

bool CSIftp::CreateDir(const SAnsiString& directory) {
    return isDone(CTRL_FTP_MKDIR, &directory, kPathCreated);
}

bool CSIftp::RemoveDir(const SAnsiString& directory) {
    return isDone(CTRL_FTP_RMDIR, &directory, kFileActionDone);
}

bool CSIftp::RemoveFile(const SAnsiString& file) {
    return isDone(CTRL_FTP_RM, &file, kFileActionDone);
}

bool CSIftp::changesTo(const SAnsiString& directory, const SAnsiString& back, bool& exists) {
    SAnsiString reply;
    exists = command(CTRL_FTP_CWD, &directory, reply) == kFileActionDone;
    if (!exists || command(CTRL_FTP_CWD, &back, reply) == kFileActionDone) return true;
    TARN_TRACE_AT(levels::kLoss, kUnit, "the working directory is %1 now, and not %2 again: %3", directory,
                  back, reply);
    return false;
}

bool CSIftp::IsDirExist(const SAnsiString& directory) {
    if (!dialogue::IsOneLine(directory, kUnit)) return false;
    const SAnsiString back = GetWorkingDir();
    bool exists = false;
    if (!back.isEmpty()) changesTo(directory, back, exists);
    return exists;
}

bool CSIftp::CreateDirs(const SAnsiString& path) {
    if (!dialogue::IsOneLine(path, kUnit)) return false;
    const SAnsiString back = GetWorkingDir();
    if (back.isEmpty()) return false;
    const SAnsiString slashed = UnifyAllSlashes(path, '/');
    const char* const end = slashed.getString() + slashed.getLength();
    SAnsiString level;
    for (const char* at = slashed.getString(); at != end;) {
        const char* const name = at;
        at = std::find(at, end, '/');
        level.concat(name, static_cast<std::uint32_t>(at - name));
        bool exists = false;
        if (at != name && !changesTo(level, back, exists)) return false;
        if (at != name && !exists && !CreateDir(level)) return false;
        if (at != end && (at != name || level.isEmpty())) level.concat('/');
        if (at != end) ++at;
    }
    return true;
}

// ----------------------------------------------------------------------------------------- local files

SAnsiString CSIftp::localPath(const SAnsiString& name) const {
    return IsAbsolutePath(name) ? name : MakePath(GetLocalWorkingDir(), name);
}

bool CSIftp::ChangeLocalWorkingDir(const SAnsiString& directory) {
    const SAnsiString path = localPath(directory);
    try {
        if (SFileSys::isDir(path)) {
            localDirectory_ = path;
            return true;
        }
        TARN_TRACE_AT(levels::kFailure, kUnit, "no local directory %1", path);
    } catch (const SFileSysException& failure) {
        TARN_TRACE_AT(levels::kFailure, kUnit, "no local directory %1: %2", path, failure.toString());
    }
    return false;
}

SAnsiString CSIftp::GetLocalWorkingDir() const {
    return localDirectory_.isEmpty() ? SFileSys::getCurrentDirectory() : localDirectory_;
}

}  // namespace TarnLibA500
