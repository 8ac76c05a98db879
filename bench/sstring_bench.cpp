// Strings against std::string: sharing, growth, search; UTF-8 as narrow text against code page 1252.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cctype>
#include <clocale>
#include <string>

#include <windows.h>

#include "tarnlib/UTFConverter.h"
#include "tarnlib/snarrowtext.h"
#include "tarnlib/sstring.h"

using namespace TarnLibA500;

namespace {

constexpr int kAppends = 1'000'000;
constexpr std::size_t kTextBytes = 65536;

template <class String>
void Copy(benchmark::State& state, std::size_t length) {
    const String original(std::string(length, 'x').c_str());
    for ([[maybe_unused]] auto _ : state) {
        String copy(original);
        benchmark::DoNotOptimize(copy);
    }
}

void CopyOurs(benchmark::State& state, std::size_t length) {
    Copy<SAnsiString>(state, length);
}
void CopyStd(benchmark::State& state, std::size_t length) {
    Copy<std::string>(state, length);
}

template <class String>
void Append(benchmark::State& state) {
    for ([[maybe_unused]] auto _ : state) {
        String s;
        for (int i = 0; i < kAppends; ++i) s += 'x';
        benchmark::DoNotOptimize(s);
    }
}

std::string Repeated(const std::string& line) {
    std::string text;
    while (text.size() < kTextBytes) text += line;
    return text;
}

const std::string& English() {
    static const std::string text = Repeated("the quick brown fox jumps over the lazy dog, and then again; ");
    return text;
}

// Every character but the last two has the trail byte 5C.
const std::string& Japanese() {
    static const std::string text = Repeated("\x83\x5C\x95\x5C\x8F\x5C\x94\x5C\x82\xA0\x82\xA2");
    return text;
}

void FindOurs(benchmark::State& state, const char* locale, const std::string& text, const char* what) {
    std::setlocale(LC_ALL, locale);
    const SAnsiString s(text.c_str());
    const SAnsiString wanted(what);
    for ([[maybe_unused]] auto _ : state) benchmark::DoNotOptimize(s.find(wanted));
    std::setlocale(LC_ALL, "C");
}

void FindStd(benchmark::State& state, const std::string& text, const char* what) {
    const std::string wanted(what);
    for ([[maybe_unused]] auto _ : state) benchmark::DoNotOptimize(text.find(wanted));
}

// The same text and the same work in either.
void InUtf8(benchmark::State& state, void (*work)(const SAnsiString&)) {
    SNarrowText::UseUtf8();
    const SAnsiString text(English().c_str());
    for ([[maybe_unused]] auto _ : state) work(text);
    SNarrowText::FollowLocale();
}
void In1252(benchmark::State& state, void (*work)(const SAnsiString&)) {
    std::setlocale(LC_ALL, "English_United States.1252");
    const SAnsiString text(English().c_str());
    for ([[maybe_unused]] auto _ : state) work(text);
    std::setlocale(LC_ALL, "C");
}

void Count(const SAnsiString& text) {
    benchmark::DoNotOptimize(text.getNChars());
}
void Step(const SAnsiString& text) {
    SAnsiString::iterator at = text.begin();
    while (!at.isAtEnd()) ++at;
    benchmark::DoNotOptimize(at);
}
void Cut(const SAnsiString& text) {
    benchmark::DoNotOptimize(text.mid(text.getLength() / 2, 10));
}
void Find(const SAnsiString& text) {
    benchmark::DoNotOptimize(text.find("lazy cat"));
}
void ToUpper(const SAnsiString& text) {
    benchmark::DoNotOptimize(SAnsiString(text).toUpper());
}
void ToWide(const SAnsiString& text) {
    SWCharString wide;
    wide.fromMBCS(text.getString(), text.getLength());
    benchmark::DoNotOptimize(wide);
}
void ToWideByConverter(const SAnsiString& text) {
    SOCAString wide;
    CUTFConverter::UTF8ToUTF16(text.getString(), text.getLength(), wide);
    benchmark::DoNotOptimize(wide);
}

// --- small functions on short texts; the rivals make a string each time where ours do ---

constexpr const char* kPadded = "   the quick brown fox jumps over the lazy dog, and then again \t ";
constexpr const char* kMixed = "The Quick Brown Fox Jumps Over The Lazy Dog, And Then Again";
constexpr const char* kHeader = "Content-Transfer-Encoding";
constexpr const char* kHeaderToo = "content-transfer-encodinG";
constexpr const char* kAccented =
    "Gr\xF6\xDF"
    "enma\xDFst\xE4"
    "be der \xDC"
    "bung";
constexpr const char* kAccentedToo =
    "gr\xF6\xDF"
    "enMa\xDFst\xC4"
    "be der \xFC"
    "bung";

void TrimOurs(benchmark::State& state, const char* locale) {
    std::setlocale(LC_ALL, locale);
    for ([[maybe_unused]] auto _ : state) benchmark::DoNotOptimize(SAnsiString(kPadded).trim());
    std::setlocale(LC_ALL, "C");
}
void TrimStd(benchmark::State& state) {
    constexpr const char* kBlanks = " \t\n\v\f\r";
    for ([[maybe_unused]] auto _ : state) {
        std::string text(kPadded);
        text.erase(text.find_last_not_of(kBlanks) + 1);
        text.erase(0, text.find_first_not_of(kBlanks));
        benchmark::DoNotOptimize(text);
    }
}

void NoCaseOurs(benchmark::State& state, const char* locale, const char* left, const char* right) {
    std::setlocale(LC_ALL, locale);
    const SAnsiString a(left);
    const SAnsiString b(right);
    for ([[maybe_unused]] auto _ : state) benchmark::DoNotOptimize(a.compareNoCase(b));
    std::setlocale(LC_ALL, "C");
}
void NoCaseStd(benchmark::State& state) {
    const std::string a(kHeader);
    const std::string b(kHeaderToo);
    const auto lower = [](char byte) { return byte >= 'A' && byte <= 'Z' ? byte | 0x20 : byte; };
    for ([[maybe_unused]] auto _ : state) {
        benchmark::DoNotOptimize(std::equal(a.begin(), a.end(), b.begin(), b.end(),
                                            [&](char x, char y) { return lower(x) == lower(y); }));
    }
}
void NoCaseSystem(benchmark::State& state) {
    for ([[maybe_unused]] auto _ : state)
        benchmark::DoNotOptimize(CompareStringA(0x409, NORM_IGNORECASE, kAccented, -1, kAccentedToo, -1));
}

void LowerOurs(benchmark::State& state) {
    for ([[maybe_unused]] auto _ : state) benchmark::DoNotOptimize(SAnsiString(kMixed).toLower());
}
void LowerStd(benchmark::State& state) {
    for ([[maybe_unused]] auto _ : state) {
        std::string text(kMixed);
        for (char& byte : text) byte = static_cast<char>(std::tolower(static_cast<unsigned char>(byte)));
        benchmark::DoNotOptimize(text);
    }
}

constexpr const char* kLocale1252 = "English_United States.1252";
constexpr const char* kLocale932 = "Japanese_Japan.932";

}  // namespace

BENCHMARK_CAPTURE(CopyOurs, 32, 32)->Name("BM_StringCopy_32/ours");
BENCHMARK_CAPTURE(CopyStd, 32, 32)->Name("BM_StringCopy_32/std::string");
BENCHMARK_CAPTURE(CopyOurs, 100000, 100000)->Name("BM_StringCopy_100000/ours");
BENCHMARK_CAPTURE(CopyStd, 100000, 100000)->Name("BM_StringCopy_100000/std::string");

BENCHMARK(Append<SAnsiString>)->Name("BM_StringAppend_1M/ours");
BENCHMARK(Append<std::string>)->Name("BM_StringAppend_1M/std::string");

BENCHMARK_CAPTURE(FindOurs, sb, kLocale1252, English(), "lazy cat")->Name("BM_StringFind_1252/ours");
BENCHMARK_CAPTURE(FindStd, sb, English(), "lazy cat")->Name("BM_StringFind_1252/std::string");
BENCHMARK_CAPTURE(FindOurs, dbl, kLocale932, Japanese(), "\x83\x5C\x83\x5C")->Name("BM_StringFind_932/ours");
BENCHMARK_CAPTURE(FindStd, dbl, Japanese(), "\x83\x5C\x83\x5C")->Name("BM_StringFind_932/std::string");
// The worst case: the byte that is looked for stands in the text, but only as a trail byte. The rival looks
// for a byte that the text does not hold, so that both read it to its end.
BENCHMARK_CAPTURE(FindOurs, trail, kLocale932, Japanese(), "\\")->Name("BM_StringFind_932TrailBytes/ours");
BENCHMARK_CAPTURE(FindStd, trail, Japanese(), "\\#")->Name("BM_StringFind_932TrailBytes/std::string");

BENCHMARK_CAPTURE(TrimOurs, c, "C")->Name("BM_Trim_C/ours");
BENCHMARK(TrimStd)->Name("BM_Trim_C/std::string");
BENCHMARK_CAPTURE(TrimOurs, dbl, kLocale932)->Name("BM_Trim_932/ours");
BENCHMARK(TrimStd)->Name("BM_Trim_932/std::string");
BENCHMARK_CAPTURE(NoCaseOurs, c, "C", kHeader, kHeaderToo)->Name("BM_CompareNoCase_C/ours");
BENCHMARK(NoCaseStd)->Name("BM_CompareNoCase_C/std::equal");
BENCHMARK_CAPTURE(NoCaseOurs, accented, kLocale1252, kAccented, kAccentedToo)
    ->Name("BM_CompareNoCase_accented_1252/ours");
BENCHMARK(NoCaseSystem)->Name("BM_CompareNoCase_accented_1252/CompareString");
BENCHMARK(LowerOurs)->Name("BM_ToLower_C/ours");
BENCHMARK(LowerStd)->Name("BM_ToLower_C/std::tolower");

#define TARN_IN_UTF8(WORK)                                                \
    BENCHMARK_CAPTURE(InUtf8, WORK, WORK)->Name("BM_Utf8" #WORK "/ours"); \
    BENCHMARK_CAPTURE(In1252, WORK, WORK)->Name("BM_Utf8" #WORK "/in 1252")

TARN_IN_UTF8(Count);
TARN_IN_UTF8(Step);
TARN_IN_UTF8(Cut);
TARN_IN_UTF8(Find);
TARN_IN_UTF8(ToUpper);
TARN_IN_UTF8(ToWide);
BENCHMARK_CAPTURE(InUtf8, Converter, ToWideByConverter)->Name("BM_Utf8ToWide/UTF8ToUTF16");
