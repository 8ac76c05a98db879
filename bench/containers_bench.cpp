// The map whose keys ignore case against a std::map that asks the system for each comparison, and one that knows ASCII
// alone; the map without an order against std::unordered_map; sharing a byte buffer against copying a vector.

#include <benchmark/benchmark.h>

#include <clocale>
#include <map>
#include <string>
#include <unordered_map>
#include <vector>

#include <windows.h>

#include "lookup.h"
#include "tarnlib/shashmap.h"
#include "tarnlib/simap.h"
#include "tarnlib/simplebuffer.h"

using namespace TarnLibA500;
using namespace bench;
using NoCase = SMapStringCaseInsensitive;

namespace {

constexpr std::size_t kBufferBytes = 4096;

constexpr const char* kLocale1252 = "English_United States.1252";
constexpr const char* kAccented = "abcdefghijklmnopqrstuvwxyz\xE0\xE9\xE8\xF1\xF6\xFC\xE7";

struct BySystem {
    bool operator()(const std::string& a, const std::string& b) const {
        return CompareStringA(LOCALE_USER_DEFAULT, NORM_IGNORECASE, a.data(), static_cast<int>(a.size()),
                              b.data(), static_cast<int>(b.size())) == CSTR_LESS_THAN;
    }
};

/// Settings as programs name them: long common beginnings, a number at the end.
std::vector<std::string> Settings(const std::string&) {
    std::vector<std::string> names;
    for (std::size_t i = 0; i < kKeys; ++i) names.push_back("Transfer-Option." + std::to_string(100'000 + i));
    return names;
}

using Source = std::vector<std::string> (*)(const std::string&);

void LookUpOurs(benchmark::State& state, const char* locale, Source source, const char* alphabet) {
    std::setlocale(LC_ALL, locale);
    SIMap<SMapStringCaseInsensitive, SAnsiString> map;
    std::vector<SMapStringCaseInsensitive> wanted;
    for (const std::string& key : source(alphabet)) map.Insert(key.c_str(), "value");
    for (const std::string& key : Respelled(source(alphabet))) wanted.emplace_back(key.c_str());
    std::size_t next = 0;
    for (auto _ : state) {
        if (map.Find(wanted[next]) == map.End()) state.SkipWithError("a key is missing");
        next = (next + 1) % kKeys;
    }
    std::setlocale(LC_ALL, "C");
}

void LookUpBySystem(benchmark::State& state, Source source, const char* alphabet) {
    std::map<std::string, std::string, BySystem> map;
    for (const std::string& key : source(alphabet)) map[key] = "value";
    const std::vector<std::string> wanted = Respelled(source(alphabet));
    std::size_t next = 0;
    for (auto _ : state) {
        if (map.find(wanted[next]) == map.end()) state.SkipWithError("a key is missing");
        next = (next + 1) % kKeys;
    }
}

using AsciiTree = std::map<std::string, std::string, AsciiOrder>;
using AsciiTable = std::unordered_map<std::string, std::string, AsciiHash, AsciiEqual>;
using StdTable = std::unordered_map<std::string, std::string>;
using OurTree = SIMap<NoCase, SAnsiString>;
using OurNoCaseTable = SHashMap<NoCase, SAnsiString>;
using OurTable = SHashMap<SAnsiString, SAnsiString>;

template <class Map, bool isRespelled>
void LookUpByOurText(benchmark::State& state) {
    Map map;
    std::vector<std::string> wanted = KeysOf(kLetters);
    for (const std::string& key : wanted) map.Insert(key.c_str(), "value");
    if (isRespelled) wanted = Respelled(wanted);
    std::size_t next = 0;
    for (auto _ : state) {
        const std::string& key = wanted[next];
        if (map.Find(key.data(), static_cast<std::uint32_t>(key.size())) == map.End())
            state.SkipWithError("a key is missing");
        next = (next + 1) % kKeys;
    }
}

void ShareBuffer(benchmark::State& state) {
    SSimpleBuffer original(kBufferBytes);
    original.releaseBuffer(kBufferBytes);
    for (auto _ : state) {
        SSimpleBuffer copy(original);
        benchmark::DoNotOptimize(copy);
    }
}

void CopyVector(benchmark::State& state) {
    const std::vector<unsigned char> original(kBufferBytes);
    for (auto _ : state) {
        std::vector<unsigned char> copy(original);
        benchmark::DoNotOptimize(copy);
    }
}

}  // namespace

BENCHMARK_CAPTURE(LookUpOurs, c, "C", KeysOf, kLetters)->Name("BM_MapLookUp_words_C/ours");
BENCHMARK_CAPTURE(LookUpBySystem, c, KeysOf, kLetters)->Name("BM_MapLookUp_words_C/CompareString");
BENCHMARK_CAPTURE(LookUpOurs, e, kLocale1252, KeysOf, kLetters)->Name("BM_MapLookUp_words_1252/ours");
BENCHMARK_CAPTURE(LookUpBySystem, e, KeysOf, kLetters)->Name("BM_MapLookUp_words_1252/CompareString");
BENCHMARK_CAPTURE(LookUpOurs, s, "C", Settings, "")->Name("BM_MapLookUp_settings_C/ours");
BENCHMARK_CAPTURE(LookUpBySystem, s, Settings, "")->Name("BM_MapLookUp_settings_C/CompareString");
BENCHMARK_CAPTURE(LookUpOurs, t, kLocale1252, Settings, "")->Name("BM_MapLookUp_settings_1252/ours");
BENCHMARK_CAPTURE(LookUpBySystem, t, Settings, "")->Name("BM_MapLookUp_settings_1252/CompareString");
BENCHMARK_CAPTURE(LookUpOurs, a, kLocale1252, KeysOf, kAccented)->Name("BM_MapLookUp_accented_1252/ours");
BENCHMARK_CAPTURE(LookUpBySystem, a, KeysOf, kAccented)->Name("BM_MapLookUp_accented_1252/CompareString");
BENCHMARK_TEMPLATE(LookUpByStd, AsciiTree, true)->Name("BM_MapLookUp_words_C/std::map");
BENCHMARK_TEMPLATE(LookUpByOurText, OurTree, true)->Name("BM_MapLookUp_by_text/ours");
BENCHMARK_TEMPLATE(LookUpByStd, AsciiTree, true)->Name("BM_MapLookUp_by_text/std::map");
BENCHMARK_TEMPLATE(LookUpByOurText, OurNoCaseTable, true)->Name("BM_HashLookUp_no_case/ours");
BENCHMARK_TEMPLATE(LookUpByStd, AsciiTable, true)->Name("BM_HashLookUp_no_case/std::unordered_map");
BENCHMARK_TEMPLATE(LookUpByOurText, OurTable, false)->Name("BM_HashLookUp_exact/ours");
BENCHMARK_TEMPLATE(LookUpByStd, StdTable, false)->Name("BM_HashLookUp_exact/std::unordered_map");
BENCHMARK(ShareBuffer)->Name("BM_BufferCopy_4096/ours");
BENCHMARK(CopyVector)->Name("BM_BufferCopy_4096/std::vector");
