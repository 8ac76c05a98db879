#include "tarnlib/cparamlineargs.h"

#include <algorithm>
#include <atomic>
#include <clocale>
#include <istream>
#include <string>
#include <utility>

#include "diag/assert/levels.h"
#include "diag/assert/require.h"
#include "strings/characters/collate.h"
#include "strings/characters/mbchar.h"
#include "tarnlib/neutralstr.h"
#include "tarnlib/straceobj.h"
#include "tarnlib/stringhelper.h"

#include <emmintrin.h>

extern "C" __declspec(dllimport) unsigned long* __cdecl ___lc_handle_func(void);

namespace TarnLibA500 {
namespace {

constexpr const char* kUnit = "cparamlineargs";
constexpr const char* kSeparators = " \t\r\n";
constexpr const char* kProgramNameMissing = "!m_programName.isEmpty()";

bool IsOption(const SAnsiString& word) {
    return word.getString()[0] == '-';
}

SAnsiString WithoutDashes(const SAnsiString& word) {
    const char* name = word.getString();
    while (*name == '-') ++name;
    return name;
}

bool HasBlank(const SAnsiString& text) {
    return text.find(" ") != text.end();
}

SAnsiString Quoted(const SAnsiString& text) {
    if (!HasBlank(text) || text.getString()[0] == '"') return text;
    return SAnsiString("\"") + text + "\"";
}

// Up to this number names are searched from end to end, which is faster than to keep them in order.
constexpr std::uint32_t kMostUnordered = 32;

// What the order of names depends on. A program may change its locale while options are there.
std::uint64_t CollationNow() {
    return std::uint64_t{mbchar::CodePage::Current().number()} << 32 | ___lc_handle_func()[LC_COLLATE];
}

// The mark of a name of ASCII characters: a hash that is the same for all its spellings, and odd where there are only
// letters and digits. Two names with odd marks are equal where the letters are the same and nowhere else, in every
// collation that sorts letters plainly. Any other name has none.
constexpr std::uint32_t kNoMark = 0;
constexpr std::uint32_t kLettersAndDigits = 1;
// No collation: names were set under several.
constexpr std::uint64_t kMixed = ~std::uint64_t{0};

unsigned char Lower(char letter) {
    return static_cast<unsigned char>(letter >= 'A' && letter <= 'Z' ? letter - 'A' + 'a' : letter);
}

bool IsLetterOrDigit(unsigned char lower) {
    return (lower >= 'a' && lower <= 'z') || (lower >= '0' && lower <= '9');
}

std::uint32_t MarkOf(const SAnsiString& name) {
    std::uint32_t hash = 0x811C9DC5;
    bool isPlain = true;
    for (const char* at = name.getString(); *at != '\0'; ++at) {
        const unsigned char lower = Lower(*at);
        if (lower >= 0x80) return kNoMark;
        isPlain = isPlain && IsLetterOrDigit(lower);
        hash = (hash ^ lower) * 0x01000193;
    }
    constexpr std::uint32_t kNeverNone = 2;
    return (hash & ~kLettersAndDigits) | kNeverNone | (isPlain ? kLettersAndDigits : 0);
}

constexpr std::uint32_t kMarksAtOnce = sizeof(__m128i) / sizeof(std::uint32_t);

std::uint32_t CommonBits(__m128i marks) {
    std::uint32_t each[kMarksAtOnce];
    _mm_storeu_si128(reinterpret_cast<__m128i*>(each), marks);
    return each[0] & each[1] & each[2] & each[3];
}

// The first place from one on where a mark stands, or the end; "common" keeps the bits that all marks before it have.
std::uint32_t FindMark(const SIArray<std::uint32_t>& marks, std::uint32_t from, std::uint32_t wanted,
                       std::uint32_t& common) {
    const __m128i sought = _mm_set1_epi32(static_cast<int>(wanted));
    __m128i all = _mm_set1_epi32(static_cast<int>(common));
    const std::uint32_t end = marks.GetSize();
    std::uint32_t at = from;
    for (; end - at >= kMarksAtOnce; at += kMarksAtOnce) {
        const __m128i some = _mm_loadu_si128(reinterpret_cast<const __m128i*>(marks.Data() + at));
        if (_mm_movemask_epi8(_mm_cmpeq_epi32(some, sought)) != 0) break;
        all = _mm_and_si128(all, some);
    }
    common = CommonBits(all);
    for (; at < end && marks[at] != wanted; ++at) common &= marks[at];
    return at;
}

bool AreSameAscii(const char* left, const char* right) {
    for (; Lower(*left) == Lower(*right); ++left, ++right) {
        if (*left == '\0') return true;
    }
    return false;
}

SAnsiString AsItIs(const SAnsiString& text) {
    return text;
}

}  // namespace

CParamLineArgs::CParamLineArgs() = default;
CParamLineArgs::CParamLineArgs(const CParamLineArgs& other) = default;
CParamLineArgs::CParamLineArgs(CParamLineArgs&& other) noexcept = default;
CParamLineArgs& CParamLineArgs::operator=(const CParamLineArgs& other) {
    return *this = CParamLineArgs(other);
}
CParamLineArgs& CParamLineArgs::operator=(CParamLineArgs&& other) noexcept = default;
CParamLineArgs::~CParamLineArgs() = default;

CParamLineArgs::CParamLineArgs(const SAnsiString& line) {
    SetArgs(line);
}

CParamLineArgs::CParamLineArgs(const SAnsiString& line, const SChar_t<char, 0>& quote) {
    SetArgs(line, quote);
}

CParamLineArgs::CParamLineArgs(const SIArray<SAnsiString>& words) {
    SetArgs(words);
}

CParamLineArgs::CParamLineArgs(int count, char* const* arguments) {
    SetArgs(count, arguments);
}

void CParamLineArgs::SetArgs(const SAnsiString& line) {
    SetArgs(line, '"');
}

void CParamLineArgs::SetArgs(const SAnsiString& line, const SChar_t<char, 0>& quote) {
    if (line.isEmpty()) return;
    SIArray<SAnsiString> words;
    SStringHelper::makeWords(line, words, quote, kSeparators, true, false);
    takeWords(words, words.GetSize() != 0 ? words[0] : m_programName);
}

void CParamLineArgs::SetArgs(int, char* const* arguments) {
    SIArray<SAnsiString> words;
    for (; arguments != nullptr && *arguments != nullptr; ++arguments) words.Add(*arguments);
    SetArgs(words);
}

void CParamLineArgs::SetArgs(const SIArray<SAnsiString>& words) {
    takeWords(words, words.GetSize() != 0 ? words[0] : SAnsiString());
}

void CParamLineArgs::SetArgs(const CParamLineArgs& other) {
    *this = other;
}

void CParamLineArgs::takeWords(const SIArray<SAnsiString>& words, const SAnsiString& program) {
    Require(!program.isEmpty(), kUnit, kProgramNameMissing);
    const std::uint32_t count = words.GetSize();
    CParamLineArgs taken;
    taken.m_programName = program;
    taken.reserve(count);
    for (std::uint32_t i = 1; i < count; ++i) {
        if (!IsOption(words[i])) continue;
        const SAnsiString name = WithoutDashes(words[i]);
        const bool hasValue = i + 1 < count && !words[i + 1].isEmpty() && !IsOption(words[i + 1]);
        taken.SetArg(name, hasValue ? words[++i] : SAnsiString());
    }
    *this = std::move(taken);
}

void CParamLineArgs::SetArg(const SAnsiString& name, const SAnsiString& value) {
    // Copies: the texts may be this object's own.
    const SAnsiString keptName(name);
    const SAnsiString keptValue(value);
    const std::uint32_t before = findIndex(keptName);
    append(keptName, keptValue);
    if (before != kNotFound) removeAt(before);
}

void CParamLineArgs::SetArg(const char* name, const char* value) {
    SetArg(SAnsiString(name), SAnsiString(value));
}

void CParamLineArgs::SetArg(const char* name, const SAnsiString& value) {
    SetArg(SAnsiString(name), value);
}

// ---------------------------------------------------------------------------------------------- positions

bool CParamLineArgs::isOrdered() const {
    return m_order.GetSize() == GetCount() && m_orderedUnder == CollationNow();
}

// Puts the positions in the order of their names; those of equal names in their own.
void CParamLineArgs::order() {
    if (isOrdered()) return;
    const std::uint64_t collation = CollationNow();
    SIArray<std::uint32_t> order;
    order.SetSize(GetCount());
    for (std::uint32_t i = 0; i < order.GetSize(); ++i) order[i] = i;
    std::sort(order.Begin(), order.End(), [this](std::uint32_t a, std::uint32_t b) {
        const int difference = m_names[a].compareNoCase(m_names[b]);
        return difference != 0 ? difference < 0 : a < b;
    });
    m_order = std::move(order);
    m_orderedUnder = collation;
}

// The option goes to the end, whether its name is there or not.
void CParamLineArgs::append(const SAnsiString& name, const SAnsiString& value) {
    const std::uint32_t count = GetCount();
    if (count >= kMostUnordered)
        order();
    else
        m_order.RemoveAll();
    const auto place = std::upper_bound(
        m_order.Begin(), m_order.End(), name,
        [this](const SAnsiString& wanted, std::uint32_t i) { return wanted.compareNoCase(m_names[i]) < 0; });
    const auto rank = place - m_order.Begin();
    const std::uint64_t collation = CollationNow();
    try {
        m_names.Add(name);
        m_values.Add(value);
        m_isAsked.Add(0);
        m_marks.Add(MarkOf(name));
        if (count >= kMostUnordered) m_order.Add(count);
    } catch (...) {
        m_names.SetSize(count);
        m_values.SetSize(count);
        m_isAsked.SetSize(count);
        m_marks.SetSize(count);
        throw;
    }
    if (count == 0) m_setUnder = collation;
    if (m_setUnder != collation) m_setUnder = kMixed;
    if (m_order.GetSize() != 0) std::rotate(m_order.Begin() + rank, m_order.End() - 1, m_order.End());
}

void CParamLineArgs::removeAt(std::uint32_t position) {
    m_names.RemoveAt(position);
    m_values.RemoveAt(position);
    m_isAsked.RemoveAt(position);
    m_marks.RemoveAt(position);
    std::uint32_t kept = 0;
    for (const std::uint32_t i : m_order) {
        if (i != position) m_order[kept++] = i > position ? i - 1 : i;
    }
    m_order.SetSize(kept);
}

// Room for options that are to come, in place of those that are there.
void CParamLineArgs::reserve(std::uint32_t count) {
    m_names.SetSize(count);
    m_values.SetSize(count);
    m_isAsked.SetSize(count);
    m_marks.SetSize(count);
    DeleteAll();
}

void CParamLineArgs::DeleteAll() {
    m_names.RemoveAll();
    m_values.RemoveAll();
    m_isAsked.RemoveAll();
    m_marks.RemoveAll();
    m_order.RemoveAll();
}

// The first of that name. One that is the same but for case is it where no name before can be equal: because all of
// those have letters and digits only, or because all names are different for the collation that holds now.
std::uint32_t CParamLineArgs::findIndex(const SAnsiString& name) const {
    const std::uint32_t wanted = MarkOf(name);
    if (wanted == kNoMark || !CollatesLettersPlainly()) return findByCollation(name);
    std::uint32_t common = wanted;
    for (std::uint32_t i = FindMark(m_marks, 0, wanted, common); i != m_marks.GetSize();
         i = FindMark(m_marks, i + 1, wanted, common)) {
        if (!AreSameAscii(m_names[i].getString(), name.getString())) continue;
        const bool isFirst = (common & kLettersAndDigits) != 0 || m_setUnder == CollationNow();
        return isFirst ? i : findByCollation(name);
    }
    return (common & kLettersAndDigits) != 0 ? kNotFound : findByCollation(name);
}

// The first one that the collation finds equal.
std::uint32_t CParamLineArgs::findByCollation(const SAnsiString& name) const {
    const std::uint32_t count = GetCount();
    if (count > kMostUnordered && isOrdered()) {
        const auto found = std::lower_bound(m_order.Begin(), m_order.End(), name,
                                            [this](std::uint32_t i, const SAnsiString& wanted) {
                                                return m_names[i].compareNoCase(wanted) < 0;
                                            });
        return found != m_order.End() && m_names[*found].compareNoCase(name) == 0 ? *found : kNotFound;
    }
    for (std::uint32_t i = 0; i < count; ++i) {
        if (m_names[i].compareNoCase(name) == 0) return i;
    }
    return kNotFound;
}

// ------------------------------------------------------------------------------------------------ look-up

bool CParamLineArgs::Lookup(const SAnsiString& name, SAnsiString& value) const {
    const std::uint32_t position = findIndex(name);
    if (position == kNotFound) return false;
    // Threads may look up at the same time in an object that none of them changes.
    std::atomic_ref<unsigned char>(m_isAsked[position]).store(1, std::memory_order_relaxed);
    value = m_values[position];
    return true;
}

bool CParamLineArgs::lookupNumber(const SAnsiString& name, long long& value, long long least,
                                  long long most) const {
    SAnsiString text;
    if (!Require(least <= most, kUnit, "least <= most") || !Lookup(name, text)) return false;
    long long number = 0;
    const bool isUsable = NeutralString::ToNumberStrict(text, number) && number >= least && number <= most;
    if (isUsable) {
        value = number;
    } else {
        TARN_TRACE_AT(levels::kLoss, kUnit, "-%1 must be a number from %2 to %3; what was given is not used",
                      name, least, most);
    }
    return isUsable;
}

SIArray<SAnsiString> CParamLineArgs::GetUnused() const {
    SIArray<SAnsiString> unused;
    for (std::uint32_t i = 0; i < GetCount(); ++i) {
        if (std::atomic_ref<unsigned char>(m_isAsked[i]).load(std::memory_order_relaxed) == 0)
            unused.Add(m_names[i]);
    }
    return unused;
}

bool CParamLineArgs::RemoveArg(const SAnsiString& name) {
    const std::uint32_t position = findIndex(name);
    if (position != kNotFound) removeAt(position);
    return position != kNotFound;
}

void CParamLineArgs::MergeArgs(const CParamLineArgs& args) {
    Require(args.m_names.GetSize() == args.m_values.GetSize(), kUnit,
            "args.m_names.GetSize() == args.m_values.GetSize()");
    if (&args == this) return;
    CParamLineArgs merged(*this);
    if (!args.m_programName.isEmpty()) merged.m_programName = args.m_programName;
    for (std::uint32_t i = 0; i < args.GetCount(); ++i) merged.SetArg(args.m_names[i], args.m_values[i]);
    *this = std::move(merged);
}

void CParamLineArgs::SetProgramName(const SAnsiString& name) {
    m_programName = name;
}

SAnsiString CParamLineArgs::GetCmdLine() const {
    Require(!m_programName.isEmpty(), kUnit, kProgramNameMissing);
    SAnsiString line = Quoted(m_programName);
    for (std::uint32_t i = 0; i < GetCount(); ++i) {
        line.concat(" -").concat(m_names[i]);
        if (!m_values[i].isEmpty()) line.concat(" ").concat(Quoted(m_values[i]));
    }
    return line;
}

void CParamLineArgs::appendWords(SIArray<SAnsiString>& args,
                                 SAnsiString (*written)(const SAnsiString&)) const {
    Require(args.GetSize() == 0, kUnit, "args.GetSize() == 0");
    Require(!m_programName.isEmpty(), kUnit, kProgramNameMissing);
    SIArray<SAnsiString> words;
    words.Add(written(m_programName));
    for (std::uint32_t i = 0; i < GetCount(); ++i) {
        words.Add(SAnsiString("-") + m_names[i]);
        if (!m_values[i].isEmpty()) words.Add(written(m_values[i]));
    }
    args.Append(words);
}

void CParamLineArgs::GetArgs(SIArray<SAnsiString>& args) const {
    appendWords(args, &AsItIs);
}

void CParamLineArgs::GetArgsWithQuote(SIArray<SAnsiString>& args) const {
    appendWords(args, &Quoted);
}

void CParamLineArgs::ReadArgsAsProperties(std::istream& in, unsigned int longestLine) {
    constexpr unsigned int kLongestPossible = 16 * 1024 * 1024;
    longestLine = std::min(longestLine, kLongestPossible);
    // One byte more than the longest line: istream's getline counts its terminator, and fails beyond that.
    std::string buffer(std::size_t{longestLine} + 1, '\0');
    CParamLineArgs read(*this);
    while (in.getline(buffer.data(), static_cast<std::streamsize>(buffer.size())) && !in.eof()) {
        SAnsiString line(buffer.c_str());
        line.trimRight();
        const auto equals = line.find("=");
        if (!equals.isAtEnd()) read.SetArg(line.left(equals), SAnsiString(equals.getPtr() + 1));
    }
    *this = std::move(read);
}

}  // namespace TarnLibA500
