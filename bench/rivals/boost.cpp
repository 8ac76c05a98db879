// boost in the rows that its headers have something for.

#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include <boost/algorithm/string.hpp>
#include <boost/date_time/posix_time/posix_time.hpp>
#include <boost/lexical_cast.hpp>
#include <boost/locale/encoding_utf.hpp>
#include <boost/tokenizer.hpp>
#include <boost/unordered_map.hpp>
#include <boost/version.hpp>

#include "items.h"
#include "lookup.h"
#include "row.h"
#include "texts.h"

using namespace bench;
namespace pt = boost::posix_time;

namespace {

constexpr const char* kName = "boost";

// --- short texts ---

std::string LineOfFive(const LineParts& p) {
    std::string line(p.user);
    line += boost::lexical_cast<std::string>(p.number);
    line += p.action;
    line += boost::lexical_cast<std::string>(p.size);
    line += p.where;
    return line;
}

std::vector<std::string> Split(const std::string& text) {
    std::vector<std::string> words;
    boost::split(words, text, boost::is_any_of(kSeparators), boost::token_compress_on);
    if (words.back().empty()) words.pop_back();  // behind the last separator
    return words;
}
std::size_t Cursor(const std::string& text) {
    std::size_t letters = 0;
    const auto between = boost::token_finder(boost::is_any_of(kSeparators), boost::token_compress_on);
    for (auto word = boost::make_split_iterator(text, between); !word.eof(); ++word) letters += word->size();
    return letters;
}
std::size_t Tokens(const std::string& text) {
    std::size_t letters = 0;
    const boost::char_separator<char> separators(" ", "", boost::keep_empty_tokens);
    for (const std::string& token : boost::tokenizer<boost::char_separator<char>>(text, separators))
        letters += token.size();
    return letters;
}

std::string Trim(const char* from) {
    std::string text(from);
    boost::trim(text);
    return text;
}
bool NoCase(const TwoNames<std::string>& of) {
    return boost::iequals(of.a, of.b);
}
std::string ToLower(const char* from) {
    std::string text(from);
    boost::to_lower(text);
    return text;
}

// --- numbers ---

const auto toString = [](auto number) { return boost::lexical_cast<std::string>(number); };

template <class Number>
Number FromText(const std::string& text) {
    Number number = 0;
    benchmark::DoNotOptimize(boost::conversion::try_lexical_convert(text, number));
    return number;
}

template <auto make>
void AddIntegers(const std::string& bits) {
    using Integer = decltype(Numbers<make>())::value_type;
    AddRowOfAll("IntegerToString_" + bits, kName, Numbers<make>, toString);
    AddRowOfAll("TextToInteger_" + bits, kName, NumberTexts<std::string, make>, FromText<Integer>);
}

// --- dates ---

std::vector<pt::ptime> Times() {
    std::vector<pt::ptime> times;
    for (const long long seconds : Moments())
        times.push_back(pt::from_time_t(static_cast<std::time_t>(seconds)));
    return times;
}

// A stream with a pattern of its own, which lives as long as the program.
std::string Written(std::ostringstream& stream, const pt::ptime& time) {
    stream.str(std::string());
    stream << time;
    return stream.str();
}
std::ostringstream Stream(const char* pattern) {
    std::ostringstream stream;
    stream.imbue(std::locale(std::locale::classic(), new pt::time_facet(pattern)));
    return stream;
}
std::string Format(const pt::ptime& time) {
    static std::ostringstream stream = Stream("%Y-%m-%d@%H:%M:%S.000");
    return Written(stream, time);
}
std::string Names(const pt::ptime& time) {
    static std::ostringstream stream = Stream("%A, %d %B %Y");
    return Written(stream, time);
}

void Now(benchmark::State& state) {
    for ([[maybe_unused]] auto _ : state) benchmark::DoNotOptimize(pt::microsec_clock::universal_time());
}

// --- encodings ---

std::size_t ToUTF16(const std::string& text, std::wstring& out) {
    out = boost::locale::conv::utf_to_utf<wchar_t>(text);
    return out.size();
}
std::size_t ToUTF8(const std::wstring& text, std::string& out) {
    out = boost::locale::conv::utf_to_utf<char>(text);
    return out.size();
}

// --- maps, options, locks ---

using Table = boost::unordered_map<std::string, std::string>;
using NoCaseTable = boost::unordered_map<std::string, std::string, AsciiHash, AsciiEqual>;

std::size_t ParseOptions(const std::string& line) {
    std::vector<std::string> words;
    boost::split(words, line, boost::is_any_of(" "), boost::token_compress_on);
    std::vector<std::pair<std::string, std::string>> options;
    boost::unordered_map<std::string, std::size_t, AsciiHash, AsciiEqual> index;
    for (std::size_t i = 1; i < words.size(); ++i) {
        if (!boost::starts_with(words[i], "-")) continue;
        const std::string name = words[i].substr(1);
        const bool hasValue = i + 1 < words.size() && !boost::starts_with(words[i + 1], "-");
        index[name] = options.size();
        options.emplace_back(name, hasValue ? words[++i] : std::string());
    }
    return options.size();
}

const bool added = [] {
    AddRival(kName, boost::replace_all_copy(std::string(BOOST_LIB_VERSION), "_", "."));
    AddRow("ShortLine_of_five", kName, Line, LineOfFive);
    AddRow("SplitWords_10MB", kName, Words<std::string>, Split)->Unit(benchmark::kMillisecond);
    AddRow("WordCursor_10MB", kName, Words<std::string>, Cursor)->Unit(benchmark::kMillisecond);
    AddRow("Tokens_10MB", kName, Words<std::string>, Tokens)->Unit(benchmark::kMillisecond);
    AddRow("Trim_C", kName, Padded, Trim);
    AddRow("CompareNoCase_C", kName, OnePair<std::string>, NoCase);
    AddRow("ToLower_C", kName, MixedCase, ToLower);
    AddIntegers<AnyInteger<int>>("32");
    AddIntegers<AnyInteger<long long>>("64");
    AddRowOfAll("TextToReal_Price", kName, NumberTexts<std::string, Price>, FromText<double>);
    AddRow("DateFormat_String", kName, Times, Format);
    AddRow("DateFormat_Names", kName, Times, Names);
    AddConversions(kName, ToUTF16, ToUTF8);
    AddRow("Config_OptionParse", kName, OptionLine<std::string>, ParseOptions);
    return true;
}();

}  // namespace

BENCHMARK(Now)->Name("BM_PresentTime/boost");
BENCHMARK(LookUpByStd<Table, false>)->Name("BM_HashLookUp_exact/boost");
BENCHMARK(LookUpByStd<NoCaseTable, true>)->Name("BM_HashLookUp_no_case/boost");
BENCHMARK(LookUpOption<NoCaseTable>)->Name("BM_Config_OptionLookup60/boost");
