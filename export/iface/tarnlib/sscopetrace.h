#pragma once

#include "tarnlib/tarnapi.h"

/// Trace points for the beginning and the end of a block, with the time that it took.
///
/// An object traces "-> name" when it is made and "<- name (1234 us)" when it goes; scopes inside one another
/// on one thread are indented by two blanks each. The level is asked once, at the beginning, so that every
/// beginning has its end. Names are kept as pointers and must outlive the object. An object belongs to one
/// thread.
///
///     void Import(const SAnsiString& file) {
///         const InstrumentScopeTrace scope(__FILE__, "Import");
///         ...
///     }
///     // -> Import
///     //   -> ReadHeader
///     //   <- ReadHeader (310 us)
///     // <- Import (5120 us)
namespace TarnLibA500 {

/// A scope at a level of its own, which may be switched off by the caller.
class TARN_API SScopeTrace {
  public:
    /// Traces nothing when "on" is false or the trace point is switched off.
    SScopeTrace(bool on, int level, const char* file, int line, const char* name);
    /// Traces the end, unless there is no memory for its text.
    ~SScopeTrace();
    SScopeTrace(const SScopeTrace&) = delete;
    SScopeTrace& operator=(const SScopeTrace&) = delete;

    /// Microseconds since the beginning; 0 when nothing is traced.
    unsigned long long GetMicroseconds() const;

  protected:
    /// With up to three more words behind the name; null and empty ones are left out.
    SScopeTrace(bool on, int level, const char* file, int line, const char* name, const char* second,
                const char* third, const char* fourth);

  private:
    void trace(const char* mark) const;

    bool on_;
    int level_;
    const char* file_;
    int line_;
    const char* words_[4];
    long long start_ = 0;
};

/// A scope of a function or block, of level 5 unless another is given.
class TARN_API InstrumentScopeTrace : public SScopeTrace {
  public:
    /// At a level, with the place.
    InstrumentScopeTrace(int level, const char* file, const char* name, int line);
    /// At level 5, in a file.
    InstrumentScopeTrace(const char* file, const char* name);
    /// At level 5, without a place.
    explicit InstrumentScopeTrace(const char* name);
};

/// A step of a workflow, at level 6: "Root: a b c" when it begins the workflow, otherwise "Step: a b c". Null
/// words are left out.
class TARN_API WorkflowScopeTrace : public SScopeTrace {
  public:
    /// "root" says whether this begins the workflow; the words follow the label.
    WorkflowScopeTrace(bool root, const char* a, const char* b, const char* c);
};

}  // namespace TarnLibA500
