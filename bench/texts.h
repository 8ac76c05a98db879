// Texts in UTF-8, UTF-16 and code pages, and the rows of rivals that convert them into strings.

#pragma once

#include <cstddef>
#include <iterator>
#include <string>

#include <benchmark/benchmark.h>
#include <utf8.h>
#include <windows.h>

namespace bench {

inline constexpr std::size_t kTextBytes = 65536;

struct Text {
    std::string utf8;
    std::wstring utf16;
};

inline Text Repeated(const std::string& line) {
    Text text;
    while (text.utf8.size() < kTextBytes) text.utf8 += line;
    utf8::utf8to16(text.utf8.begin(), text.utf8.end(), std::back_inserter(text.utf16));
    return text;
}

inline const Text& ASCII() {
    static const Text text = Repeated("the quick brown fox jumps over the lazy dog, and then again; ");
    return text;
}
inline const Text& German() {
    static const Text text = Repeated(
        "Zw\xC3\xB6lf Boxk\xC3\xA4mpfer jagen Viktor quer \xC3\xBC"
        "ber den gro\xC3\x9F"
        "en Sylter Deich. ");
    return text;
}
inline const Text& CJK() {
    static const Text text = Repeated(
        "\xE6\x97\xA5\xE6\x9C\xAC\xE5\x9B\xBD\xE6\xB0\x91\xE3\x81\xAF\xE3\x80\x81\xE6\xAD\xA3\xE5\xBD\x93"
        "\xE3\x81\xAB\xE9\x81\xB8\xE6\x8C\x99\xE3\x81\x95\xE3\x82\x8C\xE3\x81\x9F");
    return text;
}

// --- narrow text of a code page ---

struct PageText {
    const char* locale;
    UINT page;
    std::string bytes;
};

inline PageText InPage(const char* locale, UINT page, const Text& text) {
    const auto units = static_cast<int>(text.utf16.size());
    std::string bytes(2 * text.utf16.size(), '\0');
    bytes.resize(static_cast<std::size_t>(WideCharToMultiByte(
        page, 0, text.utf16.data(), units, bytes.data(), static_cast<int>(bytes.size()), nullptr, nullptr)));
    return {locale, page, bytes};
}
inline const PageText& P1252() {
    static const PageText text = InPage("English_United States.1252", 1252, German());
    return text;
}
inline const PageText& P932() {
    static const PageText text = InPage("Japanese_Japan.932", 932, CJK());
    return text;
}

// --- rows of rivals that write into a string; it keeps its room where they let it ---

template <class From, class To>
void AddConversion(const std::string& row, const std::string& contender, const From& from, const To& expected,
                   std::size_t (*convert)(const From&, To&)) {
    const auto run = [&from, &expected, convert](benchmark::State& state) {
        To out;
        out.reserve(expected.size());
        for ([[maybe_unused]] auto _ : state) {
            out.clear();
            benchmark::DoNotOptimize(convert(from, out));
        }
        if (out != expected) state.SkipWithError("another result");
    };
    benchmark::RegisterBenchmark(("BM_" + row + "/" + contender).c_str(), run);
}

/// Both ways with each of the texts.
inline void AddConversions(const std::string& contender,
                           std::size_t (*toUTF16)(const std::string&, std::wstring&),
                           std::size_t (*toUTF8)(const std::wstring&, std::string&)) {
    const auto add = [&](const std::string& name, const Text& text) {
        AddConversion("UTF8ToUTF16_" + name, contender, text.utf8, text.utf16, toUTF16);
        AddConversion("UTF16ToUTF8_" + name, contender, text.utf16, text.utf8, toUTF8);
    };
    add("ASCII", ASCII());
    add("German", German());
    add("CJK", CJK());
}

}  // namespace bench
