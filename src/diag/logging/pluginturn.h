#pragma once

#include "jtc/jtc.h"

namespace TarnLibA500 {

/// Who is in the plug-ins: one thread at a time, and nobody waits for it without end.
class PluginTurns {
  public:
    /// What became of a wish to go in.
    enum Outcome {
        Mine,    ///< until end
        Nested,  ///< this thread is in already: a plug-in has called back
        Stuck    ///< a thread that is in has not come back for too long
    };

    explicit PluginTurns(unsigned longestCall = 10'000) : longestCall_(longestCall) {}  // ms

    /// Waits while another thread is in.
    Outcome begin();
    /// Gives up a turn that was Mine.
    void end() noexcept;
    /// True once for each thread that is stuck.
    bool isNews();

  private:
    const unsigned longestCall_;
    JTCMonitor monitor_;  ///< guards the rest, and is never held while a plug-in is called
    unsigned long holder_ = 0;
    unsigned long long since_ = 0;  ///< ticks
    bool isReported_ = false;
};

/// A turn, for as long as the object lives.
class PluginTurn {
  public:
    explicit PluginTurn(PluginTurns& turns) : turns_(turns), outcome_(turns.begin()) {}
    ~PluginTurn() {
        if (outcome_ == PluginTurns::Mine) turns_.end();
    }
    PluginTurn(const PluginTurn&) = delete;
    PluginTurn& operator=(const PluginTurn&) = delete;

    PluginTurns::Outcome outcome() const { return outcome_; }

  private:
    PluginTurns& turns_;
    PluginTurns::Outcome outcome_;
};

}  // namespace TarnLibA500
