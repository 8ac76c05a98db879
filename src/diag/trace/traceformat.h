#pragma once

#include <cstring>

#include "tarnlib/straceparameter.h"

namespace TarnLibA500 {

/// A trace text in the making: most need no memory but this object's.
class TraceTextBuffer {
  public:
    TraceTextBuffer() = default;
    TraceTextBuffer(const TraceTextBuffer&) = delete;
    TraceTextBuffer& operator=(const TraceTextBuffer&) = delete;

    void append(const char* text, std::uint32_t bytes) {
        if (length_ + bytes < kUsualBytes && long_.isEmpty()) {
            std::memcpy(usual_ + length_, text, bytes);
            length_ += bytes;
        } else {
            appendLong(text, bytes);
        }
    }
    /// The text for a sink, which takes it up to a terminator: without the line end that the text of a failure
    /// may bring along, and with "\x00" in place of a zero byte.
    const char* text();
    SAnsiString string() const { return long_.isEmpty() ? SAnsiString(usual_, length_) : long_; }

  private:
    static constexpr std::uint32_t kUsualBytes = 512;

    void appendLong(const char* text, std::uint32_t bytes) {
        if (long_.isEmpty()) {
            long_.setSize(2 * kUsualBytes + bytes);
            long_.concat(usual_, length_);
        }
        long_.concat(text, bytes);
    }

    std::uint32_t length_ = 0;
    char usual_[kUsualBytes];
    SAnsiString long_;
};

/// Fills a format in; null is an empty text.
void FillTrace(TraceTextBuffer& out, const char* format, const STraceParameter* parameters, unsigned count);

/// A text with "\x00" in place of each zero byte, which would end it for whoever takes it up to a terminator.
SAnsiString VisibleZeros(const SAnsiString& text);

/// The code page's spelling of a wide text, "?" for what it does not have.
SAnsiString NarrowTraceText(const wchar_t* text);
/// The same for "units" units, zero units included.
SAnsiString NarrowTraceText(const wchar_t* text, std::uint32_t units);

}  // namespace TarnLibA500
