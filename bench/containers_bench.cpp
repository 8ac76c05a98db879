// The map whose keys ignore case against a std::map that asks the system for each comparison, and one that knows ASCII
// alone; the map without an order against std::unordered_map; sharing a byte buffer against copying a vector.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cctype>
#include <clocale>
#include <map>
#include <random>
#include <string>
#include <unordered_map>
#include <vector>

#include <windows.h>

#include "tarnlib/shashmap.h"
#include "tarnlib/simap.h"
#include "tarnlib/simplebuffer.h"

using namespace TarnLibA500;
using NoCase = SMapStringCaseInsensitive;

namespace {

constexpr std::size_t kKeys = 10'000;
constexpr std::size_t kBufferBytes = 4096;

constexpr const char* kLocale1252 = "English_United States.1252";
constexpr const char* kLetters = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789";
constexpr const char* kAccented = "abcdefghijklmnopqrstuvwxyz\xE0\xE9\xE8\xF1\xF6\xFC\xE7";

struct BySystem {
    bool operator()(const std::string& a, const std::string& b) const {
        return CompareStringA(LOCALE_USER_DEFAULT, NORM_IGNORECASE, a.data(), static_cast<int>(a.size()),
                              b.data(), static_cast<int>(b.size())) == CSTR_LESS_THAN;
    }
};

/// Different words of letters from an alphabet, 6 to 24 of them each.
std::vector<std::string> Words(const std::string& alphabet) {
    std::mt19937 random(20250101);
    const auto below = [&](std::size_t n) { return random() % n; };
    std::vector<std::string> words(kKeys);
    for (std::string& word : words) {
        word.resize(6 + below(19));
        for (char& letter : word) letter = alphabet[below(alphabet.size())];
    }
    return words;
}

/// Settings as programs name them: long common beginnings, a number at the end.
std::vector<std::string> Settings(const std::string&) {
    std::vector<std::string> names;
    for (std::size_t i = 0; i < kKeys; ++i) names.push_back("Transfer-Option." + std::to_string(100'000 + i));
    return names;
}

/// The keys as a caller spells them: ASCII letters in the other case, in another order.
std::vector<std::string> Respelled(std::vector<std::string> keys) {
    for (std::string& key : keys) {
        for (char& c : key) {
            const auto byte = static_cast<unsigned char>(c);
            if (byte < 0x80)
                c = static_cast<char>(std::islower(byte) ? std::toupper(byte) : std::tolower(byte));
        }
    }
    std::shuffle(keys.begin(), keys.end(), std::mt19937(7));
    return keys;
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

char Lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c;
}

// What one writes for keys of ASCII: the shorter first, as ours are.
struct AsciiOrder {
    bool operator()(const std::string& a, const std::string& b) const {
        if (a.size() != b.size()) return a.size() < b.size();
        return std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end(),
                                            [](char x, char y) { return Lower(x) < Lower(y); });
    }
};

struct AsciiHash {
    std::size_t operator()(const std::string& text) const {
        std::size_t hash = 0x811C9DC5;
        for (const char c : text) hash = (hash ^ static_cast<unsigned char>(Lower(c))) * 0x01000193;
        return hash;
    }
};

struct AsciiEqual {
    bool operator()(const std::string& a, const std::string& b) const {
        return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                          [](char x, char y) { return Lower(x) == Lower(y); });
    }
};

using AsciiTree = std::map<std::string, std::string, AsciiOrder>;
using AsciiTable = std::unordered_map<std::string, std::string, AsciiHash, AsciiEqual>;
using StdTable = std::unordered_map<std::string, std::string>;
using OurTree = SIMap<NoCase, SAnsiString>;
using OurNoCaseTable = SHashMap<NoCase, SAnsiString>;
using OurTable = SHashMap<SAnsiString, SAnsiString>;

template <class Map, bool isRespelled>
void LookUpByStd(benchmark::State& state) {
    Map map;
    std::vector<std::string> wanted = Words(kLetters);
    for (const std::string& key : wanted) map[key] = "value";
    if (isRespelled) wanted = Respelled(wanted);
    std::size_t next = 0;
    for (auto _ : state) {
        if (map.find(wanted[next]) == map.end()) state.SkipWithError("a key is missing");
        next = (next + 1) % kKeys;
    }
}

template <class Map, bool isRespelled>
void LookUpByOurText(benchmark::State& state) {
    Map map;
    std::vector<std::string> wanted = Words(kLetters);
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

BENCHMARK_CAPTURE(LookUpOurs, c, "C", Words, kLetters)->Name("BM_MapLookUp_words_C/ours");
BENCHMARK_CAPTURE(LookUpBySystem, c, Words, kLetters)->Name("BM_MapLookUp_words_C/CompareString");
BENCHMARK_CAPTURE(LookUpOurs, e, kLocale1252, Words, kLetters)->Name("BM_MapLookUp_words_1252/ours");
BENCHMARK_CAPTURE(LookUpBySystem, e, Words, kLetters)->Name("BM_MapLookUp_words_1252/CompareString");
BENCHMARK_CAPTURE(LookUpOurs, s, "C", Settings, "")->Name("BM_MapLookUp_settings_C/ours");
BENCHMARK_CAPTURE(LookUpBySystem, s, Settings, "")->Name("BM_MapLookUp_settings_C/CompareString");
BENCHMARK_CAPTURE(LookUpOurs, t, kLocale1252, Settings, "")->Name("BM_MapLookUp_settings_1252/ours");
BENCHMARK_CAPTURE(LookUpBySystem, t, Settings, "")->Name("BM_MapLookUp_settings_1252/CompareString");
BENCHMARK_CAPTURE(LookUpOurs, a, kLocale1252, Words, kAccented)->Name("BM_MapLookUp_accented_1252/ours");
BENCHMARK_CAPTURE(LookUpBySystem, a, Words, kAccented)->Name("BM_MapLookUp_accented_1252/CompareString");
BENCHMARK_TEMPLATE(LookUpByStd, AsciiTree, true)->Name("BM_MapLookUp_words_C/std::map");
BENCHMARK_TEMPLATE(LookUpByOurText, OurTree, true)->Name("BM_MapLookUp_by_text/ours");
BENCHMARK_TEMPLATE(LookUpByStd, AsciiTree, true)->Name("BM_MapLookUp_by_text/std::map");
BENCHMARK_TEMPLATE(LookUpByOurText, OurNoCaseTable, true)->Name("BM_HashLookUp_no_case/ours");
BENCHMARK_TEMPLATE(LookUpByStd, AsciiTable, true)->Name("BM_HashLookUp_no_case/std::unordered_map");
BENCHMARK_TEMPLATE(LookUpByOurText, OurTable, false)->Name("BM_HashLookUp_exact/ours");
BENCHMARK_TEMPLATE(LookUpByStd, StdTable, false)->Name("BM_HashLookUp_exact/std::unordered_map");
BENCHMARK(ShareBuffer)->Name("BM_BufferCopy_4096/ours");
BENCHMARK(CopyVector)->Name("BM_BufferCopy_4096/std::vector");
