#include "jtc/jtc.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include <windows.h>

namespace {

/// Waits for a number to be handed over, and says that it came.
class Receiver : public JTCThread {
  public:
    Receiver() : JTCThread("receiver") {}
    void run() override {
        const JTCSynchronized lock(*this);
        const JTCSynchronized again(*this);  // a wait gives both up
        while (number_ == 0) wait();
        seen = currentThread() == this ? number_ : -1;
    }
    void send(int number) {
        const JTCSynchronized lock(*this);
        number_ = number;
        notifyAll();
    }
    int seen = 0;

  private:
    int number_ = 0;
};

class Thrower : public JTCThread {
  public:
    void run() override { throw std::runtime_error("on purpose"); }
};

/// Ends when the other thread lets it.
class Sleeper : public JTCThread {
  public:
    void run() override { WaitForSingleObject(mayEnd, INFINITE); }
    HANDLE mayEnd = CreateEventW(nullptr, TRUE, FALSE, nullptr);
};

class Waker : public JTCThread {
  public:
    explicit Waker(HANDLE event) : event_(event) {}
    void run() override {
        sleep(100);
        SetEvent(event_);
    }

  private:
    HANDLE event_;
};

}  // namespace

TEST(Threads, RunAreJoinedAndStartOnce) {
    Receiver receiver;
    EXPECT_FALSE(receiver.isAlive());
    receiver.join();  // not started: at once
    receiver.setPriority(JTCThread::kHigh);
    receiver.start();
    EXPECT_THROW(receiver.start(), JTCIllegalThreadStateException);
    JTCThread::sleep(20);
    EXPECT_TRUE(receiver.isAlive());
    receiver.send(7);
    receiver.join();
    EXPECT_FALSE(receiver.isAlive());
    EXPECT_EQ(receiver.seen, 7);
    EXPECT_STREQ(receiver.getName(), "receiver");
    EXPECT_EQ(receiver.getPriority(), JTCThread::kHigh);
    EXPECT_THROW(receiver.start(), JTCIllegalThreadStateException);
}

TEST(Threads, SurviveTheirExceptions) {
    testing::internal::CaptureStderr();
    Thrower thrower;
    thrower.start();
    thrower.join();
    EXPECT_NE(testing::internal::GetCapturedStderr().find("on purpose"), std::string::npos);
}

TEST(Threads, AreWaitedForUntilADeadline) {
    const ULONGLONG start = GetTickCount64();
    Sleeper sleeper;
    sleeper.start();
    sleeper.join(50);
    EXPECT_TRUE(sleeper.isAlive());
    EXPECT_GE(GetTickCount64() - start, 40U);
    Waker waker(sleeper.mayEnd);
    {
        const JTCInitialize first;
        const JTCInitialize second;
        waker.start();
    }  // the last one waits
    EXPECT_FALSE(sleeper.isAlive());
    CloseHandle(sleeper.mayEnd);
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
