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
    SDecodedString() = default;
    /// Shares the text's block.
    SDecodedString(const SWCharString& text) noexcept : SWCharString(text) {}
    /// A copy of a zero-terminated text; null is an empty one.
    SDecodedString(const wchar_t* text) : SWCharString(text) {}
    SDecodedString(const SDecodedString&) noexcept = default;
    /// Takes the text and leaves the other one empty.
    SDecodedString(SDecodedString&&) noexcept = default;
    SDecodedString& operator=(const SDecodedString&) noexcept = default;
    SDecodedString& operator=(SDecodedString&&) noexcept = default;
};

}  // namespace TarnLibA500
