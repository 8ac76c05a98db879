// The front end's side of calls between processes and of the variables of a request.
#include <new>

#include "diag/logging/tracetext.h"
#include "tarnlib/slogger.h"

namespace TarnLibA500::SLogger {

using TraceLog400::Interceptors;
using TraceLog400::Scope;
using TraceLog400::Context::Info;
using TraceLog400::Context::Updater;

namespace {

constexpr const char* kActionId = "ActionID";

// What stands before the name of a call in the log.
SAnsiString Labelled(const char* label, const SAnsiString& call) {
    return call.isEmpty() ? SAnsiString(label) : SAnsiString(label) + " " + call;
}

// A call for whose context the memory was missing ends here: its caller gets the exception, and ends nothing.
template <class Action>
void EndUnless(Action succeeds) {
    try {
        succeeds();
    } catch (const std::bad_alloc&) {
        Interceptors::after_outgoing_call_no_response();
        throw;
    }
}

}  // namespace

void BeforeIncomingCall(const SAnsiString& call, const SAnsiString& context) {
    const Utf8 label(Labelled("Incoming:", call));
    const Utf8 text(context);
    Interceptors::before_incoming_call(Scope::Builder().label(label.text()).context(text.text()));
}

void AfterIncomingCall(SAnsiString& context) {
    CollectedText text;
    Interceptors::after_incoming_call(text);
    context = text.text();
}

void BeforeOutgoingCall(const SAnsiString& call, SAnsiString& context) {
    const Utf8 label(Labelled("Outgoing:", call));
    CollectedText text;
    Interceptors::before_outgoing_call(Scope::Builder().label(label.text()), text);
    EndUnless([&] { context = text.text(); });
}

void AfterOutgoingCall(const SAnsiString& context) {
    EndUnless([&] { Interceptors::after_outgoing_call(Utf8(context).text()); });
}

void AfterOutgoingCallNoResponse() {
    Interceptors::after_outgoing_call_no_response();
}

SAnsiString GetActionID() {
    return GetContextVar(kActionId);
}

SAnsiString GetContextVar(const SAnsiString& name) {
    CollectedText value;
    Info::get(Utf8(name).text(), value);
    return value.text();
}

void SetContextVar(const SAnsiString& name, const SAnsiString& value) {
    const Utf8 utf8Name(name);
    Updater::set(utf8Name.text(), Utf8(value).text());
}

bool HasLogContext() {
    return Info::has();
}

bool HasPassport() {
    return Info::came_from_outside();
}

}  // namespace TarnLibA500::SLogger
