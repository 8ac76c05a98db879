#include "tarnlib/straceparameter.h"

#include <cstring>

#include "tarnlib/sstringconv.h"

namespace TarnLibA500 {
namespace {

constexpr const char* kNull = "(null)";

// The code page's spelling of a wide text, "?" for what it does not have.
SAnsiString Narrow(const wchar_t* text) {
    SAnsiString narrow;
    if (narrow.fromWChar(text)) return narrow;
    for (const wchar_t* unit = text; *unit != L'\0'; ++unit) {
        SChar_t<char, 0> character;
        if (character.fromUChar(*unit)) {
            narrow.concat(character);
        } else {
            narrow.concat('?');
        }
    }
    return narrow;
}

/// Where the next argument of a format goes.
struct Place {
    unsigned length = 0;  ///< code units, 0: no place
    unsigned index = 0;   ///< of the argument
};

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

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
    TraceFormat(const STraceParameter* parameters, unsigned count) : parameters_(parameters), count_(count) {}

    SAnsiString fill(const char* format) {
        const char* at = format;
        while (const char* percent = std::strchr(at, '%')) {
            copy(at, percent);
            at = percent + putPlace(percent);
        }
        text_.concat(at);
        return text_;
    }

  private:
    void copy(const char* first, const char* last) {
        text_.concat(first, static_cast<std::uint32_t>(last - first));
    }

    // Returns how much of the format is done with.
    unsigned putPlace(const char* percent) {
        if (percent[1] == '%') {
            text_.concat('%');
            return 2;
        }
        const Place place =
            IsDigit(percent[1]) ? NumberedPlace(percent) : Place{LetterPlaceLength(percent), nextByLetter_};
        if (place.length == 0 || place.index >= count_) {
            text_.concat('%');
            return 1;
        }
        if (!IsDigit(percent[1])) ++nextByLetter_;
        text_.concat(parameters_[place.index].GetString());
        return place.length;
    }

    const STraceParameter* parameters_;
    unsigned count_;
    unsigned nextByLetter_ = 0;
    SAnsiString text_;
};

}  // namespace

STraceParameter::STraceParameter(const SChar_t<char, 0>& character) : text_(character) {}
STraceParameter::STraceParameter(const SString_t<char, 0>& text) : text_(text) {}
STraceParameter::STraceParameter(int number) : text_(SStringConv::ToString(number)) {}
STraceParameter::STraceParameter(unsigned int number) : text_(SStringConv::ToString(number)) {}
STraceParameter::STraceParameter(long number) : text_(SStringConv::ToString(number)) {}
STraceParameter::STraceParameter(unsigned long number) : text_(SStringConv::ToString(number)) {}
STraceParameter::STraceParameter(long long number) : text_(SStringConv::ToString(number)) {}
STraceParameter::STraceParameter(unsigned long long number) : text_(SStringConv::ToString(number)) {}
STraceParameter::STraceParameter(double number) : text_(SStringConv::ToString(number)) {}
STraceParameter::STraceParameter(const char* text) : text_(text != nullptr ? text : kNull) {}
STraceParameter::STraceParameter(const wchar_t* text)
    : text_(text != nullptr ? Narrow(text) : SAnsiString(kNull)) {}
STraceParameter::STraceParameter(const void* address) : text_("0x" + SStringConv::ToString(address)) {}
STraceParameter::STraceParameter(bool value) : text_(value ? "true" : "false") {}

SAnsiString FormatTrace(const char* format, const STraceParameter* parameters, unsigned count) {
    return format != nullptr ? TraceFormat(parameters, count).fill(format) : SAnsiString();
}

SAnsiString FormatTrace(const wchar_t* format, const STraceParameter* parameters, unsigned count) {
    if (format == nullptr) return SAnsiString();
    return FormatTrace(Narrow(format).getString(), parameters, count);
}

}  // namespace TarnLibA500
