#pragma once

#include <utility>

#include "tarnlib/sstring.h"

namespace TarnLibA500 {

/// UTF-16 text that was decoded from another form and is handed on as such: a wide string under a name of its
/// own.
///
///     SDecodedString subject(header.getDecoded());
///     Show(subject.getString());
class TARN_API SDecodedString : public SWCharString {
  public:
    /// Empty.
    SDecodedString() = default;
    /// Shares the text's block.
    SDecodedString(const SWCharString& text) noexcept : SWCharString(text) {}
    /// A copy of a zero-terminated text; null is an empty one.
    SDecodedString(const wchar_t* text) : SWCharString(text) {}
    /// Shares the text's block.
    SDecodedString(const SDecodedString&) noexcept = default;
    /// Takes the text and leaves the other one empty.
    SDecodedString(SDecodedString&&) noexcept = default;
    /// Shares the text's block.
    SDecodedString& operator=(const SDecodedString&) noexcept = default;
    /// Takes the text and leaves the other one empty.
    SDecodedString& operator=(SDecodedString&&) noexcept = default;
};

}  // namespace TarnLibA500
