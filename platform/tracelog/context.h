#pragma once

#include <string>
#include <vector>

#include "tracelog/tracelog.h"

/// The requests that a thread works on.
namespace TraceLog400::detail {

struct Variable {
    std::string name;
    std::string value;
};

/// The variables of one request.
class Request {
  public:
    void set(const std::string& name, const std::string& value);
    const std::string* find(const std::string& name) const;
    bool isEmpty() const { return variables_.empty(); }

    /// "name=value;name=value", at most 8 KiB: variables that no longer fit are left out.
    std::string toText() const;
    /// Sets the variables of such a text; what is not one is ignored.
    void takeText(const char* text);
    /// True when a caller's context came with it.
    bool cameFromOutside = false;

  private:
    std::vector<Variable> variables_;
};

/// A bracket that is open: what it is called and when it began.
struct OpenCall {
    std::string label;
    Scope scope;
    bool madeActionId;  ///< for this call only
};

/// A request that is worked on, and the outgoing calls that are open in it.
struct RequestInWork {
    Request request;
    std::string inLines;          ///< the request as it stands in lines
    std::vector<OpenCall> calls;  ///< the innermost last
    // Brackets that found no memory at their beginning: their ends do nothing.
    unsigned skippedRequests = 0;
    unsigned skippedCalls = 0;

    void requestChanged() { inLines = request.toText(); }
};

/// What an incoming call interrupts.
struct Interrupted {
    RequestInWork work;
    OpenCall incoming;
};

/// The request of a thread, and those around it.
struct ThreadContext : RequestInWork {
    std::vector<Interrupted> putAside;
};

/// The calling thread's, made when needed; freed when the thread ends.
ThreadContext& ThisThread();
/// Null when the thread has none.
ThreadContext* ThisThreadIfAny();

}  // namespace TraceLog400::detail
