#include "strings/characters/collate.h"

#include <array>
#include <bit>
#include <clocale>
#include <cstdint>
#include <cstring>
#include <cwchar>
#include <cwctype>

#include <windows.h>

#include "strings/base/memory.h"
#include "strings/characters/asciiblocks.h"
#include "strings/characters/mbchar.h"
#include "strings/characters/surrogates.h"
#include "strings/characters/unicodecase.h"

extern "C" __declspec(dllimport) LCID* __cdecl ___lc_handle_func(void);

namespace TarnLibA500 {
namespace {

using mbchar::CodePage;

constexpr int kEqualForSystem = CSTR_EQUAL;
// A byte that is no character keeps apart from every other: it collates as a private-use character of its
// own.
constexpr wchar_t kInvalidByteBase = 0xF700;

int Sign(int difference) {
    return (difference > 0) - (difference < 0);
}

LCID CollationLocale() {
    return ___lc_handle_func()[LC_COLLATE];
}

// --- lower-cased order, for the "C" locale and as the last resort ---

// An invalid byte of UTF-8 is a character of its own, behind all others.
constexpr unsigned kBehindUnicode = 0x110000;

// A character of two bytes as a number with the lead byte high.
unsigned FoldedPair(const CodePage& page, const char* text, wchar_t unit) {
    char pair[mbchar::kMaxCharacterBytes] = {text[0], text[1]};
    const int bytes = page.fromWide(pair, static_cast<wchar_t>(std::towlower(unit)));
    const auto lead = static_cast<unsigned char>(pair[0]);
    return bytes == 1 ? lead : static_cast<unsigned>(lead) << 8 | static_cast<unsigned char>(pair[1]);
}

// The number of the lower-cased character at the text, which is advanced: its bytes, in UTF-8 its code point.
unsigned NextFolded(const CodePage& page, const char*& text) {
    if (page.isAlone(*text)) return page.foldByte(*text++);
    const mbchar::Character character = page.characterAt(text);
    const char* const at = text;
    text += character.bytes;
    if (!character.isValid()) return page.foldByte(*at) + (page.isUtf8() ? kBehindUnicode : 0);
    if (page.isUtf8()) return unicodecase::Lower(character.code);
    return FoldedPair(page, at, static_cast<wchar_t>(character.code));
}

// Sixteen bytes can be read behind a place when they lie in the same page of memory, also where the text has ended.
bool IsBlockReadable(const char* at) {
    constexpr std::uintptr_t kPageBytes = 4096;
    return reinterpret_cast<std::uintptr_t>(at) % kPageBytes <= kPageBytes - asciiblocks::kBlock;
}

// ASCII characters that are the same but for case, sixteen at a time.
void SkipSameBlocks(const char*& left, const char*& right) {
    while (IsBlockReadable(left) && IsBlockReadable(right)) {
        const auto a = asciiblocks::Load<__m128i>(left);
        const auto b = asciiblocks::Load<__m128i>(right);
        const __m128i areSame =
            _mm_cmpeq_epi8(asciiblocks::FlipLetters(a, 'A'), asciiblocks::FlipLetters(b, 'A'));
        const unsigned others = asciiblocks::OthersIn(left) | asciiblocks::PlacesOf(a, '\0') |
                                asciiblocks::PlacesOf(areSame, '\0');
        const int same = others == 0 ? asciiblocks::kBlock : std::countr_zero(others);
        left += same;
        right += same;
        if (others != 0) return;
    }
}

// Where every byte is a character.
int OrderByFoldedBytes(const CodePage& page, const char* left, const char* right) {
    while (*left != '\0' && (*left == *right || page.foldByte(*left) == page.foldByte(*right)))
        ++left, ++right;
    return Sign(page.foldByte(*left) - page.foldByte(*right));
}

// Characters of one byte that are the same but for case.
void SkipSameBytes(const CodePage& page, const char*& left, const char*& right) {
    const char* a = left;
    const char* b = right;
    const auto areSame = [&page](char x, char y) {
        return page.isAlone(x) && page.isAlone(y) && page.foldByte(x) == page.foldByte(y);
    };
    while (*a != '\0' && areSame(*a, *b)) ++a, ++b;
    left = a;
    right = b;
}

int OrderByFolding(const CodePage& page, const char* left, const char* right) {
    if (page.hasAscii()) SkipSameBlocks(left, right);
    if (page.isSingleByte()) return OrderByFoldedBytes(page, left, right);
    for (;;) {
        SkipSameBytes(page, left, right);
        const unsigned a = NextFolded(page, left);
        const unsigned b = NextFolded(page, right);
        if (a != b) return a < b ? -1 : 1;
        if (a == 0) return 0;
    }
}

int OrderByFolding(const wchar_t* left, const wchar_t* right) {
    while (*left != L'\0' && *left == *right) ++left, ++right;
    for (;; ++left, ++right) {
        const std::wint_t a = std::towlower(*left);
        const std::wint_t b = std::towlower(*right);
        if (a != b) return a < b ? -1 : 1;
        if (a == 0) return 0;
    }
}

// --- locale order ---

// Where letters and digits alone decide, the system need not be asked, which is ten times slower. That holds
// in locales that sort A to Z one by one, with no letter pairs of their own: English, German and Japanese
// ones.
bool SortsLettersPlainly(LCID locale) {
    const WORD language = PRIMARYLANGID(LANGIDFROMLCID(locale));
    return language == LANG_ENGLISH || language == LANG_GERMAN || language == LANG_JAPANESE;
}

// The place of a letter or digit in the sorting order, 0 for everything else.
constexpr std::array<unsigned char, 128> MakeRanks() {
    std::array<unsigned char, 128> ranks{};
    unsigned char rank = 0;
    for (unsigned digit = '0'; digit <= '9'; ++digit) ranks[digit] = ++rank;
    for (unsigned letter = 0; letter < 26; ++letter) ranks['a' + letter] = ranks['A' + letter] = ++rank;
    return ranks;
}
constexpr auto kRanks = MakeRanks();

template <class unit>
unsigned RankOf(unit character) {
    const auto code = static_cast<std::make_unsigned_t<unit>>(character);
    return code < kRanks.size() ? kRanks[code] : 0;
}

// An ASCII character that stands on both sides, in either case: whatever it weighs, it weighs the same.
template <class unit>
bool SameAscii(unit left, unit right) {
    if (left == unit() || static_cast<std::make_unsigned_t<unit>>(left) >= kRanks.size()) return false;
    const unsigned rank = RankOf(left);
    return left == right || (rank != 0 && rank == RankOf(right));
}

// True, with the order, when the first difference is one of letters and digits, or of one against the end,
// with nothing but ASCII before it.
template <class unit>
bool DecideByRanks(const unit* left, const unit* right, int& order) {
    while (SameAscii(*left, *right)) ++left, ++right;
    const unsigned a = RankOf(*left);
    const unsigned b = RankOf(*right);
    if ((a == 0 && *left != unit()) || (b == 0 && *right != unit())) return false;
    order = Sign(static_cast<int>(a) - static_cast<int>(b));
    return true;
}

// The same for narrow text. Where every byte is a character, those beyond ASCII that stand on both sides weigh the same,
// too: no pair of letters is a letter of its own here, as "aa" is in Danish, where "aA" is not equal.
bool DecideByRanks(const CodePage& page, const char* left, const char* right, int& order) {
    if (page.hasAscii()) SkipSameBlocks(left, right);
    if (page.isSingleByte()) SkipSameBytes(page, left, right);
    return DecideByRanks(left, right, order);
}

constexpr unsigned char kUndecided = 0x80;
constexpr unsigned char kNoAscii = 0xFF;

// ASCII in lower case. In the "C" locale all of it decides, elsewhere letters and digits.
constexpr std::array<unsigned char, 256> MakeWeights(bool isEverywhere) {
    std::array<unsigned char, 256> weights{};
    for (unsigned byte = 1; byte < weights.size(); ++byte) {
        const unsigned fold = byte >= 'A' && byte <= 'Z' ? byte - 'A' + 'a' : byte;
        const bool decides = isEverywhere || (byte < kRanks.size() && kRanks[byte] != 0);
        weights[byte] =
            static_cast<unsigned char>(byte < kUndecided ? fold | (decides ? 0 : kUndecided) : kNoAscii);
    }
    return weights;
}
constexpr auto kWeightsInC = MakeWeights(true);
constexpr auto kWeightsElsewhere = MakeWeights(false);

/// Narrow text in UTF-16, for the system's collation.
class WideText {
  public:
    WideText(const CodePage& page, const char* text) {
        const std::size_t room = std::strlen(text);
        units_ = room <= kUsual
                     ? usual_
                     : static_cast<wchar_t*>(memory::Allocate(std::uint64_t{room} * sizeof(wchar_t)));
        while (*text != '\0') {
            const mbchar::Character character = page.characterAt(text);
            const char32_t invalid = kInvalidByteBase + static_cast<unsigned char>(*text);
            length_ += utf::WriteUnits(character.isValid() ? character.code : invalid, units_ + length_);
            text += character.bytes;
        }
    }
    ~WideText() {
        if (units_ != usual_) memory::Free(units_);
    }
    WideText(const WideText&) = delete;
    WideText& operator=(const WideText&) = delete;

    const wchar_t* units() const { return units_; }
    int length() const { return static_cast<int>(length_); }

  private:
    static constexpr std::size_t kUsual = 128;
    wchar_t usual_[kUsual];
    wchar_t* units_ = usual_;
    std::size_t length_ = 0;
};

/// A zero-terminated copy, on the stack as long as keys usually are.
class Terminated {
  public:
    Terminated(const char* text, std::size_t length)
        : copy_(length < kUsual ? usual_ : static_cast<char*>(memory::Allocate(std::uint64_t{length} + 1))) {
        std::memcpy(copy_, text, length);
        copy_[length] = '\0';
    }
    ~Terminated() {
        if (copy_ != usual_) memory::Free(copy_);
    }
    Terminated(const Terminated&) = delete;
    Terminated& operator=(const Terminated&) = delete;
    const char* get() const { return copy_; }

  private:
    static constexpr std::size_t kUsual = 128;
    char usual_[kUsual];
    char* copy_;
};

int AskSystem(LCID locale, const wchar_t* left, int leftLength, const wchar_t* right, int rightLength) {
    return CompareStringW(locale, NORM_IGNORECASE, left, leftLength, right, rightLength);
}

}  // namespace

int CollateNoCase(const char* left, const char* right) {
    const CodePage& page = CodePage::Current();
    const LCID locale = CollationLocale();
    if (locale == 0) return OrderByFolding(page, left, right);
    int order = 0;
    if (SortsLettersPlainly(locale) && DecideByRanks(page, left, right, order)) return order;
    const WideText a(page, left);
    const WideText b(page, right);
    const int answer = AskSystem(locale, a.units(), a.length(), b.units(), b.length());
    return answer != 0 ? answer - kEqualForSystem : OrderByFolding(page, left, right);
}

int CollateNoCase(const wchar_t* left, const wchar_t* right) {
    const LCID locale = CollationLocale();
    if (locale == 0) return OrderByFolding(left, right);
    int order = 0;
    if (SortsLettersPlainly(locale) && DecideByRanks(left, right, order)) return order;
    const int answer = AskSystem(locale, left, -1, right, -1);
    return answer != 0 ? answer - kEqualForSystem : OrderByFolding(left, right);
}

int CollateNoCase(const char* left, const char* right, std::size_t length) {
    return CollateNoCase(left, Terminated(right, length).get());
}

bool CollatesLettersPlainly() {
    return CollationWeights() != nullptr;
}

const unsigned char* CollationWeights() {
    const LCID locale = CollationLocale();
    if (locale == 0) return kWeightsInC.data();
    return SortsLettersPlainly(locale) ? kWeightsElsewhere.data() : nullptr;
}

int CompareBytesNoCase(const char* left, const char* right) {
    const CodePage& page = CodePage::Current();
    for (;; ++left, ++right) {
        const int a = page.foldByte(*left);
        const int b = page.foldByte(*right);
        if (a != b || a == 0) return a - b;
    }
}

}  // namespace TarnLibA500
