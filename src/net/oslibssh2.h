#pragma once

#include <utility>

#include "seam/seam.h"

// In front of libssh2.h, which would bring the interface of version 1.
#include <winsock2.h>

#include <libssh2.h>
#include <libssh2_sftp.h>

/// The one way to the SSH library. The calls fail as the library's do: with a negative number or null, and the number
/// once more in LastError.
namespace TarnLibA500::oslibssh2 {

/// The number of a failure that a test asked for; 0 when it was told by LastError.
inline constinit int askedFailure = 0;

/// What is open is sessions, channels and files.
struct Kind {
    static void SetError(unsigned long error) noexcept { askedFailure = -static_cast<int>(error); }
};
using Calls = seam::Calls<Kind>;

/// The entry points, which the library is asked for by name.
struct Table {
    decltype(&libssh2_init) init = nullptr;
    decltype(&libssh2_session_init_ex) sessionInit = nullptr;
    decltype(&libssh2_session_set_blocking) setBlocking = nullptr;
    decltype(&libssh2_session_set_timeout) setTimeout = nullptr;
    decltype(&libssh2_session_handshake) handshake = nullptr;
    decltype(&libssh2_hostkey_hash) hostkeyHash = nullptr;
    decltype(&libssh2_userauth_list) userauthList = nullptr;
    decltype(&libssh2_userauth_password_ex) userauthPassword = nullptr;
    decltype(&libssh2_session_last_error) lastError = nullptr;
    decltype(&libssh2_keepalive_send) keepaliveSend = nullptr;
    decltype(&libssh2_sftp_init) sftpInit = nullptr;
    decltype(&libssh2_sftp_open_ex) sftpOpen = nullptr;
    decltype(&libssh2_sftp_write) sftpWrite = nullptr;
    decltype(&libssh2_sftp_close_handle) sftpClose = nullptr;
    decltype(&libssh2_sftp_mkdir_ex) sftpMkdir = nullptr;
    decltype(&libssh2_sftp_rmdir_ex) sftpRmdir = nullptr;
    decltype(&libssh2_sftp_unlink_ex) sftpUnlink = nullptr;
    decltype(&libssh2_sftp_last_error) sftpLastError = nullptr;
    decltype(&libssh2_sftp_shutdown) sftpShutdown = nullptr;
    decltype(&libssh2_session_disconnect_ex) disconnect = nullptr;
    decltype(&libssh2_session_free) sessionFree = nullptr;
    // What a library may lack.
    decltype(&libssh2_session_callback_set) callbackSet = nullptr;
    decltype(&libssh2_userauth_publickey_frommemory) userauthKey = nullptr;
    decltype(&libssh2_exit) exit = nullptr;
};

/// A call that gives a count or 0, or the negative number of a failure.
template <class Result, class... Parameters, class... Arguments>
Result Call(Result (*function)(Parameters...), Arguments... arguments) noexcept {
    return Calls::MustFail() ? askedFailure : function(arguments...);
}

/// A call whose failure is no reason to ask why.
template <class Result, class... Parameters, class... Arguments>
bool Succeeds(Result (*function)(Parameters...), Arguments... arguments) noexcept {
    return Calls::Error() == 0 && function(arguments...) >= 0;
}

/// A call that gives an address, or null.
template <class Result, class... Parameters, class... Arguments>
Result* Find(Result* (*function)(Parameters...), Arguments... arguments) noexcept {
    return Calls::MustFail() ? nullptr : function(arguments...);
}

/// A call that opens what it gives the address of, or gives null.
template <class Result, class... Parameters, class... Arguments>
Result* Open(Result* (*function)(Parameters...), Arguments... arguments) noexcept {
    Result* const opened = Find(function, arguments...);
    if (opened != nullptr) Calls::Opened();
    return opened;
}

/// Why the last call of a session failed: its number, and a text that is valid until the next one.
inline int LastError(const Table& library, LIBSSH2_SESSION* session, const char*& text) noexcept {
    if (askedFailure != 0) {
        text = "as asked for";
        return std::exchange(askedFailure, 0);
    }
    char* message = nullptr;
    const int code = library.lastError(session, &message, nullptr, 0);
    text = message != nullptr ? message : "";
    return code;
}

}  // namespace TarnLibA500::oslibssh2
