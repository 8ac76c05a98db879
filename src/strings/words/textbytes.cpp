#include <algorithm>
#include <array>

#include "diag/assert/require.h"
#include "strings/base/memory.h"
#include "tarnlib/stringhelper.h"

namespace TarnLibA500 {
namespace {

constexpr const char* kUnit = "stringhelper";
constexpr char kSymbols[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_.";
constexpr std::uint32_t kSymbolCount = 64;
constexpr std::uint32_t kBitsInSymbol = 6;
constexpr std::uint32_t kBitsInByte = 8;
constexpr std::uint32_t kLowSix = kSymbolCount - 1;
constexpr std::uint32_t kLowEight = 0xFF;
constexpr std::uint32_t kGroupBytes = 3;
constexpr std::uint32_t kGroupSymbols = 4;

// Bytes are encoded in pieces of whole groups, so that the pieces join without a seam.
constexpr std::uint32_t kPieceBytes = 30;
constexpr std::uint32_t kPieceSymbols = kPieceBytes / kGroupBytes * kGroupSymbols;

constexpr unsigned char kForeign = 0xFF;
constexpr auto kValues = [] {
    std::array<unsigned char, 256> values{};
    values.fill(kForeign);
    for (unsigned char i = 0; i < kSymbolCount; ++i) values[static_cast<unsigned char>(kSymbols[i])] = i;
    return values;
}();

// Returns the symbols written.
std::uint32_t EncodePiece(char* out, const unsigned char* bytes, std::uint32_t count) {
    std::uint32_t symbols = 0;
    std::uint32_t bits = 0;
    std::uint32_t pending = 0;  // low bits that no symbol has taken yet
    for (std::uint32_t i = 0; i < count; ++i) {
        bits = bits << kBitsInByte | bytes[i];
        for (pending += kBitsInByte; pending >= kBitsInSymbol;) {
            pending -= kBitsInSymbol;
            out[symbols++] = kSymbols[bits >> pending & kLowSix];
        }
    }
    if (pending != 0) out[symbols++] = kSymbols[bits << (kBitsInSymbol - pending) & kLowSix];
    return symbols;
}

bool IsDecodable(const SAnsiString& text) {
    const auto isSymbol = [](char symbol) { return kValues[static_cast<unsigned char>(symbol)] != kForeign; };
    return text.getLength() % kGroupSymbols != 1 &&
           std::all_of(text.getString(), text.end().getPtr(), isSymbol);
}

std::uint32_t DecodedBytes(const SAnsiString& text) {
    const std::uint64_t bits = std::uint64_t{text.getLength()} * kBitsInSymbol;
    return static_cast<std::uint32_t>(bits / kBitsInByte);
}

void Decode(unsigned char* out, const SAnsiString& text) {
    std::uint32_t bits = 0;
    std::uint32_t pending = 0;
    for (const char *at = text.getString(), *const end = text.end().getPtr(); at < end; ++at) {
        bits = bits << kBitsInSymbol | kValues[static_cast<unsigned char>(*at)];
        pending += kBitsInSymbol;
        if (pending < kBitsInByte) continue;
        pending -= kBitsInByte;
        *out++ = static_cast<unsigned char>(bits >> pending & kLowEight);
    }
}

}  // namespace

SAnsiString SStringHelper::toString(const unsigned char* bytes, std::uint32_t count) {
    SAnsiString text;
    if (!Require(bytes != nullptr || count == 0, kUnit, "bytes != NULL")) return text;
    const std::uint64_t symbols = (std::uint64_t{count} * kBitsInByte + kBitsInSymbol - 1) / kBitsInSymbol;
    if (count != 0) text.setSize(static_cast<std::uint32_t>(memory::CheckedSize(symbols)));
    char piece[kPieceSymbols];
    for (std::uint32_t done = 0; done < count;) {
        const std::uint32_t part = std::min(count - done, kPieceBytes);
        text.concat(piece, EncodePiece(piece, bytes + done, part));
        done += part;
    }
    return text;
}

SAnsiString SStringHelper::toString(const SSimpleBuffer& buffer) {
    const std::uint32_t count = buffer.getNBytes();
    return count != 0 ? toString(static_cast<const unsigned char*>(buffer), count) : SAnsiString();
}

bool SStringHelper::fromString(const SAnsiString& text, SSimpleBuffer& buffer) {
    buffer.empty();
    if (!IsDecodable(text)) return false;
    const std::uint32_t count = DecodedBytes(text);
    if (count == 0) return true;
    SSimpleBuffer decoded(count);
    Decode(decoded.getBuffer(), text);
    decoded.releaseBuffer(count);
    buffer = decoded;
    return true;
}

bool SStringHelper::fromString(const SAnsiString& text, unsigned char* bytes, std::uint32_t capacity,
                               std::uint32_t& count) {
    count = 0;
    const std::uint32_t needed = DecodedBytes(text);
    if (!IsDecodable(text) || needed > capacity) return false;
    if (!Require(bytes != nullptr || needed == 0, kUnit, "bytes != NULL")) return false;
    Decode(bytes, text);
    count = needed;
    return true;
}

}  // namespace TarnLibA500
