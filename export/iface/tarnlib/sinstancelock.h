#pragma once

#include "tarnlib/sstring.h"
#include "tarnlib/tarnapi.h"

namespace TarnLibA500 {

/// Keeps a second instance of a program out: of all who name the same lock, one has it, until it gives it back or
/// its process ends, however it ends.
///
/// Nothing is written, nothing is left behind, nothing can be stale, and nobody waits. The name may have any
/// characters and any length, and is compared exactly: put into it what there may be one instance of, the service's
/// name or the directory that it works in. Every session of the machine sees the lock, a service in session 0 and
/// the programs of all users; other machines do not. Anybody on the machine who knows the name can take it first.
///
/// The holder is the object, whichever thread took the lock: two objects of one process exclude each other too. One
/// thread at a time uses an object. Nothing throws but "bad allocation"; failures are traced.
///
///     SInstanceLock instance("Orders " + dataDirectory);
///     if (instance.take() != SInstanceLock::taken) {
///         Complain("process %1 works on this directory already", instance.ownerProcess());
///         return 1;
///     }
class TARN_API SInstanceLock {
  public:
    /// What take came to.
    enum Result {
        taken = 0,          ///< this object has the lock
        heldByAnother = 1,  ///< another object, of this process or of another, has it
        failed = 2          ///< the system does not say; see lastError
    };

    /// Takes nothing yet. An empty name is a name, too.
    explicit SInstanceLock(const SAnsiString& name);
    /// Gives the lock back when this object has it.
    ~SInstanceLock();
    SInstanceLock(const SInstanceLock&) = delete;
    SInstanceLock& operator=(const SInstanceLock&) = delete;

    /// Takes the lock, or says at once (within 100 ms) that another has it. Taken, too, when this object has it
    /// already.
    Result take();
    /// Gives the lock back. Nothing happens when this object does not have it.
    void giveBack() noexcept;
    /// True between a take that succeeded and giveBack.
    bool isHeld() const noexcept { return mutex_ != nullptr; }

    /// The number of the process that has the lock: this process, or the one that kept the last take from it.
    /// 0 when there is none, or when the holder does not tell: a program of a user who may not publish it
    /// shows its number in his own session only.
    unsigned long ownerProcess() const noexcept { return owner_; }
    /// The system's error code of the last take that failed.
    unsigned long lastError() const noexcept { return lastError_; }

  private:
    Result takeOnce();

    SAnsiString name_;
    void* mutex_ = nullptr;   ///< is there as long as the lock is held
    void* record_ = nullptr;  ///< memory with the holder's process number
    unsigned long owner_ = 0;
    unsigned long lastError_ = 0;
};

}  // namespace TarnLibA500
