#pragma once

#include <atomic>

/// Where the code meets the operating system: a test can count the calls, make the n-th one fail, do what another
/// process might do before it, and put functions of its own in the place of the system's. Header only; for the
/// library and for the modules below it. Without TARN_TEST_SEAMS nothing of it is left: a call is a direct one.
namespace seam {

/// Whose calls are counted together.
enum class Scope { Process, Thread };

#ifdef TARN_TEST_SEAMS

/// The calls of one kind. A kind is a type with the function "static void SetError(unsigned long error)", which
/// leaves an error where a failed call of the kind leaves it; without one there is Error only.
template <class Kind, Scope kScope = Scope::Process>
class Calls {
  public:
    // What the code does.

    /// Counts a call. The error that it is to fail with; 0 when it is to be made.
    static unsigned long Error() {
        State& state = Current();
        const unsigned long call = ++state.calls;
        if (call == state.disturbed) state.disturbance.load()();
        const unsigned long failing = state.failing;
        if (failing == 0 || (state.isOnwards ? call < failing : call != failing)) return 0;
        state.hasFailed = true;
        return state.error;
    }
    /// Counts a call. True when it is to fail; its error is set.
    static bool MustFail() {
        const unsigned long error = Error();
        if (error != 0) Kind::SetError(error);
        return error != 0;
    }
    /// Counts what a call opened, or what one allocated.
    static void Opened() noexcept { open_.fetch_add(1, std::memory_order_relaxed); }
    /// Counts what is closed, or given back.
    static void Closed() noexcept { open_.fetch_sub(1, std::memory_order_relaxed); }

    // What a test does.

    /// Makes the nth call from now fail with an error that is not 0, once or from then on; no call when nth is 0.
    static void Fail(unsigned long nth, unsigned long error, bool onwards = false) {
        State& state = Current();
        state.error = error;
        state.isOnwards = onwards;
        if (nth != 0) state.hasFailed = false;
        state.failing = nth != 0 ? state.calls + nth : 0;
    }
    /// True when the failure that was last asked for has happened.
    static bool HasFailed() { return Current().hasFailed; }
    /// Does something before the nth call from now; nothing when nth is 0.
    static void DoBefore(unsigned long nth, void (*action)()) {
        State& state = Current();
        state.disturbance = action;
        state.disturbed = nth != 0 ? state.calls + nth : 0;
    }
    /// The calls so far.
    static unsigned long SoFar() { return Current().calls; }
    /// What is open now, whichever thread opened it.
    static long OpenNow() { return open_.load(std::memory_order_relaxed); }

  private:
    struct State {
        std::atomic<unsigned long> calls{0};
        std::atomic<unsigned long> failing{0};  ///< the number of the call
        std::atomic<unsigned long> error{0};
        std::atomic<bool> isOnwards{false};
        std::atomic<bool> hasFailed{false};
        std::atomic<unsigned long> disturbed{0};  ///< the number of the call
        std::atomic<void (*)()> disturbance{nullptr};
    };
    static State& Current() {
        if constexpr (kScope == Scope::Thread) {
            static constinit thread_local State state;
            return state;
        } else {
            static constinit State state;
            return state;
        }
    }

    static constinit inline std::atomic<long> open_{0};
};

/// A function of the system that a test may put one of its own in the place of. (A function type, not a pointer.)
template <class Function>
class Replaceable {
  public:
    /// The test's function; the system's again when it is null.
    void operator=(Function* replacement) { replacement_ = replacement; }
    /// What to call: the test's function if there is one.
    Function* orElse(Function* system) const {
        Function* const replacement = replacement_;
        return replacement != nullptr ? replacement : system;
    }

  private:
    std::atomic<Function*> replacement_{nullptr};
};

#else

template <class Kind, Scope = Scope::Process>
class Calls {
  public:
    static constexpr unsigned long Error() noexcept { return 0; }
    static constexpr bool MustFail() noexcept { return false; }
    static constexpr void Opened() noexcept {}
    static constexpr void Closed() noexcept {}
};

template <class Function>
class Replaceable {
  public:
    constexpr Function* orElse(Function* system) const noexcept { return system; }
};

#endif

}  // namespace seam
