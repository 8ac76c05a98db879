#include "security/utf8text.h"

#include <algorithm>

#include "diag/assert/levels.h"
#include "strings/characters/codepagetext.h"
#include "strings/characters/utf.h"
#include "strings/text/stringbuilder.h"
#include "tarnlib/straceobj.h"

namespace TarnLibA500 {
namespace {

constexpr const char* kUnit = "utf8text";

// Hands the text on as UTF-16, a piece at a time.
template <class Use>
void ForEachPiece(const mbchar::CodePage& page, const char* text, std::uint32_t length, Use use) {
    constexpr std::uint32_t kPieceUnits = 256;
    wchar_t piece[kPieceUnits];
    std::uint32_t most = 0;
    for (const char *at = text, *const end = text + length; at < end;) {
        const std::uint32_t units = mbchar::Decode(page, at, end, piece, kPieceUnits);
        most = std::max(most, units);
        use(piece, units);
    }
    Wipe(piece, most * sizeof(wchar_t));
}

std::uint64_t Utf8Bytes(const mbchar::CodePage& page, const char* text, std::uint32_t length) {
    std::uint64_t bytes = 0;
    ForEachPiece(page, text, length,
                 [&](const wchar_t* units, std::uint32_t count) { bytes += utf::BytesOf(units, count); });
    return bytes;
}

// A replacement that was not there before stands for a character that is lost.
template <class Before, class After>
void TraceLoss(const Before* before, const Before* beforeEnd, const After* after, const After* afterEnd) {
    const auto lost = std::count(after, afterEnd, After{mbchar::kReplacement}) -
                      std::count(before, beforeEnd, Before{mbchar::kReplacement});
    if (lost > 0) TARN_TRACE_AT(levels::kLoss, kUnit, "%1 characters of a text became \"?\"", lost);
}

}  // namespace

Utf8Text::Utf8Text(const mbchar::CodePage& page, const char* text, std::uint32_t length)
    : bytes_(Utf8Bytes(page, text, length)) {
    unsigned char* at = bytes_.data();
    unsigned char* const end = at + bytes_.size();
    ForEachPiece(page, text, length, [&](const wchar_t* units, std::uint32_t count) {
        utf::ConvertWhole(units, units + count, at, end);
    });
    TraceLoss(text, text + length, bytes_.data(), end);
}

bool TextFromUtf8(const SCrypt::ByteStr& utf8, SAnsiString& text) {
    text.empty();
    SecretBytes memory(std::uint64_t{utf8.count} * sizeof(wchar_t));  // never more units than bytes
    auto* const wide = reinterpret_cast<wchar_t*>(memory.data());
    wchar_t* end = wide;
    if (!utf::ConvertWhole(utf8.bytes, utf8.bytes + utf8.count, end, wide + utf8.count)) return false;
    const mbchar::CodePage& page = mbchar::CodePage::Current();
    const wchar_t* at = wide;
    StringBuilder<char, 0> built(mbchar::CountBytes(page, wide, end));
    built.cut(mbchar::Encode(page, at, end, built.units(), built.room()));
    text = static_cast<const SString_t<char, 0>&>(built);
    TraceLoss(utf8.bytes, utf8.bytes + utf8.count, text.getString(), text.end().getPtr());
    return true;
}

}  // namespace TarnLibA500
