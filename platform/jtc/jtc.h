#pragma once

#include <exception>

/// Threads and monitors.
///
/// A monitor is a lock that its holder may take again, with a place to wait. A thread is an object whose
/// run() runs in a thread of its own from start() on, and it is a monitor itself. No thread is stopped from
/// outside: it is asked to end, and joined. Times are milliseconds.
///
///     class Worker : public JTCThread {
///       public:
///         Worker() : JTCThread("worker") {}
///         void run() override {
///             JTCSynchronized lock(*this);
///             while (!done_) wait(1000);
///         }
///         void finish() {
///             JTCSynchronized lock(*this);
///             done_ = true;
///             notifyAll();
///         }
///       private:
///         bool done_ = false;
///     };
///
/// Threads must not be started or joined in a DLL's entry point or a static destructor: the loader's lock is
/// held there.
///
/// While the process ends, its other threads are gone wherever they were, and nothing here waits for them: a
/// lock that one of them held goes to whoever asks for it, the threads are no longer alive, and joining
/// returns at once.
#if defined(JTC_STATIC)
/// Marks what the module exports.
#define JTC_API
#elif defined(jtc_EXPORTS)
#define JTC_API __declspec(dllexport)
#else
#define JTC_API __declspec(dllimport)
#endif

/// wait or notify without holding the lock, or a wait that could have no end.
class JTC_API JTCIllegalMonitorState : public std::exception {
  public:
    /// The text must outlive the exception.
    explicit JTCIllegalMonitorState(const char* text = "the monitor's lock is not held") noexcept;
    /// Says what was done wrong, or what is lacking.
    const char* what() const noexcept override;

  private:
    const char* text_;
};

/// start of a thread that was started before.
class JTC_API JTCIllegalThreadStateException : public std::exception {
  public:
    /// Says what was done wrong, or what is lacking.
    const char* what() const noexcept override;
};

/// The system has no more threads to give.
class JTC_API JTCOutOfResources : public std::exception {
  public:
    /// Says what was done wrong, or what is lacking.
    const char* what() const noexcept override;
};

/// Counts the users of the module. When the last object goes, it waits until the threads that were started
/// have ended, 30 seconds at most.
class JTC_API JTCInitialize {
  public:
    /// One more user.
    JTCInitialize();
    /// The arguments are left as they are.
    JTCInitialize(int& argc, char** argv);
    ~JTCInitialize();
    JTCInitialize(const JTCInitialize&) = delete;
    JTCInitialize& operator=(const JTCInitialize&) = delete;
};

/// A lock that its holder may take again, with a place to wait. Where nobody else wants it, locking and unlocking take an
/// atomic operation each, as with a CRITICAL_SECTION. Whoever has it last may destroy it.
class JTC_API JTCMonitor {
  public:
    /// Free, with nobody waiting.
    JTCMonitor();
    virtual ~JTCMonitor();
    JTCMonitor(const JTCMonitor&) = delete;
    JTCMonitor& operator=(const JTCMonitor&) = delete;

    /// Gives the lock up, however often it was taken, waits for a notification, and takes it again. It may
    /// also return without one: wait in a loop over what is waited for. Throws JTCIllegalMonitorState without
    /// the lock, and while the process ends.
    void wait();
    /// The same, for so long at most, also while the process ends; nothing at all when that is not positive.
    void wait(long milliseconds);
    /// Wakes one waiting thread. Throws JTCIllegalMonitorState without the lock.
    void notify();
    /// Wakes all waiting threads. Throws JTCIllegalMonitorState without the lock.
    void notifyAll();

    /// Waits until the lock is free; its holder takes it once more, and gives it back as often.
    void lock() const;
    /// Throws JTCIllegalMonitorState without the lock.
    void unlock() const;

  private:
    struct State;
    State* state_;
};

/// Holds a monitor's lock as long as it lives.
class JTC_API JTCSynchronized {
  public:
    /// Takes the lock of a monitor that lives longer.
    explicit JTCSynchronized(const JTCMonitor& monitor);
    ~JTCSynchronized();
    JTCSynchronized(const JTCSynchronized&) = delete;
    JTCSynchronized& operator=(const JTCSynchronized&) = delete;

  private:
    const JTCMonitor& monitor_;
};

/// A thread: run() runs in it from start() on.
class JTC_API JTCThread : public JTCMonitor {
  public:
    /// How urgent a thread is beside the others of the process.
    enum Priority {
        kLowest = 0,  ///< the system's lowest but for idle threads
        kLow,         ///< below normal
        kNormal,      ///< what a thread begins with
        kHigh,        ///< above normal
        kHighest      ///< the system's highest but for time-critical threads
    };

    /// The name is for people and debuggers; it is copied.
    explicit JTCThread(const char* name = "");
    /// The object must outlive the thread: join it before. A thread that still runs here ends the process, as
    /// a std::thread would.
    ~JTCThread() override;

    /// What the thread does. An exception that leaves it is reported on standard error and ends the thread.
    virtual void run();

    /// Throw JTCIllegalThreadStateException for a second start, JTCOutOfResources when there is no thread to
    /// be had.
    void start();
    /// Wait until the thread has ended; at once when it was not started. Any thread but this one may call
    /// them.
    void join();
    /// The same, for so long at most; isAlive tells how it ended.
    void join(long milliseconds);
    /// True from start until run has ended.
    bool isAlive() const;

    /// The name that was given; valid as long as the object.
    const char* getName() const;
    /// Takes effect at once, or with start.
    void setPriority(Priority priority);
    /// The priority that was set last.
    Priority getPriority() const;

    /// The object of the calling thread; null in one that was neither started here nor adopted.
    static JTCThread* currentThread();
    /// Not positive: gives other threads a turn.
    static void sleep(long milliseconds);

  private:
    friend class JTCAdoptCurrentThread;
    friend struct JTCRunner;
    struct State;
    State* thread_;
};

/// Gives the calling thread, which was started elsewhere, a JTCThread for as long as the object lives. Does
/// nothing in a thread that has one.
class JTC_API JTCAdoptCurrentThread {
  public:
    /// Begins in the calling thread.
    JTCAdoptCurrentThread();
    ~JTCAdoptCurrentThread();
    JTCAdoptCurrentThread(const JTCAdoptCurrentThread&) = delete;
    JTCAdoptCurrentThread& operator=(const JTCAdoptCurrentThread&) = delete;

  private:
    JTCThread* adopted_;
};
