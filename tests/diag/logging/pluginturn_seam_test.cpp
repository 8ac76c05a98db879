#include "diag/logging/pluginturn.h"

#include <gtest/gtest.h>

#include <future>

using namespace TarnLibA500;

TEST(PluginTurns, NobodyWaitsWithoutEndForOneThatDoesNotReturn) {
    PluginTurns turns(20);
    std::promise<void> isIn, mayReturn;
    auto stuck = std::async(std::launch::async, [&] {
        const PluginTurn turn(turns);
        const PluginTurn again(turns);  // by a plug-in that logs
        isIn.set_value();
        mayReturn.get_future().wait();
        return turn.outcome() == PluginTurns::Mine && again.outcome() == PluginTurns::Nested;
    });
    isIn.get_future().wait();
    for (const bool isNews : {true, false}) {
        EXPECT_EQ(turns.begin(), PluginTurns::Stuck);
        EXPECT_EQ(turns.isNews(), isNews);
    }
    mayReturn.set_value();
    EXPECT_TRUE(stuck.get());
    EXPECT_EQ(PluginTurn(turns).outcome(), PluginTurns::Mine);
    EXPECT_EQ(turns.begin(), PluginTurns::Mine);  // the one before has ended
}
