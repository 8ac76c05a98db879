#pragma once

#include <exception>
#include <memory>
#include <vector>

#include "diag/assert/levels.h"
#include "net/sshlibrary.h"
#include "net/sshsession.h"
#include "security/secretstring.h"
#include "tarnlib/csisftp.h"
#include "tarnlib/straceobj.h"

/// What the units of the SFTP client share.
namespace TarnLibA500 {

namespace sftp {

inline constexpr const char* kUnit = "csisftp";
inline constexpr unsigned short kConnectionFailed = 41327;

/// Traces the beginning of a step, and its end unless it ends by an exception.
class Step {
  public:
    explicit Step(const char* name) : name_(name), exceptions_(std::uncaught_exceptions()) {
        TARN_TRACE_AT(levels::kScope, kUnit, "CSIsftp::%1() Entered. \n", name);
    }
    ~Step() {
        if (std::uncaught_exceptions() != exceptions_) return;
        try {
            TARN_TRACE_AT(levels::kScope, kUnit, "CSIsftp::%1() Done. \n", name_);
        } catch (const std::bad_alloc&) {
            return;  // no memory for a text: the end is not traced
        }
    }
    Step(const Step&) = delete;
    Step& operator=(const Step&) = delete;

  private:
    const char* name_;
    int exceptions_;
};

}  // namespace sftp

/// The state of a client.
struct CSIsftp::Ssh {
    void answer(int code, const SAnsiString& text) {
        replyCode = code;
        reply = text;
    }
    /// Traces that the remote file could not be written.
    void answerLoss() {
        constexpr int kAborted = 451;
        constexpr int kServiceCloses = 421;
        answer(
            session->isLost() ? kServiceCloses : kAborted,
            STraceHelper("sFTP connection lost while transferring data. SFTP Code:%1", session->sftpCode()));
        TARN_TRACE_AT(levels::kFailure, sftp::kUnit, "%1", reply);
    }

    SshLibrary library;
    std::unique_ptr<SshSession> session;
    SAnsiString fingerprint;        ///< as the caller supplied it
    SAnsiString serverFingerprint;  ///< of the last server
    SAnsiString keyFile;            ///< empty without a key
    std::unique_ptr<const SecretString> passphrase;
    SAnsiString directory = ".";  ///< the working one
    int replyCode = 0;
    SAnsiString reply;

    SAnsiString file;           ///< the remote file
    std::vector<char> pending;  ///< what the server has not said yet that it is stored
    bool isBroken = false;      ///< some of it cannot be stored
};

}  // namespace TarnLibA500
