#include "tarnlib/md5.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <utility>

#include "diag/assert/require.h"
#include "security/constanttime.h"
#include "security/secretbytes.h"
#include "strings/base/wipe.h"
#include "strings/characters/codepagetext.h"
#include "strings/characters/utf.h"

namespace TarnLibA500 {
namespace {

using Word = std::uint32_t;

constexpr const char* kUnit = "md5";
constexpr unsigned kSteps = 64;
constexpr unsigned kStepsInRound = 16;
constexpr std::uint32_t kLengthBytes = 8;
constexpr Word kBegin[] = {0x67452301, 0xEFCDAB89, 0x98BADCFE, 0x10325476};
// The integer part of 2^32 |sin(i + 1)|.
constexpr Word kSines[kSteps] = {
    0xD76AA478, 0xE8C7B756, 0x242070DB, 0xC1BDCEEE, 0xF57C0FAF, 0x4787C62A, 0xA8304613, 0xFD469501,
    0x698098D8, 0x8B44F7AF, 0xFFFF5BB1, 0x895CD7BE, 0x6B901122, 0xFD987193, 0xA679438E, 0x49B40821,
    0xF61E2562, 0xC040B340, 0x265E5A51, 0xE9B6C7AA, 0xD62F105D, 0x02441453, 0xD8A1E681, 0xE7D3FBC8,
    0x21E1CDE6, 0xC33707D6, 0xF4D50D87, 0x455A14ED, 0xA9E3E905, 0xFCEFA3F8, 0x676F02D9, 0x8D2A4C8A,
    0xFFFA3942, 0x8771F681, 0x6D9D6122, 0xFDE5380C, 0xA4BEEA44, 0x4BDECFA9, 0xF6BB4B60, 0xBEBFBC70,
    0x289B7EC6, 0xEAA127FA, 0xD4EF3085, 0x04881D05, 0xD9D4D039, 0xE6DB99E5, 0x1FA27CF8, 0xC4AC5665,
    0xF4292244, 0x432AFF97, 0xAB9423A7, 0xFC93A039, 0x655B59C3, 0x8F0CCC92, 0xFFEFF47D, 0x85845DD1,
    0x6FA87E4F, 0xFE2CE6E0, 0xA3014314, 0x4E0811A1, 0xF7537E82, 0xBD3AF235, 0x2AD7D2BB, 0xEB86D391};
constexpr int kRotations[4][4] = {{7, 12, 17, 22}, {5, 9, 14, 20}, {4, 11, 16, 23}, {6, 10, 15, 21}};
// Which word of the block a step takes: the first one of its round, and how far it is to the next.
constexpr unsigned kFirstWord[] = {0, 1, 5, 0};
constexpr unsigned kNextWord[] = {1, 5, 3, 7};

// The function of each round, added to what there is. It is written so that the newest of the three words comes in
// last: every step waits for that one.
template <unsigned round>
[[gnu::always_inline]] inline Word AddFunction(Word sum, Word newest, Word older, Word oldest) {
    if constexpr (round == 0) return sum + (oldest ^ (newest & (older ^ oldest)));
    if constexpr (round == 1) return sum + (older & ~oldest) + (newest & oldest);
    if constexpr (round == 2) return sum + (newest ^ (older ^ oldest));
    return sum + (older ^ (newest | ~oldest));
}

// The bytes of this machine's words come in the order of the digest's.
static_assert(std::endian::native == std::endian::little);

[[gnu::always_inline]] inline Word WordAt(const unsigned char* block, unsigned index) {
    Word word;
    std::memcpy(&word, block + index * sizeof word, sizeof word);
    return word;
}

template <unsigned step>
[[gnu::always_inline]] inline void Step(Word (&state)[4], const unsigned char* block) {
    constexpr unsigned kRound = step / kStepsInRound;
    constexpr unsigned kWord = (kFirstWord[kRound] + kNextWord[kRound] * step) % kStepsInRound;
    // Each step replaces one of the four, and the next step the one before it.
    Word& replaced = state[(kSteps - step) % 4];
    const Word newest = state[(kSteps - step + 1) % 4];
    const Word older = state[(kSteps - step + 2) % 4];
    const Word oldest = state[(kSteps - step + 3) % 4];
    const Word sum =
        AddFunction<kRound>(replaced + WordAt(block, kWord) + kSines[step], newest, older, oldest);
    replaced = newest + std::rotl(sum, kRotations[kRound][step % 4]);
}

template <std::size_t... kStep>
[[gnu::always_inline]] inline void DoSteps(Word (&state)[4], const unsigned char* block,
                                           std::index_sequence<kStep...>) {
    (Step<kStep>(state, block), ...);
}

void DigestBlocks(Word (&state)[4], const unsigned char* bytes, std::uint32_t blocks) {
    constexpr std::uint32_t kBlockBytes = kStepsInRound * sizeof(Word);
    for (; blocks != 0; --blocks, bytes += kBlockBytes) {
        Word next[] = {state[0], state[1], state[2], state[3]};
        DoSteps(next, bytes, std::make_index_sequence<kSteps>());
        for (unsigned i = 0; i < 4; ++i) state[i] += next[i];
    }
}

}  // namespace

// ------------------------------------------------------------------------------------------------ in pieces

MD5::MD5() noexcept {
    begin();
}

MD5::~MD5() {
    Wipe(state_, sizeof state_);
    Wipe(waiting_, sizeof waiting_);
}

MD5::MD5(const MD5& other) noexcept = default;
MD5& MD5::operator=(const MD5& other) noexcept = default;

void MD5::begin() noexcept {
    std::copy(std::begin(kBegin), std::end(kBegin), state_);
    total_ = 0;
}

void MD5::Update(const void* bytes, std::uint32_t count) noexcept {
    if (!Require(bytes != nullptr || count == 0, kUnit, "bytes != NULL || count == 0")) return;
    const auto* at = static_cast<const unsigned char*>(bytes);
    const auto filled = static_cast<std::uint32_t>(total_ % kBlockBytes);
    total_ += count;
    if (filled != 0) {
        const std::uint32_t part = std::min(count, kBlockBytes - filled);
        std::copy(at, at + part, waiting_ + filled);
        at += part;
        count -= part;
        if (filled + part < kBlockBytes) return;
        DigestBlocks(state_, waiting_, 1);
    }
    DigestBlocks(state_, at, count / kBlockBytes);
    std::copy(at + count / kBlockBytes * kBlockBytes, at + count, waiting_);
}

// Behind the bytes come a single bit, zeros up to the end of a block, and the length in bits.
void MD5::Finish(unsigned char (&digest)[kDigestBytes]) noexcept {
    static constexpr unsigned char kPadding[kBlockBytes] = {0x80};
    const std::uint64_t bits = total_ * 8;
    const auto filled = static_cast<std::uint32_t>((total_ + kLengthBytes) % kBlockBytes);
    Update(kPadding, kBlockBytes - filled);
    Update(&bits, sizeof bits);
    std::memcpy(digest, state_, sizeof digest);
    begin();
}

// ------------------------------------------------------------------------------------------------ texts

void MD5::FromString(const char* text, unsigned char (&digest)[kDigestBytes]) noexcept {
    MD5 md5;
    if (Require(text != nullptr, kUnit, "text != NULL"))
        md5.Update(text, static_cast<std::uint32_t>(std::strlen(text)));
    md5.Finish(digest);
}

void MD5::FromString(const wchar_t* text, unsigned char (&digest)[kDigestBytes], bool asUtf8) {
    const wchar_t* at = Require(text != nullptr, kUnit, "text != NULL") ? text : L"";
    const auto length = static_cast<std::uint32_t>(std::char_traits<wchar_t>::length(at));
    const wchar_t* const end = at + length;
    const mbchar::CodePage& page = mbchar::CodePage::Current();
    SecretBytes bytes(asUtf8 ? utf::BytesOf(at, length) : mbchar::CountBytes(page, at, end));
    unsigned char* out = bytes.data();
    if (asUtf8) {
        utf::ConvertWhole(at, end, out, out + bytes.size());
    } else {
        mbchar::Encode(page, at, end, reinterpret_cast<char*>(out), bytes.size());
    }
    MD5 md5;
    md5.Update(bytes.data(), bytes.size());
    md5.Finish(digest);
}

bool MD5::DigestEqual(const unsigned char (&a)[kDigestBytes],
                      const unsigned char (&b)[kDigestBytes]) noexcept {
    return EqualInConstantTime(a, b, kDigestBytes);
}

SAnsiString MD5::DigestToString(const unsigned char (&digest)[kDigestBytes]) {
    constexpr char kDigits[] = "0123456789abcdef";
    char text[2 * kDigestBytes];
    for (std::uint32_t i = 0; i < kDigestBytes; ++i) {
        text[2 * i] = kDigits[digest[i] >> 4];
        text[2 * i + 1] = kDigits[digest[i] & 0xF];
    }
    return SAnsiString(text, sizeof text);
}

}  // namespace TarnLibA500
