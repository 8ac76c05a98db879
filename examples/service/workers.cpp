#include "workers.h"

#include "tarnlib/sdescribeexception.h"
#include "tarnlib/straceobj.h"

namespace {

// False when there is nothing to do now, or it failed: the next look is after a while.
bool WorkOnce(const Settings& settings, Claims& claims) {
    try {
        return CountOne(settings, claims);
    } catch (...) {
        TARN_TRACE(9, "a file was not counted: %1", SDescribeException());
        return false;
    }
}

}  // namespace

Workers::Workers(const SharedSettings& settings, const StopSignal& stop) : settings_(settings), stop_(stop) {}

Workers::~Workers() {
    for (std::thread& thread : threads_) {
        if (thread.joinable()) thread.join();
    }
}

void Workers::start(int count) {
    for (int i = 0; i < count; ++i) {
        const std::lock_guard<std::mutex> lock(mutex_);
        threads_.emplace_back([this] { run(); });
        ++running_;
    }
}

// The file in work is finished; the next one is not begun.
void Workers::run() {
    bool isStopped = stop_.wait(0);
    while (!isStopped) {
        const Settings settings = settings_.get();
        const bool worked = WorkOnce(settings, claims_);
        isStopped = stop_.wait(worked ? 0 : static_cast<unsigned long>(settings.pollMilliseconds));
    }
    const std::lock_guard<std::mutex> lock(mutex_);
    --running_;
    ended_.notify_all();
}

bool Workers::join(int milliseconds) {
    std::unique_lock<std::mutex> lock(mutex_);
    return ended_.wait_for(lock, std::chrono::milliseconds(milliseconds), [this] { return running_ == 0; });
}
