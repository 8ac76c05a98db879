#pragma once

#include "tarnlib/sstring.h"
#include "tracelog/tracelog.h"

/// Texts between the library, which has them in the process's code page or in UTF-8, and the tracing engine,
/// which has UTF-8.
namespace TarnLibA500 {

/// A narrow text in UTF-8 for the length of a call. What is UTF-8 already is passed on as it is; a byte that is
/// no character becomes "?".
class Utf8 {
  public:
    explicit Utf8(const char* text);
    /// Shares the text, so that it may be a temporary.
    explicit Utf8(const SAnsiString& text);
    Utf8(const Utf8&) = delete;
    Utf8& operator=(const Utf8&) = delete;

    const char* text() const { return text_; }

  private:
    void convert();

    SAnsiString kept_;
    const char* text_;
};

/// The name of a file or a directory, which is in the system's code page and not the C locale's, in UTF-8.
SAnsiString Utf8Name(const SAnsiString& name);
/// The way back: such a name as the engine has it.
SAnsiString NameFromUtf8(const SAnsiString& utf8);

/// What the engine hands out, in the code page; "?" for characters that it does not have.
class CollectedText : public TraceLog400::TextTarget {
  public:
    void append(const char* text, std::size_t bytes) override;
    SAnsiString text() const;
    const SAnsiString& utf8() const { return utf8_; }

  private:
    SAnsiString utf8_;
};

}  // namespace TarnLibA500
