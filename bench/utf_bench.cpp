// UTF-8 and UTF-16 into each other against the system and utfcpp, and narrow text of a code page into both against the
// system. All write into room that is there already.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <clocale>
#include <string>
#include <vector>

#include <utf8.h>
#include <windows.h>

#include "row.h"
#include "tarnlib/UTFConverter.h"
#include "tarnlib/sstring.h"
#include "texts.h"

using namespace TarnLibA500;
using namespace bench;

namespace {

constexpr std::size_t kMaxBytesOfUnit = 3;

// Each takes the text and room for it, and returns the end of what it wrote, or null.
wchar_t* ToUTF16Ours(const std::string& from, wchar_t* to, wchar_t* end) {
    const auto* source = reinterpret_cast<const unsigned char*>(from.data());
    const auto result = CUTFConverter::Convert(source, source + from.size(), to, end);
    return result == CUTFConverter::ConversionOK ? to : nullptr;
}
wchar_t* ToUTF16System(const std::string& from, wchar_t* to, wchar_t* end) {
    return to + MultiByteToWideChar(CP_UTF8, 0, from.data(), static_cast<int>(from.size()), to,
                                    static_cast<int>(end - to));
}
wchar_t* ToUTF16Utfcpp(const std::string& from, wchar_t* to, wchar_t*) {
    return utf8::utf8to16(from.data(), from.data() + from.size(), to);
}

unsigned char* ToUTF8Ours(const std::wstring& from, unsigned char* to, unsigned char* end) {
    const wchar_t* source = from.data();
    const auto result = CUTFConverter::Convert(source, source + from.size(), to, end);
    return result == CUTFConverter::ConversionOK ? to : nullptr;
}
unsigned char* ToUTF8System(const std::wstring& from, unsigned char* to, unsigned char* end) {
    return to + WideCharToMultiByte(CP_UTF8, 0, from.data(), static_cast<int>(from.size()),
                                    reinterpret_cast<char*>(to), static_cast<int>(end - to), nullptr,
                                    nullptr);
}
unsigned char* ToUTF8Utfcpp(const std::wstring& from, unsigned char* to, unsigned char*) {
    return utf8::utf16to8(from.data(), from.data() + from.size(), to);
}

template <class From, class To>
void Convert(benchmark::State& state, const From& from, std::size_t expected, std::size_t room,
             To* (*convert)(const From&, To*, To*)) {
    std::vector<To> out(room);
    for (auto _ : state) {
        const To* const end = convert(from, out.data(), out.data() + room);
        benchmark::ClobberMemory();
        if (end != out.data() + expected) {
            state.SkipWithError("another length");
            break;
        }
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(from.size() * sizeof(from[0])));
}

using ToUTF16Function = wchar_t* (*)(const std::string&, wchar_t*, wchar_t*);
using ToUTF8Function = unsigned char* (*)(const std::wstring&, unsigned char*, unsigned char*);

void ToUTF16(benchmark::State& state, const Text& text, ToUTF16Function convert) {
    Convert(state, text.utf8, text.utf16.size(), text.utf8.size(), convert);
}
void ToUTF8(benchmark::State& state, const Text& text, ToUTF8Function convert) {
    Convert(state, text.utf16, text.utf8.size(), kMaxBytesOfUnit * text.utf16.size(), convert);
}

// --- narrow text of a code page ---

// What stands in the room before its terminator.
template <class Char>
std::string Bytes(const std::vector<Char>& room) {
    const auto end = std::find(room.begin(), room.end(), Char());
    return {reinterpret_cast<const char*>(room.data()),
            static_cast<std::size_t>(end - room.begin()) * sizeof(Char)};
}

void PageToUTF16Ours(benchmark::State& state, const PageText& text) {
    std::setlocale(LC_ALL, text.locale);
    const SAnsiString narrow(text.bytes.c_str());
    std::vector<wchar_t> out(text.bytes.size() + 1);
    const auto bytes = static_cast<std::uint32_t>(out.size() * sizeof out[0]);
    for (auto _ : state) benchmark::DoNotOptimize(narrow.toWChar(out.data(), bytes));
    AgreeOn(state, std::string("UTF-16 of ") + text.locale, "ours", [&] { return Bytes(out); });
    std::setlocale(LC_ALL, "C");
}
void PageToUTF16System(benchmark::State& state, const PageText& text) {
    std::vector<wchar_t> out(text.bytes.size() + 1);
    for (auto _ : state) {
        benchmark::DoNotOptimize(MultiByteToWideChar(text.page, 0, text.bytes.c_str(), -1, out.data(),
                                                     static_cast<int>(out.size())));
    }
    AgreeOn(state, std::string("UTF-16 of ") + text.locale, "system", [&] { return Bytes(out); });
}

void PageToUTF8Ours(benchmark::State& state, const PageText& text) {
    std::setlocale(LC_ALL, text.locale);
    const SAnsiString narrow(text.bytes.c_str());
    std::vector<char> out(kMaxBytesOfUnit * (text.bytes.size() + 1));
    const auto bytes = static_cast<std::uint32_t>(out.size());
    for (auto _ : state) benchmark::DoNotOptimize(narrow.toUTF8(out.data(), bytes));
    AgreeOn(state, std::string("UTF-8 of ") + text.locale, "ours", [&] { return Bytes(out); });
    std::setlocale(LC_ALL, "C");
}
void PageToUTF8System(benchmark::State& state, const PageText& text) {
    std::vector<wchar_t> units(text.bytes.size() + 1);
    std::vector<char> out(kMaxBytesOfUnit * units.size());
    for (auto _ : state) {
        const int count = MultiByteToWideChar(text.page, 0, text.bytes.c_str(), -1, units.data(),
                                              static_cast<int>(units.size()));
        benchmark::DoNotOptimize(WideCharToMultiByte(CP_UTF8, 0, units.data(), count, out.data(),
                                                     static_cast<int>(out.size()), nullptr, nullptr));
    }
    AgreeOn(state, std::string("UTF-8 of ") + text.locale, "system", [&] { return Bytes(out); });
}

}  // namespace

#define TARN_FROM_PAGE(PAGE)                                                                    \
    BENCHMARK_CAPTURE(PageToUTF16Ours, PAGE, P##PAGE())->Name("BM_PageToUTF16_" #PAGE "/ours"); \
    BENCHMARK_CAPTURE(PageToUTF16System, PAGE, P##PAGE())                                       \
        ->Name("BM_PageToUTF16_" #PAGE "/MultiByteToWideChar");                                 \
    BENCHMARK_CAPTURE(PageToUTF8Ours, PAGE, P##PAGE())->Name("BM_PageToUTF8_" #PAGE "/ours");   \
    BENCHMARK_CAPTURE(PageToUTF8System, PAGE, P##PAGE())->Name("BM_PageToUTF8_" #PAGE "/system in two steps")

TARN_FROM_PAGE(1252);
TARN_FROM_PAGE(932);

#define TARN_BOTH_WAYS(TEXT)                                                                          \
    BENCHMARK_CAPTURE(ToUTF16, TEXT, TEXT(), ToUTF16Ours)->Name("BM_UTF8ToUTF16_" #TEXT "/ours");     \
    BENCHMARK_CAPTURE(ToUTF16, TEXT, TEXT(), ToUTF16System)                                           \
        ->Name("BM_UTF8ToUTF16_" #TEXT "/MultiByteToWideChar");                                       \
    BENCHMARK_CAPTURE(ToUTF16, TEXT, TEXT(), ToUTF16Utfcpp)->Name("BM_UTF8ToUTF16_" #TEXT "/utfcpp"); \
    BENCHMARK_CAPTURE(ToUTF8, TEXT, TEXT(), ToUTF8Ours)->Name("BM_UTF16ToUTF8_" #TEXT "/ours");       \
    BENCHMARK_CAPTURE(ToUTF8, TEXT, TEXT(), ToUTF8System)                                             \
        ->Name("BM_UTF16ToUTF8_" #TEXT "/WideCharToMultiByte");                                       \
    BENCHMARK_CAPTURE(ToUTF8, TEXT, TEXT(), ToUTF8Utfcpp)->Name("BM_UTF16ToUTF8_" #TEXT "/utfcpp")

TARN_BOTH_WAYS(ASCII);
TARN_BOTH_WAYS(German);
TARN_BOTH_WAYS(CJK);
