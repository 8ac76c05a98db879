#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "diag/logging/open_bridge.h"
#include "support/alloc_hooks.h"
#include "support/print_strings.h"
#include "tarnlib/slogger.h"

using namespace TarnLibA500;
using tarntest::OpenBridge;
using tarntest::Succeeds;

TEST(CallContexts, GoOnAfterCallsWithoutAnEnd) {
    constexpr int kAbandoned = 300;  // by exceptions
    const OpenBridge bridge("-trace d");
    SAnsiString sent, reply;
    for (const bool isInCall : {true, false}) {
        if (isInCall) SLogger::BeforeIncomingCall("in", "ActionID=A");
        for (int i = 0; i < kAbandoned; ++i) SLogger::BeforeOutgoingCall("abandoned", sent);
        SLogger::BeforeOutgoingCall("last", sent);
        SLogger::AfterOutgoingCall("ActionID=B;x=1");
        EXPECT_EQ(SLogger::GetContextVar("x"), "1");
        if (!isInCall) break;
        EXPECT_EQ(SLogger::GetActionID(), "A");  // the caller's, whatever a reply says
        SLogger::AfterIncomingCall(reply);
        EXPECT_FALSE(SLogger::HasLogContext());
    }
    for (int i = 0; i < kAbandoned; ++i) SLogger::AfterOutgoingCallNoResponse();
    EXPECT_EQ(SLogger::GetActionID(), "");  // it was made for those calls
    const std::vector<std::string> texts = bridge.texts();
    const auto isEndOfLast = [](const std::string& text) {
        return text.rfind("<- Outgoing: last (", 0) == 0;
    };
    EXPECT_EQ(std::count_if(texts.begin(), texts.end(), isEndOfLast), 2);
    for (int i = 0; i < kAbandoned; ++i) SLogger::BeforeIncomingCall("abandoned", "");
    SLogger::BeforeIncomingCall("last", "ActionID=C");
    EXPECT_EQ(SLogger::GetActionID(), "C");
    for (int i = 0; i <= kAbandoned; ++i) SLogger::AfterIncomingCall(reply);
    SLogger::SetContextVar("ActionID", "");
    SLogger::SetContextVar("x", "");
    EXPECT_FALSE(SLogger::HasLogContext());
}

TEST(CallContexts, AreThoseOfTheThreadWhereverMemoryFails) {
    SAnsiString sent, reply;
    bool hasFailed = true;
    for (unsigned long nth = 1; hasFailed; ++nth) {
        SLogger::BeforeIncomingCall("outer", "ActionID=outer;x=1");
        tarntest::FailAllocation(nth);
        const bool isIn = Succeeds([&] { SLogger::BeforeIncomingCall("inner", "ActionID=inner"); });
        const bool isOut = Succeeds([&] { SLogger::BeforeOutgoingCall("other", sent); });
        if (isOut) Succeeds([&] { SLogger::AfterOutgoingCall("y=2;ActionID=other"); });
        if (isIn) Succeeds([&] { SLogger::AfterIncomingCall(reply); });
        hasFailed = tarntest::FailureHappened();
        tarntest::FailAllocation(0);
        EXPECT_EQ(SLogger::GetActionID(), "outer") << nth;
        EXPECT_EQ(SLogger::GetContextVar("x"), "1") << nth;
        SLogger::AfterIncomingCall(reply);
        EXPECT_FALSE(SLogger::HasLogContext()) << nth;
    }
}
