#include "net/sshlibrary.h"

#include "waiting/waiting.h"

namespace TarnLibA500 {
namespace {

// The library counts its users without a lock.
constinit waiting::Lock users;

template <class Function>
void Resolve(const CSharedLibrary& module, Function*& function, const char* name) {
    function = reinterpret_cast<Function*>(module.Resolve(name));
}

template <class Function>
void TryResolve(const CSharedLibrary& module, Function*& function, const char* name) {
    function = reinterpret_cast<Function*>(module.TryResolve(name));
}

oslibssh2::Table ResolveAll(const CSharedLibrary& module) {
    oslibssh2::Table table;
    Resolve(module, table.init, "libssh2_init");
    Resolve(module, table.sessionInit, "libssh2_session_init_ex");
    Resolve(module, table.setBlocking, "libssh2_session_set_blocking");
    Resolve(module, table.setTimeout, "libssh2_session_set_timeout");
    Resolve(module, table.handshake, "libssh2_session_handshake");
    Resolve(module, table.hostkeyHash, "libssh2_hostkey_hash");
    Resolve(module, table.userauthList, "libssh2_userauth_list");
    Resolve(module, table.userauthPassword, "libssh2_userauth_password_ex");
    Resolve(module, table.lastError, "libssh2_session_last_error");
    Resolve(module, table.keepaliveSend, "libssh2_keepalive_send");
    Resolve(module, table.sftpInit, "libssh2_sftp_init");
    Resolve(module, table.sftpOpen, "libssh2_sftp_open_ex");
    Resolve(module, table.sftpWrite, "libssh2_sftp_write");
    Resolve(module, table.sftpClose, "libssh2_sftp_close_handle");
    Resolve(module, table.sftpMkdir, "libssh2_sftp_mkdir_ex");
    Resolve(module, table.sftpRmdir, "libssh2_sftp_rmdir_ex");
    Resolve(module, table.sftpUnlink, "libssh2_sftp_unlink_ex");
    Resolve(module, table.sftpLastError, "libssh2_sftp_last_error");
    Resolve(module, table.sftpShutdown, "libssh2_sftp_shutdown");
    Resolve(module, table.disconnect, "libssh2_session_disconnect_ex");
    Resolve(module, table.sessionFree, "libssh2_session_free");
    TryResolve(module, table.callbackSet, "libssh2_session_callback_set");
    TryResolve(module, table.userauthKey, "libssh2_userauth_publickey_frommemory");
    TryResolve(module, table.exit, "libssh2_exit");
    return table;
}

}  // namespace

SshLibrary::~SshLibrary() {
    const waiting::Guard guard(users);
    if (isReady_ && table_.exit != nullptr) table_.exit();
}

bool SshLibrary::load() {
    if (isReady_) return true;
    CSharedLibrary module("libssh2.dll");
    const oslibssh2::Table table = ResolveAll(module);
    {
        const waiting::Guard guard(users);
        if (!oslibssh2::Succeeds(table.init, 0)) return false;
    }
    module_ = std::move(module);
    table_ = table;
    isReady_ = true;
    return true;
}

}  // namespace TarnLibA500
