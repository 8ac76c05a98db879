// Options looked up and parsed against the system's comparison and the standard library, and reading a registry value
// through an object that keeps its key open against opening it each time.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cctype>
#include <sstream>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "lookup.h"
#include "row.h"
#include "tarnlib/cparamlineargs.h"
#include "tarnlib/registry.h"

#include <windows.h>

using namespace TarnLibA500;
using namespace bench;

namespace {

constexpr int kOptions = 20;
constexpr const char* kKey = "Software\\tarnlib-bench";

void OurLookup(benchmark::State& state) {
    CParamLineArgs args;
    for (int i = 0; i < kOptions; ++i)
        args.SetArg(("option-" + std::to_string(i)).c_str(), std::to_string(i).c_str());
    const SAnsiString name("OPTION-15");
    SAnsiString value;
    for (auto _ : state) benchmark::DoNotOptimize(args.Lookup(name, value));
}

void SystemLookup(benchmark::State& state) {
    std::vector<std::string> names;
    for (int i = 0; i < kOptions; ++i) names.push_back("option-" + std::to_string(i));
    const std::string name = "OPTION-15";
    for (auto _ : state) {
        for (const std::string& candidate : names) {
            const int order = CompareStringA(LOCALE_USER_DEFAULT, NORM_IGNORECASE, candidate.data(),
                                             static_cast<int>(candidate.size()), name.data(),
                                             static_cast<int>(name.size()));
            if (order == CSTR_EQUAL) break;
            benchmark::DoNotOptimize(order);
        }
    }
}

// --- many options of letters and digits: the 56th of 60, and ten on a line ---

struct HashNoCase {
    std::size_t operator()(const std::string& text) const {
        std::size_t hash = 0x811C9DC5;
        for (const char c : text) hash = (hash ^ static_cast<unsigned char>(std::tolower(c))) * 0x01000193;
        return hash;
    }
};

struct EqualNoCase {
    bool operator()(const std::string& a, const std::string& b) const {
        return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                          [](char x, char y) { return std::tolower(x) == std::tolower(y); });
    }
};

using StdOptions = std::unordered_map<std::string, std::string, HashNoCase, EqualNoCase>;

void OurManyLookup(benchmark::State& state) {
    CParamLineArgs args;
    for (int i = 1; i <= kManyOptions; ++i) args.SetArg(("Option" + std::to_string(i)).c_str(), "value");
    const SAnsiString name("option56");
    SAnsiString value;
    for (auto _ : state) benchmark::DoNotOptimize(args.Lookup(name, value));
}

std::size_t OurParse(const SAnsiString& line) {
    return CParamLineArgs(line).GetCount();
}

// Its words, then the options in their order and by their names.
std::size_t StdParse(const std::string& line) {
    std::vector<std::string> words;
    std::istringstream in(line);
    for (std::string word; in >> word;) words.push_back(word);
    std::vector<std::pair<std::string, std::string>> options;
    std::unordered_map<std::string, std::size_t, HashNoCase, EqualNoCase> index;
    for (std::size_t i = 1; i < words.size(); ++i) {
        if (words[i][0] != '-') continue;
        const std::string name = words[i].substr(words[i].find_first_not_of('-'));
        const bool hasValue = i + 1 < words.size() && words[i + 1][0] != '-';
        index[name] = options.size();
        options.emplace_back(name, hasValue ? words[++i] : std::string());
    }
    return options.size();
}

void OurRead(benchmark::State& state) {
    Registry settings(kKey, "bench", HKEY_CURRENT_USER, true);
    settings.WriteValue("value", SAnsiString("some text"));
    for (auto _ : state) benchmark::DoNotOptimize(settings.ReadValue("value"));
    settings.DeleteKey();
}

void ReadByOpening(benchmark::State& state) {
    Registry settings(kKey, "bench", HKEY_CURRENT_USER, true);
    settings.WriteValue("value", SAnsiString("some text"));
    for (auto _ : state) {
        HKEY key = nullptr;
        wchar_t text[256];
        DWORD bytes = sizeof text;
        RegOpenKeyExW(HKEY_CURRENT_USER, L"Software\\tarnlib-bench", 0, KEY_READ, &key);
        RegQueryValueExW(key, L"value", nullptr, nullptr, reinterpret_cast<BYTE*>(text), &bytes);
        RegCloseKey(key);
        benchmark::DoNotOptimize(text[0]);
    }
    settings.DeleteKey();
}

const bool added = [] {
    AddRow("Config_OptionParse", "ours", OptionLine<SAnsiString>, OurParse);
    AddRow("Config_OptionParse", "std::istringstream", OptionLine<std::string>, StdParse);
    return true;
}();

BENCHMARK(OurLookup)->Name("BM_Config_OptionLookup/ours");
BENCHMARK(SystemLookup)->Name("BM_Config_OptionLookup/CompareString");
BENCHMARK(OurManyLookup)->Name("BM_Config_OptionLookup60/ours");
BENCHMARK(LookUpOption<StdOptions>)->Name("BM_Config_OptionLookup60/std::unordered_map");
BENCHMARK(OurRead)->Name("BM_Config_RegistryRead/ours");
BENCHMARK(ReadByOpening)->Name("BM_Config_RegistryRead/open-query-close");

}  // namespace
