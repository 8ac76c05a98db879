// Looking an option up against the same search with the system's comparison, and reading a registry value
// through an object that keeps its key open against opening it each time.

#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include "tarnlib/cparamlineargs.h"
#include "tarnlib/registry.h"

#include <windows.h>

using namespace TarnLibA500;

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

BENCHMARK(OurLookup)->Name("BM_Config_OptionLookup/ours");
BENCHMARK(SystemLookup)->Name("BM_Config_OptionLookup/CompareString");
BENCHMARK(OurRead)->Name("BM_Config_RegistryRead/ours");
BENCHMARK(ReadByOpening)->Name("BM_Config_RegistryRead/open-query-close");

}  // namespace
