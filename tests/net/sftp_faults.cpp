// sftp_faults HOST PORT FINGERPRINT KEY FILE: sessions of the SFTP client in which one call of the SSH library, of the sockets or of
// memory fails, and many whole ones. Tells of each kind how many calls failed, and whatever stayed open.
#include <cstdio>
#include <cstdlib>

#include "net/oslibssh2.h"
#include "net/ossockets.h"
#include "seam/osclock.h"
#include "seam/osmemory.h"
#include "seam/osmodules.h"
#include "support/open_handles.h"
#include "tarnlib/csisftp.h"
#include "tarnlib/csisocket.h"
#include "tarnlib/straceobj.h"

using namespace TarnLibA500;

namespace {

char** words;

/// Whether all of it was done, with so many files.
bool Visit(int files = 1) try {
    CSIsftp sftp(words[3]);
    sftp.SetTimeout(5);
    sftp.SetPrivateKey(words[4]);
    if (!sftp.Connect(words[1], static_cast<unsigned short>(std::atoi(words[2])))) return false;
    if (!sftp.Login("clerk", "s3cret") || !sftp.CreateDirs("faults/a") || !sftp.CheckAliveness())
        return false;
    bool isDone = true;
    for (int i = 0; i != files; ++i) {
        const SAnsiString name = "faults/a/" + STraceHelper("%1", i);
        isDone = isDone && sftp.PutFile(words[5], name) && sftp.RemoveFile(name);
    }
    isDone = isDone && sftp.RemoveDir("faults/a") && sftp.ChangeWorkingDir("faults");
    sftp.Disconnect();
    return isDone;
} catch (const CSIftpException&) {
    return false;
} catch (const std::bad_alloc&) {
    return false;
}

/// Every look at it is ten minutes after the one before.
ULONGLONG WINAPI HastyClock() {
    static ULONGLONG now;
    return now += 600'000;
}

struct Open {
    long calls = oslibssh2::Calls::OpenNow();
    long sockets = ossockets::Calls::OpenNow();
    long modules = osmodules::Calls::OpenNow();
    long blocks = osmemory::Calls::OpenNow();
    bool operator==(const Open&) const = default;
};

/// Fails every n-th call, one a session.
template <class Calls>
void FailEach(const char* kind, unsigned long error, unsigned long every) {
    unsigned long failed = 0;
    for (unsigned long nth = 1;; nth += every, ++failed) {
        const Open before;
        Calls::Fail(nth, error);
        const bool isDone = Visit();
        Calls::Fail(0, 0);
        if (!Calls::HasFailed()) {
            if (!isDone) std::printf("%s: the session without a failure failed\n", kind);
            break;
        }
        const Open after;
        if (before != after) {
            std::printf(
                "%s: with call %lu stay open: %ld of the library, %ld sockets, %ld modules, %ld blocks\n",
                kind, nth, after.calls - before.calls, after.sockets - before.sockets,
                after.modules - before.modules, after.blocks - before.blocks);
        }
    }
    std::printf("%s %s\n", kind, failed > 10 ? "failed" : "hardly failed");
    std::fprintf(stderr, "%s: %lu\n", kind, failed);
}

}  // namespace

int main(int, char** arguments) {
    words = arguments;
    CSISocket::initialize();
    Visit();
    FailEach<oslibssh2::Calls>("library", 7, 1);
    FailEach<ossockets::Calls>("sockets", WSAECONNRESET, 7);
    FailEach<osmemory::Calls>("memory", 1, 23);
    osclock::tickCount = &HastyClock;
    std::printf("a session %s its time\n", Visit() ? "outlasts" : "ends with");
    osclock::tickCount = nullptr;
    const auto handles = tarntest::OpenHandles();
    const Open before;
    int done = 0;
    for (int i = 0; i != 100; ++i) done += Visit() && GetModuleHandleA("libssh2.dll") == nullptr;
    done += Visit(100);
    std::printf("%d sessions, each with a library of its own\n", done);
    const bool isSame = Open() == before && tarntest::OpenHandles() == handles;
    std::printf("%s\n", isSame ? "nothing stays open" : "something stays open");
    return 0;
}
