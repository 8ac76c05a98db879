#include "tarnlib/straceparameter.h"

#include <algorithm>
#include <cstring>
#include <cwchar>

#include "diag/trace/traceformat.h"
#include "strings/base/asciichar.h"
#include "strings/base/intconv.h"
#include "strings/base/integertypes.h"
#include "tarnlib/sstringconv.h"

namespace TarnLibA500 {
namespace {

constexpr const char* kNull = "(null)";

/// Where the next argument of a format goes.
struct Place {
    unsigned length = 0;  ///< code units, 0: no place
    unsigned index = 0;   ///< of the argument
};

// "%12" before "%1": the longest number counts.
Place NumberedPlace(const char* at) {
    const auto digit = static_cast<unsigned>(at[1] - '0');
    if (digit == 1 && at[2] >= '0' && at[2] <= '2') return {3, 10 + static_cast<unsigned>(at[2] - '0') - 1};
    return digit == 0 ? Place() : Place{2, digit - 1};
}

unsigned LetterPlaceLength(const char* at) {
    if (at[1] == 'l' && (at[2] == 'd' || at[2] == 'u')) return 3;
    return at[1] != '\0' && std::strchr("sduxc", at[1]) != nullptr ? 2 : 0;
}

class TraceFormat {
  public:
    TraceFormat(TraceTextBuffer& out, const STraceParameter* parameters, unsigned count)
        : out_(out), parameters_(parameters), count_(count) {}

    void fill(const char* format) {
        const char* at = format;
        while (const char* percent = std::strchr(at, '%')) {
            copy(at, percent);
            at = percent + putPlace(percent);
        }
        copy(at, at + std::strlen(at));
    }

  private:
    void copy(const char* first, const char* last) {
        out_.append(first, static_cast<std::uint32_t>(last - first));
    }

    // Returns how much of the format is done with.
    unsigned putPlace(const char* percent) {
        if (percent[1] == '%') {
            out_.append("%", 1);
            return 2;
        }
        const bool isNumbered = IsDigit(percent[1]);
        const Place place =
            isNumbered ? NumberedPlace(percent) : Place{LetterPlaceLength(percent), nextByLetter_};
        if (place.length == 0 || place.index >= count_) {
            out_.append("%", 1);
            return 1;
        }
        nextByLetter_ = std::max(nextByLetter_, place.index + 1);
        out_.append(parameters_[place.index].GetText(), parameters_[place.index].GetLength());
        return place.length;
    }

    TraceTextBuffer& out_;
    const STraceParameter* parameters_;
    unsigned count_;
    unsigned nextByLetter_ = 0;  // behind the highest argument used
};

}  // namespace

void STraceParameter::take(const char* text, std::uint32_t bytes) {
    isShort_ = bytes < kShortBytes;
    if (isShort_) {
        std::memcpy(short_, text, bytes);
        short_[bytes] = '\0';
        length_ = bytes;
    } else {
        long_ = SAnsiString(text, bytes);
    }
}

template <class Integer>
void STraceParameter::takeInteger(Integer number) {
    char digits[kIntegerTextUnits];
    take(digits, StringConvFromDecimal(digits, number));
}

STraceParameter::STraceParameter(char character) {
    take(&character, 1);
}
STraceParameter::STraceParameter(wchar_t character) : STraceParameter(SString_t<wchar_t, 1>(&character, 1)) {}
STraceParameter::STraceParameter(const SChar_t<char, 0>& character) {
    take(character.getUnits(), character.getLength());
}
STraceParameter::STraceParameter(const SChar_t<char, 1>& character) {
    take(character.getUnits(), character.getLength());
}
STraceParameter::STraceParameter(const SChar_t<wchar_t, 1>& character)
    : STraceParameter(SString_t<wchar_t, 1>(character)) {}
STraceParameter::STraceParameter(const SString_t<char, 0>& text) : long_(text) {}
STraceParameter::STraceParameter(const SString_t<char, 1>& text) {
    take(text.getString(), text.getLength());
}
STraceParameter::STraceParameter(const SString_t<wchar_t, 1>& text)
    : long_(NarrowTraceText(text.getString(), text.getLength())) {}
#define TARN_TRACE_INTEGER(T)                    \
    STraceParameter::STraceParameter(T number) { \
        takeInteger(number);                     \
    }
TARN_FOR_EACH_PROMOTED_INTEGER(TARN_TRACE_INTEGER)

STraceParameter::STraceParameter(double number) : long_(SStringConv::ToString(number)) {}
STraceParameter::STraceParameter(const char* text) {
    if (text == nullptr) text = kNull;
    take(text, static_cast<std::uint32_t>(std::strlen(text)));
}
STraceParameter::STraceParameter(const wchar_t* text)
    : long_(text != nullptr ? NarrowTraceText(text) : SAnsiString(kNull)) {}
STraceParameter::STraceParameter(std::nullptr_t) : STraceParameter(kNull) {}
STraceParameter::STraceParameter(const void* address) : long_("0x" + SStringConv::ToString(address)) {}
STraceParameter::STraceParameter(bool value) : STraceParameter(value ? "true" : "false") {}

SAnsiString STraceParameter::GetString() const {
    return isShort_ ? SAnsiString(short_, length_) : long_;
}

SAnsiString NarrowTraceText(const wchar_t* text, std::uint32_t units) {
    SAnsiString narrow;
    narrow.fromWChar(text, units);
    return narrow;
}

SAnsiString NarrowTraceText(const wchar_t* text) {
    return NarrowTraceText(text, static_cast<std::uint32_t>(std::wcslen(text)));
}

void FillTrace(TraceTextBuffer& out, const char* format, const STraceParameter* parameters, unsigned count) {
    if (format != nullptr) TraceFormat(out, parameters, count).fill(format);
}

SAnsiString FormatTrace(const char* format, const STraceParameter* parameters, unsigned count) {
    TraceTextBuffer text;
    FillTrace(text, format, parameters, count);
    return text.string();
}

SAnsiString FormatTrace(const wchar_t* format, const STraceParameter* parameters, unsigned count) {
    if (format == nullptr) return SAnsiString();
    return FormatTrace(NarrowTraceText(format).getString(), parameters, count);
}

}  // namespace TarnLibA500
