#include "jtc/jtc.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <windows.h>

namespace {

/// Does what it is given.
class Worker : public JTCThread {
  public:
    explicit Worker(std::function<void()> work) : work_(std::move(work)) {}
    void run() override { work_(); }

  private:
    std::function<void()> work_;
};

}  // namespace

TEST(Threads, RunAreJoinedAndStartOnce) {
    int number = 0;
    int seen = 0;
    Worker receiver([&] {
        const JTCSynchronized lock(receiver);
        const JTCSynchronized again(receiver);  // a wait gives both up
        while (number == 0) receiver.wait();
        seen = JTCThread::currentThread() == &receiver ? number : -1;
    });
    EXPECT_FALSE(receiver.isAlive());
    receiver.join();  // not started: at once
    receiver.setPriority(JTCThread::kHigh);
    receiver.start();
    EXPECT_THROW(receiver.start(), JTCIllegalThreadStateException);
    JTCThread::sleep(20);
    EXPECT_TRUE(receiver.isAlive());
    {
        const JTCSynchronized lock(receiver);
        number = 7;
        receiver.notifyAll();
    }
    receiver.join();
    EXPECT_FALSE(receiver.isAlive());
    EXPECT_EQ(seen, 7);
    EXPECT_EQ(receiver.getPriority(), JTCThread::kHigh);
    EXPECT_THROW(receiver.start(), JTCIllegalThreadStateException);
}

TEST(Threads, SurviveTheirExceptions) {
    testing::internal::CaptureStderr();
    Worker thrower([] { throw std::runtime_error("on purpose"); });
    thrower.start();
    thrower.join();
    EXPECT_NE(testing::internal::GetCapturedStderr().find("on purpose"), std::string::npos);
}

TEST(Threads, AreWaitedForUntilADeadline) {
    const HANDLE mayEnd = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    Worker sleeper([&] { WaitForSingleObject(mayEnd, INFINITE); });
    sleeper.start();
    const ULONGLONG start = GetTickCount64();
    sleeper.join(50);
    EXPECT_TRUE(sleeper.isAlive());
    EXPECT_GE(GetTickCount64() - start, 40U);
    Worker waker([&] {
        JTCThread::sleep(100);
        SetEvent(mayEnd);
    });
    {
        const JTCInitialize first;
        const JTCInitialize second;
        waker.start();
    }  // the last one waits
    EXPECT_FALSE(sleeper.isAlive());
    CloseHandle(mayEnd);
}

TEST(Threads, StartedElsewhereCanBeAdopted) {
    EXPECT_EQ(JTCThread::currentThread(), nullptr);
    {
        const JTCAdoptCurrentThread adopted;
        JTCThread* const thread = JTCThread::currentThread();
        ASSERT_NE(thread, nullptr);
        const JTCAdoptCurrentThread again;
        EXPECT_EQ(JTCThread::currentThread(), thread);
    }
    EXPECT_EQ(JTCThread::currentThread(), nullptr);
}

TEST(Monitors, WaitUntilADeadlineAndNeedTheLock) {
    JTCMonitor monitor;
    EXPECT_THROW(monitor.wait(), JTCIllegalMonitorState);
    EXPECT_THROW(monitor.wait(10), JTCIllegalMonitorState);
    EXPECT_THROW(monitor.notify(), JTCIllegalMonitorState);
    EXPECT_THROW(monitor.notifyAll(), JTCIllegalMonitorState);
    EXPECT_THROW(monitor.unlock(), JTCIllegalMonitorState);
    monitor.lock();
    monitor.lock();
    const ULONGLONG start = GetTickCount64();
    monitor.wait(0);
    monitor.wait(100);
    EXPECT_GE(GetTickCount64() - start, 80U);
    monitor.unlock();  // as often as it was taken before the waits
    monitor.unlock();
    EXPECT_THROW(monitor.unlock(), JTCIllegalMonitorState);
}

TEST(Monitors, PassFromThreadToThread) {
    constexpr int kThreads = 4;
    constexpr int kTurns = 2000;
    JTCMonitor monitor;
    int turn = 0;  // a notification that is lost leaves all waiting
    std::vector<std::unique_ptr<Worker>> workers;
    for (int number = 0; number < kThreads; ++number) {
        workers.push_back(std::make_unique<Worker>([&, number] {
            for (int mine = number; mine < kTurns; mine += kThreads) {
                const JTCSynchronized lock(monitor);
                while (turn != mine) monitor.wait();
                if (mine % 50 == 0) JTCThread::sleep(1);  // the others fall asleep at the lock
                ++turn;
                monitor.notifyAll();
            }
        }));
        workers.back()->start();
    }
    for (const auto& worker : workers) worker->join();
    EXPECT_EQ(turn, kTurns);
}
