// The connection: whom it is with, and logging in. The commands are in csisftpcommands.cpp, the data in csisftpdata.cpp.
#include "tarnlib/csisftp.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "diag/assert/require.h"
#include "net/csisftpstate.h"
#include "net/socketfailure.h"
#include "net/sshfingerprint.h"
#include "seam/osclock.h"
#include "security/secretbytes.h"
#include "strings/base/memory.h"
#include "tarnlib/csisocket.h"
#include "tarnlib/sfile.h"

namespace TarnLibA500 {
namespace {

using sftp::kConnectionFailed;
using sftp::kUnit;
using sftp::Step;

constexpr unsigned short kLoginRefused = 41322;
constexpr unsigned short kCommandNotSent = 41333;

/// Of a list with commas.
bool Offers(const SAnsiString& methods, std::string_view wanted) {
    std::string_view rest(methods.getString(), methods.getLength());
    for (;;) {
        const std::size_t comma = rest.find(',');
        if (rest.substr(0, comma) == wanted) return true;
        if (comma == rest.npos) return false;
        rest.remove_prefix(comma + 1);
    }
}

}  // namespace

CSIsftp::CSIsftp(const SAnsiString& fingerprint) : ssh_(new Ssh) {
    constexpr unsigned short kPort = 22;
    port_ = kPort;
    ssh_->fingerprint = fingerprint;
}

CSIsftp::~CSIsftp() {
    dropSession();
    delete ssh_;
}

void CSIsftp::SetFingerprint(const SAnsiString& fingerprint) {
    ssh_->fingerprint = fingerprint;
}

const SAnsiString& CSIsftp::GetServerFingerprint() const noexcept {
    return ssh_->serverFingerprint;
}

void CSIsftp::SetPrivateKey(const SAnsiString& file, const SAnsiString& passphrase) {
    // Its characters are nobody else's.
    ssh_->passphrase =
        std::make_unique<const SecretString>(SAnsiString(passphrase.getString(), passphrase.getLength()));
    ssh_->keyFile = file;
}

// ----------------------------------------------------------------------------------------- the library

bool CSIsftp::initSSHLib() {
    const Step step("initSSHLib");
    bool isReady = false;
    try {
        isReady = ssh_->library.load();
        TARN_TRACE_AT(levels::kStep, kUnit, "CSharedLibraryException function pointers set. \n");
    } catch (const CSharedLibraryException& failure) {
        TARN_TRACE_AT(levels::kFailure, kUnit, "CSharedLibraryException exception: %1\n", failure.toString());
    }
    return Require(isReady, kUnit, "Could not load ssh2 library.");
}

// ----------------------------------------------------------------------------------------- the server

void CSIsftp::failToConnect(const SAnsiString& reason) {
    dropSession();
    fail(CSIftpException::controlConnectionError, kConnectionFailed, reason);
}

void CSIsftp::openSocket(const SAnsiString& host, unsigned short port, const SAnsiString& server) {
    const int error = CSISocket::connectMulti(host, port, control_);
    if (error != 0 || ossockets::SetNonBlocking(control_) != 0)
        failToConnect(server + ": " + CSISocket::getLastErrorStr());
    // The library often sends two packets before it waits for an answer. The second would be kept back until the first is
    // acknowledged, which servers put off by 40 or 200 ms.
    if (ossockets::SendAtOnce(control_) != 0)
        TraceSocketFailure(kUnit, "%1 will take longer to answer: %2", server, CSISocket::getLastErrorStr());
}

void CSIsftp::shakeHands(const SAnsiString& server) {
    constexpr unsigned kMostSeconds = 30;
    constexpr int kMostTries = 20;
    constexpr unsigned long long kMillisecondsPerSecond = 1000;
    ssh_->session = std::make_unique<SshSession>(ssh_->library.table(), control_);
    SshSession& session = *ssh_->session;
    if (!session.create()) throw BadAllocation();
    const unsigned seconds = std::min(timeout_, kMostSeconds);
    const unsigned long long deadline = osclock::Tick() + seconds * kMillisecondsPerSecond;
    session.setLimit(seconds);
    TARN_TRACE_AT(levels::kStep, kUnit, "CSIsftp::Connect() requesting handshake. \n");
    int result = session.shakeHands();
    for (int tries = 1; result == LIBSSH2_ERROR_EAGAIN && tries != kMostTries && osclock::Tick() < deadline;
         ++tries) {
        TARN_TRACE_AT(levels::kStep, kUnit, "CSIsftp::Connect() requesting handshake. Trying again\n");
        result = session.shakeHands();
    }
    if (result != 0) failToConnect(server + ": " + session.reason());
    TARN_TRACE_AT(levels::kStep, kUnit, "CSIsftp::Connect() handshake successful. \n");
}

/// Nothing is said to a server that is not known.
void CSIsftp::makeSureOfServer() {
    const auto digest = [&](bool isSha1) {
        return ssh_->session->keyDigest(isSha1 ? LIBSSH2_HOSTKEY_HASH_SHA1 : LIBSSH2_HOSTKEY_HASH_SHA256);
    };
    const SshFingerprint wanted(ssh_->fingerprint);
    const unsigned char* const sha256 = digest(false);
    if (sha256 != nullptr) ssh_->serverFingerprint = SshFingerprint(SAnsiString()).textOf(sha256);
    const unsigned char* const shown = wanted.isSha1() ? digest(true) : sha256;
    if (shown != nullptr && wanted.matches(shown)) return;
    const SAnsiString text = shown != nullptr ? wanted.textOf(shown) : SAnsiString();
    failToConnect("Server fingerprint [" + text + "] does not match provided fingerprint [" +
                  ssh_->fingerprint + "]");
}

bool CSIsftp::Connect(const SAnsiString& host, unsigned short port) try {
    const Step step("Connect");
    const unsigned short number = port != 0 ? port : port_;
    const SAnsiString server = CSISocket::appendPort(host, number);
    dropSession();
    ssh_->serverFingerprint.empty();
    if (!initSSHLib()) failToConnect("Could not load ssh2 library.");
    openSocket(host, number, server);
    shakeHands(server);
    makeSureOfServer();
    connected_ = true;
    TARN_TRACE_AT(levels::kStep, kUnit, "CSIsftp::Connect() Connection established. \n");
    return true;
} catch (...) {
    dropSession();
    throw;
}

void CSIsftp::dropSession() noexcept {
    ssh_->session.reset();
    const ossockets::Socket closed(std::exchange(control_, CSISocket::kInvalid));
    connected_ = false;
    ssh_->pending.clear();
    ssh_->directory = ".";
}

void CSIsftp::CleanUpSSH_sFtp() {
    constexpr unsigned kMostSeconds = 10;
    const Step step("CleanUpSSH_sFtp");
    if (ssh_->session) {
        ssh_->session->setLimit(std::min(timeout_, kMostSeconds));
        ssh_->session->end("Disonnecting. Cheers.");
    }
    dropSession();
}

void CSIsftp::Disconnect() {
    const Step step("Disconnect");
    if (!connected_) return;
    CloseDataConnection();
    CleanUpSSH_sFtp();
}

// ----------------------------------------------------------------------------------------- the user

bool CSIsftp::Login(const SAnsiString& user, const SAnsiString& password, const SAnsiString& /*account*/) {
    const Step step("Login");
    if (user.isEmpty() || (password.isEmpty() && ssh_->keyFile.isEmpty())) {
        TARN_TRACE_AT(levels::kFailure, kUnit, "a login takes a user, and a password or a private key");
        return false;
    }
    if (!connected_) fail(CSIftpException::controlConnectionError, kCommandNotSent, "USER: no connection");
    if (ssh_->session->hasChannel()) {
        TARN_TRACE_AT(levels::kFailure, kUnit, "%1 cannot log in to a session in which somebody is", user);
        return false;
    }
    ssh_->session->setLimit(timeout_);
    logIn(user, password);
    ssh_->session->setLimit(timeout_);
    if (!ssh_->session->openChannel()) failToConnect("no SFTP: " + ssh_->session->reason());
    return true;
}

void CSIsftp::logIn(const SAnsiString& user, const SAnsiString& password) {
    SshSession& session = *ssh_->session;
    SAnsiString methods;
    bool isLetIn = false;
    const bool isAsked = session.askMethods(user, methods, isLetIn);
    if (isLetIn) return;
    SAnsiString reason = "the server takes " + methods;
    const auto attempt = [&](const char* method, bool hasIt, auto use) {
        if (isLetIn || session.isLost() || !hasIt || !Offers(methods, method)) return;
        isLetIn = use();
        reason = session.reason();
    };
    if (isAsked) {
        attempt("publickey", !ssh_->keyFile.isEmpty(), [&] { return useKey(user); });
        attempt("password", !password.isEmpty(), [&] { return session.usePassword(user, password); });
    }
    if (session.isLost()) failToConnect(SAnsiString(session.reason()));
    if (!isLetIn) fail(CSIftpException::controlConnectionError, kLoginRefused, user + ": " + reason);
}

bool CSIsftp::useKey(const SAnsiString& user) {
    constexpr long long kMostBytes = 1 << 20;
    const auto refuse = [&](const SAnsiString& reason) {
        fail(CSIftpException::controlConnectionError, kLoginRefused,
             "the private key " + ssh_->keyFile + " cannot be read: " + reason);
    };
    try {
        SFile file(ssh_->keyFile, SFile::readOnly | SFile::sequential, SFile::readMask, SFile::denyNothing);
        SecretBytes key(static_cast<std::uint64_t>(std::min(file.sizeEx(), kMostBytes)) + 1);
        const int bytes = file.read(key.data(), key.size() - 1);
        key.data()[bytes] = 0;
        const SshSession::KeyUse use = ssh_->session->useKey(user, key.data(), static_cast<unsigned>(bytes),
                                                             ssh_->passphrase->getString());
        if (use == SshSession::KeyUse::Unreadable) refuse(ssh_->session->reason());
        return use == SshSession::KeyUse::Accepted;
    } catch (const SFileException& failure) {
        refuse(failure.toString());
    }
    return false;
}

}  // namespace TarnLibA500
