#include "tarnlib/mbcscodesetconverter.h"

#include <climits>
#include <cstring>

#include <windows.h>

#include "diag/require.h"
#include "strings/memory.h"
#include "strings/stringbuilder.h"
#include "tarnlib/UTFConverter.h"

namespace TarnLibA500 {
namespace {

constexpr const char* kUnit = "mbcscodesetconverter";
constexpr int kTraceLevel = 1;

using Codeset = MBCSCodesetConverter::ExplicitCodeset;

// The system's number for a code set, 0 for those that are not converted by the system.
UINT SystemPage(Codeset codeset) {
    switch (codeset) {
        case MBCSCodesetConverter::Windows1252:
        case MBCSCodesetConverter::Windows1252Too:
            return 1252;
        case MBCSCodesetConverter::Windows932:
            return 932;
        case MBCSCodesetConverter::ISO8859_15:
            return 28605;
        default:
            return 0;
    }
}

bool IsKnown(Codeset codeset) {
    const bool known = codeset == MBCSCodesetConverter::Current || codeset == MBCSCodesetConverter::UTF8 ||
                       SystemPage(codeset) != 0;
    return Require(known, kUnit, "codeset is known");
}

// The system counts in int.
int SystemCount(std::uint32_t count) {
    if (count > INT_MAX) throw BadAllocation();
    return static_cast<int>(count);
}

SAnsiString FromWide(const SString_t<wchar_t, 1>& wide) {
    SAnsiString text;
    text.fromWChar(wide.getString(), wide.getLength());
    return text;
}

SAnsiString FromUTF8(const char* bytes, std::uint32_t count) {
    SOCAString wide;
    if (!CUTFConverter::UTF8ToUTF16(bytes, count, wide))
        TraceText(kTraceLevel, kUnit, "failed UTF8 -> UCS2 conversion");
    return FromWide(wide);
}

SAnsiString FromSystemPage(const char* bytes, std::uint32_t count, UINT page) {
    const int length = SystemCount(count);
    const int units = MultiByteToWideChar(page, 0, bytes, length, nullptr, 0);
    if (units <= 0) return SAnsiString();
    StringBuilder<wchar_t, 1> wide(static_cast<std::uint32_t>(units));
    MultiByteToWideChar(page, 0, bytes, length, wide.units(), units);
    return FromWide(wide);
}

// Room for so many bytes and a zero byte behind them, all used at first.
class BytesOut {
  public:
    explicit BytesOut(std::uint32_t count) : count_(count), buffer_(count + 1) { bytes()[count] = 0; }
    unsigned char* bytes() { return buffer_.getBuffer(); }
    SSimpleBuffer finish() {
        buffer_.releaseBuffer(count_);
        return buffer_;
    }

  private:
    std::uint32_t count_;
    SSimpleBuffer buffer_;
};

SSimpleBuffer AsTheyAre(const SAnsiString& text) {
    BytesOut out(text.getLength());
    std::memcpy(out.bytes(), text.getString(), text.getLength());
    return out.finish();
}

SSimpleBuffer ToUTF8(const SAnsiString& text) {
    const std::uint32_t needed = text.getNBytesForUTF8();
    BytesOut out(needed - 1);
    if (text.toUTF8(reinterpret_cast<char*>(out.bytes()), needed) < 0) {
        TraceText(kTraceLevel, kUnit, "failed to convert to UTF-8");
        return BytesOut(0).finish();
    }
    return out.finish();
}

SSimpleBuffer ToSystemPage(const SAnsiString& text, UINT page) {
    SWCharString wide;
    wide.fromMBCS(text.getString());
    const int units = SystemCount(wide.getLength());
    const int count =
        units != 0 ? WideCharToMultiByte(page, 0, wide.getString(), units, nullptr, 0, "?", nullptr) : 0;
    BytesOut out(static_cast<std::uint32_t>(count));
    char* const bytes = reinterpret_cast<char*>(out.bytes());
    if (count != 0) WideCharToMultiByte(page, 0, wide.getString(), units, bytes, count, "?", nullptr);
    return out.finish();
}

}  // namespace

SAnsiString MBCSCodesetConverter::ExplicitCodesetToT(const char* bytes, ExplicitCodeset codeset) {
    return ExplicitCodesetToT(bytes, bytes != nullptr ? static_cast<std::uint32_t>(std::strlen(bytes)) : 0,
                              codeset);
}

SAnsiString MBCSCodesetConverter::ExplicitCodesetToT(const char* bytes, std::uint32_t count,
                                                     ExplicitCodeset codeset) {
    if (!IsKnown(codeset) || bytes == nullptr || count == 0) return SAnsiString();
    if (codeset == Current) return SAnsiString(bytes, count);
    return codeset == UTF8 ? FromUTF8(bytes, count) : FromSystemPage(bytes, count, SystemPage(codeset));
}

SAnsiString MBCSCodesetConverter::ExplicitCodesetToT(const SSimpleBuffer& bytes, ExplicitCodeset codeset) {
    return ExplicitCodesetToT(reinterpret_cast<const char*>(bytes.getBufferProtected()), bytes.getNBytes(),
                              codeset);
}

SSimpleBuffer MBCSCodesetConverter::TToExplicitCodeset(const SAnsiString& text, ExplicitCodeset codeset) {
    if (!IsKnown(codeset)) return SSimpleBuffer();
    if (codeset == Current) return AsTheyAre(text);
    return codeset == UTF8 ? ToUTF8(text) : ToSystemPage(text, SystemPage(codeset));
}

}  // namespace TarnLibA500
