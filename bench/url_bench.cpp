// Escaping against a loop over a table that appends to a std::string, as programs have it; patterns against those of
// SQLite, PCRE2, the system and std::regex.

#include <benchmark/benchmark.h>

#include <random>
#include <regex>
#include <string>

#include <windows.h>

#include <shlwapi.h>

#define PCRE2_CODE_UNIT_WIDTH 8
#include <fmt/format.h>
#include <pcre2.h>
#include <sqlite3.h>

#include "row.h"
#include "tarnlib/nvpairs.h"
#include "tarnlib/squerystring.h"
#include "tarnlib/swebencode.h"

using namespace TarnLibA500;
using namespace bench;

namespace {

constexpr std::size_t kTextBytes = 1 << 20;

/// Names and values as forms send them: mostly letters and digits, some blanks and signs.
std::string QueryText() {
    std::mt19937 random(20250101);
    const std::string letters = "etaoinshrdlucmfwypvbgkqjxzETAOIN0123456789";
    const std::string signs = "    =&&.-/:,;<>\"'()\xE9";
    std::string text;
    while (text.size() < kTextBytes) {
        const std::string& from = random() % 8 != 0 ? letters : signs;
        text += from[random() % from.size()];
    }
    return text;
}

SAnsiString Ansi(const std::string& text) {
    return {text.data(), static_cast<std::uint32_t>(text.size())};
}

struct Form {
    char text[8];
    std::size_t length;
};
using Forms = Form[256];

void SetForm(Form& form, const std::string& text) {
    text.copy(form.text, sizeof form.text);
    form.length = text.size();
}

const Forms& UrlForms() {
    static Forms forms;
    if (forms[0].length != 0) return forms;
    for (int byte = 0; byte < 256; ++byte) {
        const char* const digits = "0123456789ABCDEF";
        const bool plain = byte < 128 && (std::isalnum(byte) != 0 || byte == '.' || byte == '_');
        SetForm(forms[byte], plain ? std::string(1, static_cast<char>(byte))
                                   : std::string{'%', digits[byte >> 4], digits[byte & 15]});
    }
    SetForm(forms[int{' '}], "+");
    return forms;
}

const Forms& HtmlForms() {
    static Forms forms;
    if (forms[0].length != 0) return forms;
    for (int byte = 0; byte < 256; ++byte) SetForm(forms[byte], std::string(1, static_cast<char>(byte)));
    SetForm(forms[int{'&'}], "&amp;");
    SetForm(forms[int{'<'}], "&lt;");
    SetForm(forms[int{'>'}], "&gt;");
    SetForm(forms[int{'"'}], "&quot;");
    return forms;
}

std::string ByTable(const std::string& text, const Forms& forms) {
    std::string out;
    out.reserve(text.size());
    for (const char c : text) {
        const Form& form = forms[static_cast<unsigned char>(c)];
        out.append(form.text, form.length);
    }
    return out;
}

std::string DecodedByTable(const std::string& text) {
    static const auto digits = [] {
        std::string values(256, '\x10');
        for (int i = 0; i < 16; ++i)
            values[static_cast<unsigned char>("0123456789ABCDEF"[i])] =
                values[static_cast<unsigned char>("0123456789abcdef"[i])] = static_cast<char>(i);
        return values;
    }();
    std::string out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        const int high = i + 2 < text.size() ? digits[static_cast<unsigned char>(text[i + 1])] : 16;
        const int low = i + 2 < text.size() ? digits[static_cast<unsigned char>(text[i + 2])] : 16;
        if (text[i] == '%' && high < 16 && low < 16) {
            out.push_back(static_cast<char>(high << 4 | low));
            i += 2;
        } else {
            out.push_back(text[i] == '+' ? ' ' : text[i]);
        }
    }
    return out;
}

template <class Work>
void Run(benchmark::State& state, Work work) {
    for (auto _ : state) benchmark::DoNotOptimize(work());
}

template <class String>
std::vector<String> Query() {
    const std::string text = QueryText();
    return {String(text.data(), static_cast<std::uint32_t>(text.size()))};
}
template <class String>
std::vector<String> EncodedQuery() {
    const std::string text = ByTable(QueryText(), UrlForms());
    return {String(text.data(), static_cast<std::uint32_t>(text.size()))};
}

SAnsiString UrlEncode(const SAnsiString& text) {
    return SWebEncode::URLEncodeSimple(text);
}
SAnsiString UrlDecode(const SAnsiString& text) {
    return SWebEncode::URLDecodeEx(text);
}
SAnsiString HtmlEncode(const SAnsiString& text) {
    return SWebEncode::HTMLEncode(text);
}

const bool added = [] {
    constexpr const char* kLoop = "std::string loop";
    const auto urlByTable = [](const std::string& text) { return ByTable(text, UrlForms()); };
    const auto htmlByTable = [](const std::string& text) { return ByTable(text, HtmlForms()); };
    AddRow("Url_encode_1MiB", "ours", Query<SAnsiString>, UrlEncode);
    AddRow("Url_encode_1MiB", kLoop, Query<std::string>, urlByTable);
    AddRow("Url_decode_1MiB", "ours", EncodedQuery<SAnsiString>, UrlDecode);
    AddRow("Url_decode_1MiB", kLoop, EncodedQuery<std::string>, DecodedByTable);
    AddRow("Html_encode_1MiB", "ours", Query<SAnsiString>, HtmlEncode);
    AddRow("Html_encode_1MiB", kLoop, Query<std::string>, htmlByTable);
    return AddRival("SQLite", SQLITE_VERSION) &&
           AddRival("PCRE2", fmt::format("{}.{}", PCRE2_MAJOR, PCRE2_MINOR));
}();

const std::string kLine =
    "2024-02-29 12:30 the order 4711 of customer 815 was shipped to Hamburg by express mail!";

void LikeOurs(benchmark::State& state) {
    const SAnsiString text = Ansi(kLine);
    SQueryString pattern("%order%shipped%");
    Run(state, [&] { return pattern.like(text); });
}

void LikeSqlite(benchmark::State& state) {
    Run(state, [] { return sqlite3_strlike("%order%shipped%", kLine.c_str(), 0); });
}

/// Without a regard to the rest of the line, which is the fastest way to ask.
void LikePcre2(benchmark::State& state, bool jit) {
    int error = 0;
    PCRE2_SIZE place = 0;
    const auto* const pattern = reinterpret_cast<PCRE2_SPTR>("order.*shipped");
    const auto* const text = reinterpret_cast<PCRE2_SPTR>(kLine.c_str());
    pcre2_code* const code =
        pcre2_compile(pattern, PCRE2_ZERO_TERMINATED, PCRE2_DOTALL, &error, &place, nullptr);
    pcre2_match_data* const found = pcre2_match_data_create_from_pattern(code, nullptr);
    if (jit && pcre2_jit_compile(code, PCRE2_JIT_COMPLETE) != 0) state.SkipWithError("no JIT");
    Run(state, [&] { return pcre2_match(code, text, kLine.size(), 0, 0, found, nullptr); });
    pcre2_match_data_free(found);
    pcre2_code_free(code);
}

void LikeSystem(benchmark::State& state) {
    const std::wstring wide(kLine.begin(), kLine.end());
    Run(state, [&] { return PathMatchSpecW(wide.c_str(), L"*order*shipped*"); });
}

void LikeRegex(benchmark::State& state) {
    const std::regex regex(".*order.*shipped.*", std::regex::optimize);
    Run(state, [&] { return std::regex_match(kLine, regex); });
}
BENCHMARK(LikeOurs)->Name("BM_Like_order_shipped/ours");
BENCHMARK(LikeSqlite)->Name("BM_Like_order_shipped/SQLite");
BENCHMARK_CAPTURE(LikePcre2, jit, true)->Name("BM_Like_order_shipped/PCRE2 JIT");
BENCHMARK_CAPTURE(LikePcre2, plain, false)->Name("BM_Like_order_shipped/PCRE2");
BENCHMARK(LikeSystem)->Name("BM_Like_order_shipped/PathMatchSpecW");
BENCHMARK(LikeRegex)->Name("BM_Like_order_shipped/std::regex");

/// Twenty wildcards before one that finds nothing, against that one alone.
void BM_Like_21_wildcards(benchmark::State& state, int more) {
    const SAnsiString text = Ansi(std::string(10'000, 'a'));
    SAnsiString letters;
    for (int i = 0; i < more; ++i) letters += "%a";
    SQueryString pattern(letters + "%b%");
    Run(state, [&] { return pattern.like(text); });
}
BENCHMARK_CAPTURE(BM_Like_21_wildcards, ours, 20);
BENCHMARK_CAPTURE(BM_Like_21_wildcards, one_wildcard, 0);

}  // namespace
