#pragma once

#include <cstddef>
#include <string>

#include "tracelog/tracelog.h"

/// The line of a record: what stands before its text, and what becomes of the text.
namespace TraceLog400::detail {

/// The most bytes that WritePrefix writes: long names and contexts are cut.
inline constexpr std::size_t kMaxPrefix = 480;

/// Writes "date letter component process thread [context] file(line) " and returns its bytes.
std::size_t WritePrefix(char* out, char letter, const EventInfo& event);

/// The bytes of the character at the beginning of a text when it may not stand in a line as it is, because
/// some reader would end the line there or do something else with it than show it: a control character other
/// than the tab, or a line or paragraph separator. 0 for all others. The text has at least one byte.
std::size_t ControlBytes(const char* text, std::size_t bytes);

/// Bytes that a text takes in a line, where such characters are written as \r, \n, \xNN, \uNNNN.
std::size_t EscapedBytes(const char* text, std::size_t bytes);
/// Writes it so and returns the end.
char* WriteEscaped(char* out, const char* text, std::size_t bytes);

/// A whole line with its end, for a text of the engine's own.
std::string MakeLine(char letter, const char* text, std::size_t bytes);

inline constexpr char kLineEnd[] = "\r\n";
inline constexpr std::size_t kLineEndBytes = 2;

/// Writes the thread's context as it stands in lines, at most "most" bytes, and returns how many.
std::size_t WriteContext(char* out, std::size_t most);

}  // namespace TraceLog400::detail
