#include <atomic>
#include <cstdio>

#include "tracelog/context.h"

#include <windows.h>

namespace TraceLog400 {
namespace {

using detail::ThreadContext;

constexpr const char* kActionId = "ActionID";
constexpr int kCallImportance = 1;
constexpr std::size_t kMaxNested = 256;

EventInfo CallEvent() {
    EventInfo event;
    event.importance = kCallImportance;
    return event;
}

// Unlike that of any other process of this machine, and of this one in its life.
std::string NewActionId() {
    static std::atomic<unsigned> count{0};
    static const ULONGLONG start = [] {
        FILETIME now;
        GetSystemTimeAsFileTime(&now);
        return static_cast<ULONGLONG>(now.dwHighDateTime) << 32 | now.dwLowDateTime;
    }();
    char text[64];
    std::snprintf(text, sizeof text, "%lx-%llx-%u", GetCurrentProcessId(), start, ++count);
    return text;
}

// True when the request had none.
bool RequireActionId(ThreadContext& context) {
    const bool isMissing = context.request.find(kActionId) == nullptr;
    if (isMissing) context.request.set(kActionId, NewActionId());
    context.requestChanged();
    return isMissing;
}

void BeginCall(ThreadContext& context, const Scope::Builder& call, bool madeActionId) {
    if (context.calls.size() >= kMaxNested) {
        ++context.skippedCalls;
        return;
    }
    context.calls.push_back({call.label_, Scope(call), madeActionId});
    Logger(Logger::S, CallEvent()) << "-> " << call.label_;
}

void EndCall(ThreadContext& context) {
    if (context.skippedCalls != 0) {
        --context.skippedCalls;
        return;
    }
    if (context.calls.empty()) return;
    const detail::OpenCall& call = context.calls.back();
    Logger(Logger::S, CallEvent()) << "<- " << call.label.c_str() << " ("
                                   << static_cast<long long>(call.scope.microseconds()) << " us)";
    if (call.madeActionId) context.request.set(kActionId, std::string());
    context.calls.pop_back();
    context.requestChanged();
}

// Without memory a call goes on without its context.
template <class Action>
void WithContext(Action action) {
    try {
        action(detail::ThisThread());
    } catch (const std::bad_alloc&) {
        return;
    }
}

void HandOut(const ThreadContext& context, TextTarget& out) {
    const std::string text = context.request.toText();
    out.append(text.data(), text.size());
}

}  // namespace

void Interceptors::before_incoming_call(const Scope::Builder& call) {
    WithContext([&](ThreadContext& context) {
        if (context.putAside.size() >= kMaxNested) {
            ++context.skippedRequests;
            return;
        }
        context.putAside.push_back(context.request);
        context.request = detail::Request();
        context.request.takeText(call.context_);
        context.request.cameFromOutside = !context.request.isEmpty();
        RequireActionId(context);
        BeginCall(context, call, false);
    });
}

void Interceptors::after_incoming_call(TextTarget& out) {
    WithContext([&](ThreadContext& context) {
        if (context.skippedRequests != 0) {
            --context.skippedRequests;
            return;
        }
        if (context.putAside.empty()) return;
        EndCall(context);
        const std::string reply = context.request.toText();
        context.request = context.putAside.back();
        context.putAside.pop_back();
        context.requestChanged();
        out.append(reply.data(), reply.size());
    });
}

void Interceptors::before_outgoing_call(const Scope::Builder& call, TextTarget& out) {
    WithContext([&](ThreadContext& context) {
        BeginCall(context, call, RequireActionId(context));
        HandOut(context, out);
    });
}

void Interceptors::after_outgoing_call(const char* reply) {
    WithContext([&](ThreadContext& context) {
        context.request.takeText(reply);
        context.requestChanged();
        EndCall(context);
    });
}

void Interceptors::after_outgoing_call_no_response() {
    WithContext([](ThreadContext& context) { EndCall(context); });
}

}  // namespace TraceLog400
