// sftp_upload ours|libssh2 HOST PORT FINGERPRINT FILE NAME: puts a file on an SFTP server, by CSIsftp or by the bare calls of
// libssh2 with blocks of 256 KiB. Tells the seconds from the opening of the remote file to its end, and the most memory in KiB
// that the program had. The user is the one of the tests' servers.

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string_view>
#include <vector>

#include "tarnlib/csiftpexception.h"
#include "tarnlib/csisftp.h"
#include "tarnlib/csisocket.h"

#include <winsock2.h>

#include <windows.h>

#include <libssh2.h>
#include <libssh2_sftp.h>
#include <psapi.h>

using namespace TarnLibA500;

namespace {

struct Task {
    const char* host;
    unsigned short port;
    const char* fingerprint;
    const char* file;
    std::string_view name;
};

constexpr std::string_view kUser = "clerk";
constexpr std::string_view kPassword = "s3cret";

using Clock = std::chrono::steady_clock;

double SecondsSince(Clock::time_point begin) {
    return std::chrono::duration<double>(Clock::now() - begin).count();
}

[[noreturn]] void Fail(const char* what) {
    std::fprintf(stderr, "sftp_upload: %s\n", what);
    std::exit(1);
}

double Ours(const Task& task) try {
    CSIsftp sftp(task.fingerprint);
    if (!sftp.Connect(task.host, task.port) || !sftp.Login(kUser.data(), kPassword.data())) Fail("no login");
    const Clock::time_point begin = Clock::now();
    if (!sftp.PutFile(task.file, task.name.data())) Fail("not stored");
    const double seconds = SecondsSince(begin);
    sftp.Disconnect();
    return seconds;
} catch (const CSIftpException& failure) {
    Fail(failure.GetDetails().getString());
}

/// A file that is sent block by block, and nothing looked after.
void WriteAll(FILE* file, LIBSSH2_SFTP_HANDLE* remote) {
    std::vector<char> block(256 * 1024);
    while (std::feof(file) == 0) {
        const std::size_t count = std::fread(block.data(), 1, block.size(), file);
        if (std::ferror(file) != 0) Fail("not read");
        for (std::size_t done = 0; done != count;) {
            const ssize_t written = libssh2_sftp_write(remote, block.data() + done, count - done);
            if (written < 0) Fail("not written");
            done += static_cast<std::size_t>(written);
        }
    }
}

double Bare(const Task& task) {
    unsigned socket = CSISocket::kInvalid;
    if (CSISocket::connectMulti(task.host, task.port, socket) != 0 || libssh2_init(0) != 0)
        Fail("no connection");
    LIBSSH2_SESSION* const session = libssh2_session_init();
    if (libssh2_session_handshake(session, socket) != 0 ||
        libssh2_userauth_password(session, kUser.data(), kPassword.data()) != 0)
        Fail("no login");
    LIBSSH2_SFTP* const channel = libssh2_sftp_init(session);
    const std::unique_ptr<FILE, int (*)(FILE*)> file(std::fopen(task.file, "rb"), &std::fclose);
    std::setvbuf(file.get(), nullptr, _IONBF, 0);
    const Clock::time_point begin = Clock::now();
    LIBSSH2_SFTP_HANDLE* const remote = libssh2_sftp_open(
        channel, task.name.data(), LIBSSH2_FXF_WRITE | LIBSSH2_FXF_CREAT | LIBSSH2_FXF_TRUNC, 0644);
    if (remote == nullptr) Fail("not opened");
    WriteAll(file.get(), remote);
    libssh2_sftp_close(remote);
    const double seconds = SecondsSince(begin);
    libssh2_sftp_shutdown(channel);
    libssh2_session_disconnect(session, "");
    libssh2_session_free(session);
    CSISocket::close(socket);
    return seconds;
}

unsigned long MostKibibytes() {
    constexpr unsigned long kKibibyte = 1024;
    PROCESS_MEMORY_COUNTERS memory = {};
    GetProcessMemoryInfo(GetCurrentProcess(), &memory, sizeof memory);
    return static_cast<unsigned long>(memory.PeakWorkingSetSize / kKibibyte);
}

}  // namespace

int main(int count, char** words) {
    constexpr int kWords = 7;
    if (count != kWords || !CSISocket::initialize()) Fail("ours|libssh2 HOST PORT FINGERPRINT FILE NAME");
    const Task task = {words[2], static_cast<unsigned short>(std::atoi(words[3])), words[4], words[5],
                       words[6]};
    const double seconds = std::string_view(words[1]) == "ours" ? Ours(task) : Bare(task);
    std::printf("%.6f %lu\n", seconds, MostKibibytes());
    return 0;
}
