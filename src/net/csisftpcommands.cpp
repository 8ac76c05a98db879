// What the words of FTP do here.
#include <algorithm>
#include <cstring>

#include "diag/assert/require.h"
#include "net/csisftpstate.h"
#include "net/remotepath.h"
#include "tarnlib/csisocket.h"

namespace TarnLibA500 {
namespace {

using sftp::kUnit;
using sftp::Step;

// Codes of replies.
constexpr int kOkay = 200;
constexpr int kClosing = 221;
constexpr int kDone = 250;
constexpr int kPathCreated = 257;
constexpr int kAboutToOpen = 150;
constexpr int kServiceCloses = 421;
constexpr int kNotLoggedIn = 530;
constexpr int kError = 550;

}  // namespace

// ----------------------------------------------------------------------------------------- directories and files

/// After a step on a path: the failure's text is the reply.
bool CSIsftp::isDoneOn(bool isDone, const char* failure, const SAnsiString& path) {
    if (isDone) return true;
    const SshSession& session = *ssh_->session;
    const SAnsiString text =
        STraceHelper("%1 [%2] on SFTP server.SFTP Code:%3", failure, path, session.sftpCode());
    TARN_TRACE_AT(levels::kFailure, kUnit, "%1", text);
    ssh_->answer(session.isLost() ? kServiceCloses : kError, text);
    return false;
}

bool CSIsftp::CheckDirExist_sFtp(const SAnsiString& directory) {
    const Step step("CheckDirExist_sFtp");
    return ssh_->session->isDirectory(RemotePath(ssh_->directory, directory));
}

bool CSIsftp::ChangeDir_sFtp(const SAnsiString& directory) {
    const Step step("ChangeDir_sFtp");
    const SAnsiString path = RemotePath(ssh_->directory, directory);
    if (!path.find('"').isAtEnd()) {  // where the reply to PWD ends: one could not come back
        ssh_->answer(kError, "no quotes, please: " + path);
        return false;
    }
    if (!isDoneOn(ssh_->session->isDirectory(path), "Error changing to directory", path)) return false;
    ssh_->directory = path;
    return true;
}

bool CSIsftp::CreateDir_sFtp(const SAnsiString& directory) {
    const Step step("CreateDir_sFtp");
    const SAnsiString path = RemotePath(ssh_->directory, directory);
    return isDoneOn(ssh_->session->makeDirectory(path), "Error creating directory", path);
}

bool CSIsftp::RemoveDir_sFtp(const SAnsiString& directory) {
    const Step step("RemoveDir_sFtp");
    const SAnsiString path = RemotePath(ssh_->directory, directory);
    return isDoneOn(ssh_->session->removeDirectory(path), "Error removing directory", path);
}

bool CSIsftp::RemoveFile_sFtp(const SAnsiString& file) {
    const Step step("RemoveFile_sFtp");
    const SAnsiString path = RemotePath(ssh_->directory, file);
    return isDoneOn(ssh_->session->removeFile(path), "Error remvoing file", path);
}

bool CSIsftp::changesTo(const SAnsiString& directory, const SAnsiString& /*back*/, bool& exists) {
    exists = ssh_->session && ssh_->session->hasChannel() && CheckDirExist_sFtp(directory);
    dropLostSession();
    return connected_;
}

// ----------------------------------------------------------------------------------------- commands and replies

/// The remote file is opened with the data connection.
bool CSIsftp::nameFile(const SAnsiString& file) {
    ssh_->file = RemotePath(ssh_->directory, file);
    return true;
}

bool CSIsftp::changeToParent(const SAnsiString& /*none*/) {
    return ChangeDir_sFtp("..");
}

bool CSIsftp::tellDirectory(const SAnsiString& /*none*/) {
    ssh_->reply = "\"" + ssh_->directory + "\"";
    return true;
}

bool CSIsftp::askWhetherAlive(const SAnsiString& /*none*/) {
    if (ssh_->session->isAlive(ssh_->directory)) return true;
    ssh_->answer(kServiceCloses, ssh_->session->reason());
    return false;
}

void CSIsftp::dropLostSession() {
    if (ssh_->session && ssh_->session->isLost()) dropSession();
}

bool CSIsftp::SendControlMsg(const char* command, const char* argument, unsigned argumentBytes) {
    struct Word {
        const char* name;
        bool (CSIsftp::*act)(const SAnsiString& argument);
        int code;
    };
    static constexpr Word kWords[] = {
        {CTRL_FTP_PUT, &CSIsftp::nameFile, kAboutToOpen},
        {CTRL_FTP_MKDIR, &CSIsftp::CreateDir_sFtp, kPathCreated},
        {CTRL_FTP_RMDIR, &CSIsftp::RemoveDir_sFtp, kDone},
        {CTRL_FTP_RM, &CSIsftp::RemoveFile_sFtp, kDone},
        {CTRL_FTP_CWD, &CSIsftp::ChangeDir_sFtp, kDone},
        {CTRL_FTP_CDUP, &CSIsftp::changeToParent, kDone},
        {CTRL_FTP_PWD, &CSIsftp::tellDirectory, kPathCreated},
        {CTRL_FTP_NOOP, &CSIsftp::askWhetherAlive, kOkay},
    };
    const Step step("SendControlMsg");
    const SAnsiString text(argument != nullptr ? SAnsiString(argument, argumentBytes) : SAnsiString());
    TARN_TRACE_AT(levels::kDetail, kUnit, "command : %s, param : %s bytes", command, text);
    if (std::strcmp(command, CTRL_FTP_QUIT) == 0) {
        CleanUpSSH_sFtp();
        ssh_->answer(kClosing, "closed");
        return true;
    }
    const Word* const word = std::find_if(std::begin(kWords), std::end(kWords), [&](const Word& known) {
        return std::strcmp(known.name, command) == 0;
    });
    if (word == std::end(kWords)) {
        SAssert(kUnit, __LINE__,
                STraceHelper("SFTP does not support the provided command [%1].", command).getString());
        WSASetLastError(WSAEOPNOTSUPP);
        return false;
    }
    ssh_->answer(kNotLoggedIn, "nobody is logged in");
    if (!ssh_->session || !ssh_->session->hasChannel()) return true;
    ssh_->session->setLimit(timeout_);
    ssh_->reply = "done";
    if ((this->*word->act)(text)) ssh_->replyCode = word->code;
    dropLostSession();
    return true;
}

int CSIsftp::GetReply(SAnsiString& text) {
    const Step step("GetReply");
    text = STraceHelper("%1 ", ssh_->replyCode) + ssh_->reply;
    TARN_TRACE_AT(levels::kDetail, kUnit, "Reply: %1", text);
    return ssh_->replyCode;
}

}  // namespace TarnLibA500
