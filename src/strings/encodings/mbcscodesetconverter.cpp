#include "tarnlib/mbcscodesetconverter.h"

#include <climits>
#include <cstring>

#include <windows.h>

#include "diag/assert/levels.h"
#include "diag/assert/require.h"
#include "seam/ostext.h"
#include "strings/base/memory.h"
#include "strings/text/stringbuilder.h"
#include "tarnlib/UTFConverter.h"

namespace TarnLibA500 {
namespace {

constexpr const char* kUnit = "mbcscodesetconverter";

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

// Where UTF-8 goes wrong, counted from 0; its length when it ends inside a character at the very end.
std::uint32_t PlaceOfIllegalByte(const char* bytes, std::uint32_t count) {
    constexpr std::uint32_t kPieceUnits = 256;
    const auto* const first = reinterpret_cast<const unsigned char*>(bytes);
    const unsigned char* at = first;
    CUTFConverter::Result result = CUTFConverter::TargetExhausted;
    while (result == CUTFConverter::TargetExhausted) {
        wchar_t piece[kPieceUnits];
        wchar_t* end = piece;
        result = CUTFConverter::Convert(at, first + count, end, piece + kPieceUnits);
    }
    return static_cast<std::uint32_t>(at - first);
}

SAnsiString FromUTF8(const char* bytes, std::uint32_t count) {
    SAnsiString text;
    if (!text.fromUTF8(bytes, count)) {
        SAnsiString failure("failed UTF8 -> UCS2 conversion");
        failure << " at byte " << PlaceOfIllegalByte(bytes, count) << " of " << count;
        TraceText(levels::kLoss, kUnit, failure.getString());
    }
    return text;
}

SAnsiString FromSystemPage(const char* bytes, std::uint32_t count, UINT page) {
    const int length = SystemCount(count);
    const int units = ostext::ToWide(page, 0, bytes, length, nullptr, 0);
    if (units <= 0) return SAnsiString();
    StringBuilder<wchar_t, 1> wide(static_cast<std::uint32_t>(units));
    ostext::ToWide(page, 0, bytes, length, wide.units(), units);
    return FromWide(wide);
}

// Room for "count" bytes, all used at first, and a zero byte behind them.
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
    SOCAString wide;
    wide.fromMBCS(text.getString(), text.getLength());
    SSimpleBuffer utf8;
    if (!CUTFConverter::UTF16ToUTF8(wide, utf8))
        TraceText(levels::kLoss, kUnit, "failed to convert to UTF-8");
    utf8.releaseBuffer(utf8.getNBytes() - 1);  // the zero byte stays behind them
    return utf8;
}

SSimpleBuffer ToSystemPage(const SAnsiString& text, UINT page) {
    SWCharString wide;
    wide.fromMBCS(text.getString(), text.getLength());
    const int units = SystemCount(wide.getLength());
    const int count = units != 0 ? ostext::FromWide(page, 0, wide.getString(), units, nullptr, 0, "?") : 0;
    BytesOut out(static_cast<std::uint32_t>(count));
    char* const bytes = reinterpret_cast<char*>(out.bytes());
    if (count != 0) ostext::FromWide(page, 0, wide.getString(), units, bytes, count, "?");
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
