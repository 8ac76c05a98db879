// Strings against std::string: sharing, growth, search; UTF-8 as narrow text against code page 1252.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cctype>
#include <clocale>
#include <string>

#include <windows.h>

#include "items.h"
#include "row.h"
#include "tarnlib/UTFConverter.h"
#include "tarnlib/snarrowtext.h"
#include "tarnlib/sstring.h"

using namespace TarnLibA500;
using namespace bench;

namespace {

constexpr int kAppends = 1'000'000;
constexpr std::size_t kTextBytes = 65536;
constexpr const char* kLocale1252 = "English_United States.1252";
constexpr const char* kLocale932 = "Japanese_Japan.932";

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
    std::setlocale(LC_ALL, kLocale1252);
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

SAnsiString TrimOurs(const char* from) {
    SAnsiString text(from);
    text.trim();
    return text;
}
std::string TrimStd(const char* from) {
    constexpr const char* kBlanks = " \t\n\v\f\r";
    std::string text(from);
    text.erase(text.find_last_not_of(kBlanks) + 1);
    text.erase(0, text.find_first_not_of(kBlanks));
    return text;
}

bool NoCaseOurs(const TwoNames<SAnsiString>& of) {
    return of.a.compareNoCase(of.b) == 0;
}
bool NoCaseStd(const TwoNames<std::string>& of) {
    const auto lower = [](char byte) { return byte >= 'A' && byte <= 'Z' ? byte | 0x20 : byte; };
    return std::equal(of.a.begin(), of.a.end(), of.b.begin(), of.b.end(),
                      [&](char x, char y) { return lower(x) == lower(y); });
}

void NoCaseAccented(benchmark::State& state) {
    std::setlocale(LC_ALL, kLocale1252);
    const SAnsiString a(kAccented);
    const SAnsiString b(kAccentedToo);
    for ([[maybe_unused]] auto _ : state) benchmark::DoNotOptimize(a.compareNoCase(b));
    std::setlocale(LC_ALL, "C");
}
void NoCaseSystem(benchmark::State& state) {
    for ([[maybe_unused]] auto _ : state)
        benchmark::DoNotOptimize(CompareStringA(0x409, NORM_IGNORECASE, kAccented, -1, kAccentedToo, -1));
}

SAnsiString LowerOurs(const char* from) {
    SAnsiString text(from);
    text.toLower();
    return text;
}
std::string LowerStd(const char* from) {
    std::string text(from);
    for (char& byte : text) byte = static_cast<char>(std::tolower(static_cast<unsigned char>(byte)));
    return text;
}

void Use932(const benchmark::State&) {
    std::setlocale(LC_ALL, kLocale932);
}
void UseC(const benchmark::State&) {
    std::setlocale(LC_ALL, "C");
}

const bool added = [] {
    AddRow("Trim_C", "ours", Padded, TrimOurs);
    AddRow("Trim_C", "std::string", Padded, TrimStd);
    AddRow("Trim_932", "ours", Padded, TrimOurs)->Setup(Use932)->Teardown(UseC);
    AddRow("Trim_932", "std::string", Padded, TrimStd);
    AddRow("CompareNoCase_C", "ours", OnePair<SAnsiString>, NoCaseOurs);
    AddRow("CompareNoCase_C", "std::equal", OnePair<std::string>, NoCaseStd);
    AddRow("ToLower_C", "ours", MixedCase, LowerOurs);
    AddRow("ToLower_C", "std::tolower", MixedCase, LowerStd);
    return true;
}();

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

BENCHMARK(NoCaseAccented)->Name("BM_CompareNoCase_accented_1252/ours");
BENCHMARK(NoCaseSystem)->Name("BM_CompareNoCase_accented_1252/CompareString");

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
