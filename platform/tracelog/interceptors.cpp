#include <atomic>
#include <cstdio>
#include <new>
#include <utility>

#include "seam/osclock.h"
#include "tracelog/context.h"

#include <windows.h>

namespace TraceLog400 {
namespace {

using detail::Interrupted;
using detail::OpenCall;
using detail::Request;
using detail::RequestInWork;
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
    static const std::int64_t start = osclock::Now();
    char text[64];
    std::snprintf(text, sizeof text, "%lx-%llx-%u", GetCurrentProcessId(), start, ++count);
    return text;
}

bool HasActionId(const Request& request) {
    return request.find(kActionId) != nullptr;
}

// A changed request and its line are made first and put in place together, which needs no memory.
void PutInPlace(RequestInWork& work, Request&& request, std::string&& inLines) {
    work.request = std::move(request);
    work.inLines = std::move(inLines);
}

// Begins a bracket. One that finds no memory is remembered, so that its end does nothing either; the call
// goes on without its context, and the result is null.
template <class Begin>
ThreadContext* BeginBracket(unsigned RequestInWork::*skipped, Begin begin) {
    ThreadContext* context = nullptr;
    try {
        context = &detail::ThisThread();
        begin(*context);
        return context;
    } catch (const std::bad_alloc&) {
        if (context != nullptr) ++(context->*skipped);
        return nullptr;
    }
}

// True when the bracket that ends did nothing at its beginning.
bool WasSkipped(unsigned& skipped) {
    if (skipped == 0) return false;
    --skipped;
    return true;
}

// An exception can leave brackets without their ends: where too many are open, the outermost is given up.
void AddCall(std::vector<OpenCall>& calls, OpenCall&& call) {
    if (calls.size() == kMaxNested) {
        calls[1].madeActionId |= calls[0].madeActionId;
        calls.erase(calls.begin());
    }
    calls.push_back(std::move(call));
}

void TraceBegin(const char* label) {
    Logger(Logger::S, CallEvent()) << "-> " << label;
}

void TraceEnd(const OpenCall& call) {
    Logger(Logger::S, CallEvent()) << "<- " << call.label.c_str() << " ("
                                   << static_cast<long long>(call.scope.microseconds()) << " us)";
}

// Removing a variable needs no memory; without any for the line, that has no context.
void RemoveActionId(RequestInWork& work) {
    work.request.set(kActionId, std::string());
    try {
        work.requestChanged();
    } catch (const std::bad_alloc&) {
        work.inLines.clear();
    }
}

void EndCall(RequestInWork& work) {
    if (WasSkipped(work.skippedCalls) || work.calls.empty()) return;
    TraceEnd(work.calls.back());
    if (work.calls.back().madeActionId) RemoveActionId(work);
    work.calls.pop_back();
}

// The variables of a reply, but never another action: that is the caller's.
void TakeReply(RequestInWork& work, const char* reply) {
    const std::string* const own = work.request.find(kActionId);
    Request request(work.request);
    request.takeText(reply);
    request.set(kActionId, own != nullptr ? *own : std::string());
    std::string inLines = request.toText();
    PutInPlace(work, std::move(request), std::move(inLines));
}

// Without memory there is no context to send.
void HandOut(const Request& request, TextTarget& out) {
    try {
        const std::string text = request.toText();
        out.append(text.data(), text.size());
    } catch (const std::bad_alloc&) {
        return;
    }
}

void BeginOutgoing(ThreadContext& context, const Scope::Builder& call) {
    const bool isIdMissing = !HasActionId(context.request);
    Request request;
    std::string inLines;
    if (isIdMissing) {
        request = context.request;
        request.set(kActionId, NewActionId());
        inLines = request.toText();
    }
    AddCall(context.calls, {call.label_, Scope(call), isIdMissing});
    if (isIdMissing) PutInPlace(context, std::move(request), std::move(inLines));
    TraceBegin(call.label_);
}

}  // namespace

void Interceptors::before_incoming_call(const Scope::Builder& call) {
    BeginBracket(&RequestInWork::skippedRequests, [&call](ThreadContext& context) {
        RequestInWork work;
        work.request.takeText(call.context_);
        work.request.cameFromOutside = !work.request.isEmpty();
        if (!HasActionId(work.request)) work.request.set(kActionId, NewActionId());
        work.requestChanged();
        context.putAside.push_back({RequestInWork(), {call.label_, Scope(call), false}});
        context.putAside.back().work = std::exchange(static_cast<RequestInWork&>(context), std::move(work));
        if (context.putAside.size() > kMaxNested) context.putAside.erase(context.putAside.begin());
        TraceBegin(call.label_);
    });
}

// Outgoing calls that are still open here will never end: they are dropped with the request.
void Interceptors::after_incoming_call(TextTarget& out) {
    ThreadContext* const context = detail::ThisThreadIfAny();
    if (context == nullptr || WasSkipped(context->skippedRequests) || context->putAside.empty()) return;
    Interrupted& around = context->putAside.back();
    TraceEnd(around.incoming);
    const RequestInWork ended = std::exchange(static_cast<RequestInWork&>(*context), std::move(around.work));
    context->putAside.pop_back();
    HandOut(ended.request, out);
}

void Interceptors::before_outgoing_call(const Scope::Builder& call, TextTarget& out) {
    const ThreadContext* const begun = BeginBracket(
        &RequestInWork::skippedCalls, [&call](ThreadContext& context) { BeginOutgoing(context, call); });
    if (begun != nullptr) HandOut(begun->request, out);
}

void Interceptors::after_outgoing_call(const char* reply) {
    ThreadContext* const context = detail::ThisThreadIfAny();
    if (context == nullptr) return;
    try {
        TakeReply(*context, reply);
    } catch (const std::bad_alloc&) {
        return EndCall(*context);  // all the same, without the variables of its reply
    }
    EndCall(*context);
}

void Interceptors::after_outgoing_call_no_response() {
    ThreadContext* const context = detail::ThisThreadIfAny();
    if (context != nullptr) EndCall(*context);
}

}  // namespace TraceLog400
