#include <cstdio>
#include <cstring>
#include <string>
#include <system_error>
#include <thread>

#include "console/console.h"
#include "jtc/jtc.h"
#include "seam/osclock.h"
#include "waiting/waiting.h"

using waiting::Guard;

namespace {

constexpr long kLongestWaitForThreads = 30'000;

// A pointer only: objects of a thread with destructors are gone too early on this platform.
thread_local JTCThread* current = nullptr;

/// Who uses the module, and the threads that run. Needs no construction and no destruction: a thread may end
/// after static objects.
struct Module {
    waiting::Lock mutex;
    waiting::Condition threadEnded;
    int users = 0;
    int running = 0;
};
constinit Module module;

void CountRunning(int change) {
    const Guard guard(module.mutex);
    module.running += change;
    module.threadEnded.notifyAll();
}

int SystemPriority(JTCThread::Priority priority) {
    constexpr int kPriorities[] = {THREAD_PRIORITY_LOWEST, THREAD_PRIORITY_BELOW_NORMAL,
                                   THREAD_PRIORITY_NORMAL, THREAD_PRIORITY_ABOVE_NORMAL,
                                   THREAD_PRIORITY_HIGHEST};
    return kPriorities[priority];
}

}  // namespace

struct JTCThread::State {
    std::string name;
    mutable waiting::Lock mutex;  ///< guards the rest
    waiting::Condition ended;
    std::thread thread;
    HANDLE handle = nullptr;  ///< of the running thread, for its priority
    Priority priority = kNormal;
    bool isStarted = false;
    bool isAlive = false;

    // While the process ends, all threads but the one that asks have ended.
    bool runs(const JTCThread* object) const {
        return isAlive && (current == object || !waiting::ProcessIsEnding());
    }
    void applyPriority() const {
        if (handle != nullptr) SetThreadPriority(handle, SystemPriority(priority));
    }
};

/// What happens on the new thread around run().
struct JTCRunner {
    static void run(JTCThread* thread) {
        current = thread;
        begin(*thread->thread_);
        try {
            thread->run();
        } catch (const std::exception& failure) {
            report(*thread, failure.what());
        } catch (...) {
            report(*thread, "an exception of another type");
        }
        end(*thread->thread_);
    }

    static void begin(JTCThread::State& state) {
        const Guard guard(state.mutex);
        DuplicateHandle(GetCurrentProcess(), GetCurrentThread(), GetCurrentProcess(), &state.handle, 0, FALSE,
                        DUPLICATE_SAME_ACCESS);
        state.applyPriority();
    }

    // After the last line here the object may be gone.
    static void end(JTCThread::State& state) {
        const Guard guard(state.mutex);
        CloseHandle(state.handle);
        state.handle = nullptr;
        state.isAlive = false;
        state.ended.notifyAll();
        CountRunning(-1);
    }

    static void report(const JTCThread& thread, const char* what) {
        const char* const parts[] = {"thread \"", thread.getName(), "\" ended by an exception: ", what, "\n"};
        if (console::Of(stderr) == nullptr) {
            std::fprintf(stderr, "%s%s%s%s%s", parts[0], parts[1], parts[2], parts[3], parts[4]);
        } else {
            for (const char* part : parts) console::Write(stderr, part, std::strlen(part), CP_ACP);
        }
        std::fflush(stderr);
    }
};

const char* JTCIllegalThreadStateException::what() const noexcept {
    return "the thread was started before";
}

const char* JTCOutOfResources::what() const noexcept {
    return "no thread could be started";
}

JTCThread::JTCThread(const char* name) : thread_(new State) {
    thread_->name = name != nullptr ? name : "";
}

// While the process ends, the threads library may have lost a lock with an ended thread: it is not called,
// and what it knows of the thread is left behind.
JTCThread::~JTCThread() {
    if (waiting::ProcessIsEnding()) return;
    if (!isAlive()) join();
    delete thread_;
}

void JTCThread::run() {}

void JTCThread::start() {
    const Guard guard(thread_->mutex);
    if (thread_->isStarted) throw JTCIllegalThreadStateException();
    if (waiting::ProcessIsEnding()) throw JTCOutOfResources();
    CountRunning(1);
    try {
        thread_->thread = std::thread(&JTCRunner::run, this);
    } catch (const std::system_error&) {
        CountRunning(-1);
        throw JTCOutOfResources();
    } catch (...) {
        CountRunning(-1);
        throw;
    }
    thread_->isStarted = thread_->isAlive = true;
}

void JTCThread::join() {
    const Guard guard(thread_->mutex);
    if (waiting::ProcessIsEnding()) return;
    while (thread_->isAlive) thread_->ended.wait(thread_->mutex);
    if (thread_->thread.joinable()) thread_->thread.join();
}

void JTCThread::join(long milliseconds) {
    const ULONGLONG deadline = waiting::DeadlineIn(milliseconds);
    const Guard guard(thread_->mutex);
    if (waiting::ProcessIsEnding()) return;
    while (thread_->isAlive) {
        if (!thread_->ended.waitUntil(thread_->mutex, deadline)) return;
    }
    if (thread_->thread.joinable()) thread_->thread.join();
}

bool JTCThread::isAlive() const {
    const Guard guard(thread_->mutex);
    return thread_->runs(this);
}

const char* JTCThread::getName() const {
    return thread_->name.c_str();
}

void JTCThread::setPriority(Priority priority) {
    const Guard guard(thread_->mutex);
    thread_->priority = priority;
    thread_->applyPriority();
}

JTCThread::Priority JTCThread::getPriority() const {
    const Guard guard(thread_->mutex);
    return thread_->priority;
}

JTCThread* JTCThread::currentThread() {
    return current;
}

void JTCThread::sleep(long milliseconds) {
    osclock::Sleep(milliseconds > 0 ? static_cast<DWORD>(milliseconds) : 0);
}

JTCAdoptCurrentThread::JTCAdoptCurrentThread()
    : adopted_(current == nullptr ? new JTCThread("adopted") : nullptr) {
    if (adopted_ != nullptr) current = adopted_;
}

JTCAdoptCurrentThread::~JTCAdoptCurrentThread() {
    if (adopted_ == nullptr) return;
    current = nullptr;
    delete adopted_;
}

JTCInitialize::JTCInitialize() {
    const Guard guard(module.mutex);
    ++module.users;
}

JTCInitialize::JTCInitialize(int&, char**) : JTCInitialize() {}

JTCInitialize::~JTCInitialize() {
    const ULONGLONG deadline = waiting::DeadlineIn(kLongestWaitForThreads);
    const Guard guard(module.mutex);
    if (--module.users != 0 || waiting::ProcessIsEnding()) return;
    while (module.running != 0 && module.threadEnded.waitUntil(module.mutex, deadline)) continue;
}
