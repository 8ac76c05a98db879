// Abseil in the rows that it has something for.

#include <string>
#include <utility>
#include <vector>

#include <absl/container/flat_hash_map.h>
#include <absl/strings/ascii.h>
#include <absl/strings/match.h>
#include <absl/strings/numbers.h>
#include <absl/strings/str_cat.h>
#include <absl/strings/str_format.h>
#include <absl/strings/str_split.h>
#include <absl/synchronization/mutex.h>
#include <absl/time/clock.h>
#include <absl/time/time.h>

#include "items.h"
#include "lookup.h"
#include "row.h"
#include "sharedrows.h"

using namespace bench;

namespace {

constexpr const char* kName = "Abseil";

// --- short texts ---

std::string LineOfFive(const LineParts& p) {
    return absl::StrCat(p.user, p.number, p.action, p.size, p.where);
}
std::string Sum(const Summands<std::string>& of) {
    return absl::StrCat(of.a, of.b, of.c);
}

std::vector<std::string> Split(const std::string& text) {
    return absl::StrSplit(text, absl::ByAnyChar(kSeparators), absl::SkipEmpty());
}
std::size_t Cursor(const std::string& text) {
    std::size_t letters = 0;
    for (const absl::string_view word : absl::StrSplit(text, absl::ByAnyChar(kSeparators), absl::SkipEmpty()))
        letters += word.size();
    return letters;
}
std::size_t Tokens(const std::string& text) {
    std::size_t letters = 0;
    for (const absl::string_view token : absl::StrSplit(text, ' ')) letters += std::string(token).size();
    return letters;
}

std::string Trim(const char* text) {
    return std::string(absl::StripAsciiWhitespace(text));
}
bool NoCase(const TwoNames<std::string>& of) {
    return absl::EqualsIgnoreCase(of.a, of.b);
}
std::string ToLower(const char* text) {
    return absl::AsciiStrToLower(text);
}

// --- numbers ---

const auto toString = [](auto number) { return absl::StrCat(number); };

std::string Hex(int number) {
    return absl::StrFormat("%X", static_cast<unsigned>(number));
}
std::string TwoDecimals(double number) {
    return absl::StrFormat("%.2f", number);
}

template <class Integer>
Integer ToInteger(const std::string& text) {
    Integer number = 0;
    benchmark::DoNotOptimize(absl::SimpleAtoi(text, &number));
    return number;
}
double ToReal(const std::string& text) {
    double number = 0;
    benchmark::DoNotOptimize(absl::SimpleAtod(text, &number));
    return number;
}

template <auto make>
void AddNumbers(const std::string& bits) {
    using Integer = decltype(Numbers<make>())::value_type;
    AddRowOfAll("IntegerToString_" + bits, kName, Numbers<make>, toString);
    AddRowOfAll("TextToInteger_" + bits, kName, NumberTexts<std::string, make>, ToInteger<Integer>);
}

template <auto make>
void AddTextToReal(const std::string& row) {
    AddRowOfAll(row, kName, NumberTexts<std::string, make>, ToReal);
}

// --- dates ---

std::vector<absl::Time> Times() {
    std::vector<absl::Time> times;
    for (const long long seconds : Moments()) times.push_back(absl::FromUnixSeconds(seconds));
    return times;
}
std::string Format(absl::Time time) {
    return absl::FormatTime("%Y-%m-%d@%H:%M:%E3S", time, absl::UTCTimeZone());
}
std::string Names(absl::Time time) {
    return absl::FormatTime("%A, %d %B %Y", time, absl::UTCTimeZone());
}
std::vector<std::string> DateTexts() {
    std::vector<std::string> texts;
    for (const absl::Time time : Times())
        texts.push_back(absl::FormatTime("%Y-%m-%d@%H:%M:%S", time, absl::UTCTimeZone()));
    return texts;
}
std::tm Parse(const std::string& text) {
    absl::Time time;
    benchmark::DoNotOptimize(absl::ParseTime("%Y-%m-%d@%H:%M:%S", text, &time, nullptr));
    return absl::ToTM(time, absl::UTCTimeZone());
}

void Now(benchmark::State& state) {
    for ([[maybe_unused]] auto _ : state) benchmark::DoNotOptimize(absl::Now());
}

// --- maps, options, locks ---

using Table = absl::flat_hash_map<std::string, std::string>;
using NoCaseTable = absl::flat_hash_map<std::string, std::string, AsciiHash, AsciiEqual>;

std::size_t ParseOptions(const std::string& line) {
    const std::vector<std::string> words = absl::StrSplit(line, ' ', absl::SkipEmpty());
    std::vector<std::pair<std::string, std::string>> options;
    absl::flat_hash_map<std::string, std::size_t, AsciiHash, AsciiEqual> index;
    for (std::size_t i = 1; i < words.size(); ++i) {
        if (!absl::StartsWith(words[i], "-")) continue;
        const std::string name(absl::StripPrefix(words[i], "-"));
        const bool hasValue = i + 1 < words.size() && !absl::StartsWith(words[i + 1], "-");
        index[name] = options.size();
        options.emplace_back(name, hasValue ? words[++i] : std::string());
    }
    return options.size();
}

struct Lock {
    absl::Mutex mutex;
    void lock() { mutex.Lock(); }
    void unlock() { mutex.Unlock(); }
};

const bool added = [] {
    AddRival(kName, std::to_string(ABSL_LTS_RELEASE_VERSION));
    AddRow("ShortLine_of_five", kName, Line, LineOfFive);
    AddRow("ShortSum_of_three", kName, OneSum<std::string>, Sum);
    AddAppend<std::string>(kName, [](std::string& text, const char* ten) { absl::StrAppend(&text, ten); });
    AddRow("SplitWords_10MB", kName, Words<std::string>, Split)->Unit(benchmark::kMillisecond);
    AddRow("WordCursor_10MB", kName, Words<std::string>, Cursor)->Unit(benchmark::kMillisecond);
    AddRow("Tokens_10MB", kName, Words<std::string>, Tokens)->Unit(benchmark::kMillisecond);
    AddRow("Trim_C", kName, Padded, Trim);
    AddRow("CompareNoCase_C", kName, OnePair<std::string>, NoCase);
    AddRow("ToLower_C", kName, MixedCase, ToLower);
    AddNumbers<AnyInteger<int>>("32");
    AddNumbers<AnyInteger<long long>>("64");
    AddRowOfAll("IntegerToHex_32", kName, Numbers<AnyInteger<int>>, Hex);
    AddRowOfAll("RealToString_TwoDecimals", kName, Numbers<Price>, TwoDecimals);
    AddTextToReal<Price>("TextToReal_Price");
    AddTextToReal<Measurement>("TextToReal_Measurement");
    AddTextToReal<AnyReal>("TextToReal_Any");
    AddRow("DateFormat_String", kName, Times, Format);
    AddRow("DateFormat_Names", kName, Times, Names);
    AddRow("DateParse", kName, DateTexts, Parse);
    AddRow("Config_OptionParse", kName, OptionLine<std::string>, ParseOptions);
    AddLock<Lock>(kName);
    return true;
}();

}  // namespace

BENCHMARK(Now)->Name("BM_PresentTime/Abseil");
BENCHMARK(LookUpByStd<Table, false>)->Name("BM_HashLookUp_exact/Abseil");
BENCHMARK(LookUpByStd<NoCaseTable, true>)->Name("BM_HashLookUp_no_case/Abseil");
BENCHMARK(LookUpOption<NoCaseTable>)->Name("BM_Config_OptionLookup60/Abseil");
