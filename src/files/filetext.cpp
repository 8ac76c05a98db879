#include "files/filetext.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "strings/base/bytesearch.h"
#include "strings/base/wipe.h"
#include "strings/characters/utf8text.h"
#include "tarnlib/UTFConverter.h"
#include "tarnlib/mbcscodesetconverter.h"

namespace TarnLibA500 {
namespace {

using mbchar::CodePage;

constexpr wchar_t kAsciiEnd = 0x80;
// One piece at a time goes through UTF-16, so that it stays in the cache.
constexpr std::uint32_t kPieceBytes = 4096;
// A shorter run of ASCII is not worth leaving the piece for.
constexpr std::uint32_t kAsciiRunBytes = 64;
constexpr std::uint32_t kMaxCodePageBytes = 2;

}  // namespace

TextDecoder::TextDecoder(SFile::FileEncoding encoding, std::uint32_t expectedBytes)
    : page_(CodePage::Current()),
      isKept_(encoding == SFile::nativeCodePage || page_.isUtf8()),
      isChecked_(encoding == SFile::utf8) {
    text_.setSize(expectedBytes);
}

void TextDecoder::add(const char* bytes, std::uint32_t count) {
    if (isKept_) {
        text_.concat(bytes, count);
        if (isChecked_) check();
    } else if (isLegal_) {
        const auto* const first = reinterpret_cast<const unsigned char*>(bytes);
        addUtf8(first, first + count);
    }
}

void TextDecoder::addUtf8(const unsigned char* at, const unsigned char* end) {
    if (pendingBytes_ != 0) completePending(at, end);
    while (isLegal_ && at != end) {
        const auto* const text = reinterpret_cast<const char*>(at);
        const auto ascii =
            static_cast<std::uint32_t>(FindNonAscii(text, reinterpret_cast<const char*>(end)) - text);
        if (ascii >= kAsciiRunBytes || at + ascii == end) {
            text_.concat(text, ascii);
            at += ascii;
            validBytes_ += ascii;
        }
        if (at != end) at = addPart(at, end);
    }
}

// Converts a piece; what is left of a character at its end is kept when nothing follows.
const unsigned char* TextDecoder::addPart(const unsigned char* at, const unsigned char* end) {
    wchar_t units[kPieceBytes];
    wchar_t* last = units;
    const unsigned char* const start = at;
    const unsigned char* const pieceEnd = at + std::min<std::ptrdiff_t>(end - at, kPieceBytes);
    const auto result = CUTFConverter::Convert(at, pieceEnd, last, units + kPieceBytes);
    validBytes_ += static_cast<std::uint32_t>(at - start);
    encode(units, static_cast<std::uint32_t>(last - units));
    Wipe(units, static_cast<std::size_t>(last - units) * sizeof(wchar_t));
    if (result == CUTFConverter::SourceIllegal) isLegal_ = false;
    if (result != CUTFConverter::SourceExhausted || pieceEnd != end) return at;
    keepPending(at, end);
    return end;
}

// What is still not complete with as many bytes as a character can have becomes none with more of them either,
// whatever its first byte promises.
void TextDecoder::keepPending(const unsigned char* at, const unsigned char* end) {
    const auto count = static_cast<std::uint32_t>(end - at);
    isLegal_ = count < kMaxUtf8Bytes;
    if (!isLegal_) return;
    std::memcpy(pending_, at, count);
    pendingBytes_ = count;
}

void TextDecoder::completePending(const unsigned char*& at, const unsigned char* end) {
    while (pendingBytes_ != 0 && isLegal_ && at != end) {
        pending_[pendingBytes_++] = *at++;
        wchar_t units[2];
        wchar_t* last = units;
        const unsigned char* source = pending_;
        const auto result = CUTFConverter::Convert(source, pending_ + pendingBytes_, last, units + 2);
        if (result == CUTFConverter::SourceExhausted && pendingBytes_ < kMaxUtf8Bytes) continue;
        isLegal_ = result == CUTFConverter::ConversionOK;
        if (!isLegal_) return;
        encode(units, static_cast<std::uint32_t>(last - units));
        validBytes_ += pendingBytes_;
        pendingBytes_ = 0;
    }
}

void TextDecoder::encode(const wchar_t* units, std::uint32_t count) {
    char bytes[kPieceBytes * kMaxCodePageBytes];
    char* out = bytes;
    for (const wchar_t* unit = units; unit != units + count; ++unit) {
        if (*unit < kAsciiEnd) {
            *out++ = static_cast<char>(*unit);
            continue;
        }
        const int written = page_.fromWide(out, *unit);
        if (written < 0) *out = mbchar::kReplacement;
        out += written < 0 ? 1 : written;
    }
    text_.concat(bytes, static_cast<std::uint32_t>(out - bytes));
    Wipe(bytes, static_cast<std::size_t>(out - bytes));
}

// Goes on where it stopped: at what is no character, or at one whose end has not come yet.
void TextDecoder::check() {
    const char* const text = text_.getString();
    const char* const end = text_.end().getPtr();
    validBytes_ = static_cast<std::uint32_t>(utf8text::FindInvalid(text + validBytes_, end) - text);
}

SAnsiString TextDecoder::finish() {
    if (pendingBytes_ != 0 || (isKept_ && isChecked_ && validBytes_ != text_.getLength())) isLegal_ = false;
    return isLegal_ || isKept_ ? std::move(text_) : SAnsiString();
}

bool IsAsItIs(const char* bytes, std::uint32_t count, SFile::FileEncoding encoding) {
    if (encoding == SFile::nativeCodePage) return true;
    const char* const end = bytes + count;
    const char* const beyondAscii = FindNonAscii(bytes, end);
    if (beyondAscii == end) return true;
    return CodePage::Current().isUtf8() && utf8text::FindInvalid(beyondAscii, end) == end;
}

SSimpleBuffer EncodeFileText(const SAnsiString& text, bool& isWhole) {
    isWhole = true;
    // The converter takes zero-terminated texts, so it gets what stands between the zero bytes.
    SSimpleBuffer utf8;
    const auto append = [&utf8](const void* bytes, std::uint32_t count) {
        utf8.append(bytes, count,
                    utf8.getNBytes());  // as much again in reserve: a buffer has none of its own
    };
    const char* const end = text.end().getPtr();
    for (const char* at = text.getString(); at < end; ++at) {
        const auto length = static_cast<std::uint32_t>(std::strlen(at));
        if (FindNonAscii(at, at + length) == at + length) {
            append(at, length);
        } else {
            const SSimpleBuffer part =
                MBCSCodesetConverter::TToExplicitCodeset(SAnsiString(at, length), MBCSCodesetConverter::UTF8);
            append(part.getBufferProtected(), part.getNBytes());
            if (part.isEmpty()) isWhole = false;
        }
        at += length;
        if (at != end) append("", 1);
    }
    return utf8;
}

}  // namespace TarnLibA500
