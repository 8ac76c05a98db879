// POCO's Foundation in the rows that it has something for.

#include <filesystem>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include <Poco/AutoPtr.h>
#include <Poco/DateTime.h>
#include <Poco/DateTimeFormatter.h>
#include <Poco/DateTimeParser.h>
#include <Poco/FileChannel.h>
#include <Poco/FormattingChannel.h>
#include <Poco/Logger.h>
#include <Poco/Mutex.h>
#include <Poco/NumberFormatter.h>
#include <Poco/NumberParser.h>
#include <Poco/PatternFormatter.h>
#include <Poco/String.h>
#include <Poco/StringTokenizer.h>
#include <Poco/TextConverter.h>
#include <Poco/Timestamp.h>
#include <Poco/UTF8Encoding.h>
#include <Poco/UnicodeConverter.h>
#include <Poco/Version.h>
#include <Poco/Windows1252Encoding.h>

#include "items.h"
#include "lookup.h"
#include "row.h"
#include "sharedrows.h"
#include "texts.h"

using namespace bench;

namespace {

constexpr const char* kName = "POCO";

// --- short texts ---

std::string LineOfFive(const LineParts& p) {
    std::string line(p.user);
    Poco::NumberFormatter::append(line, p.number);
    line += p.action;
    Poco::NumberFormatter::append(line, p.size);
    line += p.where;
    return line;
}
std::string Sum(const Summands<std::string>& of) {
    return Poco::cat(of.a, of.b, of.c);
}

std::vector<std::string> Split(const std::string& text) {
    const Poco::StringTokenizer words(text, kSeparators, Poco::StringTokenizer::TOK_IGNORE_EMPTY);
    return {words.begin(), words.end()};
}
std::size_t Tokens(const std::string& text) {
    std::size_t letters = 0;
    for (const std::string& token : Poco::StringTokenizer(text, " ")) letters += token.size();
    return letters;
}

std::string Trim(const char* from) {
    std::string text(from);
    return Poco::trimInPlace(text);
}
bool NoCase(const TwoNames<std::string>& of) {
    return Poco::icompare(of.a, of.b) == 0;
}
std::string ToLower(const char* text) {
    return Poco::toLower(std::string(text));
}

// --- numbers ---

std::string FromInteger(int number) {
    return Poco::NumberFormatter::format(number);
}
std::string FromLong(long long number) {
    return Poco::NumberFormatter::format(Poco::Int64{number});
}
std::string Hex(int number) {
    return Poco::NumberFormatter::formatHex(static_cast<unsigned>(number));
}
std::string FromReal(double number) {
    return Poco::NumberFormatter::format(number);
}
std::string TwoDecimals(double number) {
    return Poco::NumberFormatter::format(number, 2);
}

int ToInteger(const std::string& text) {
    int number = 0;
    benchmark::DoNotOptimize(Poco::NumberParser::tryParse(text, number));
    return number;
}
long long ToLong(const std::string& text) {
    Poco::Int64 number = 0;
    benchmark::DoNotOptimize(Poco::NumberParser::tryParse64(text, number));
    return number;
}
double ToReal(const std::string& text) {
    double number = 0;
    benchmark::DoNotOptimize(Poco::NumberParser::tryParseFloat(text, number));
    return number;
}

// --- dates ---

std::vector<Poco::Timestamp> Times() {
    std::vector<Poco::Timestamp> times;
    for (const long long seconds : Moments())
        times.push_back(Poco::Timestamp::fromEpochTime(static_cast<std::time_t>(seconds)));
    return times;
}
std::string Format(const Poco::Timestamp& time) {
    return Poco::DateTimeFormatter::format(time, "%Y-%m-%d@%H:%M:%S.%i");
}
std::string Names(const Poco::Timestamp& time) {
    return Poco::DateTimeFormatter::format(time, "%W, %d %B %Y");
}
std::vector<std::string> DateTexts() {
    std::vector<std::string> texts;
    for (const Poco::Timestamp& time : Times())
        texts.push_back(Poco::DateTimeFormatter::format(time, "%Y-%m-%d@%H:%M:%S"));
    return texts;
}
std::tm Parse(const std::string& text) {
    Poco::DateTime date;
    int zone = 0;
    Poco::DateTimeParser::parse("%Y-%m-%d@%H:%M:%S", text, date, zone);
    std::tm parts = {};
    parts.tm_year = date.year() - 1900;
    parts.tm_mon = date.month() - 1;
    parts.tm_mday = date.day();
    parts.tm_hour = date.hour();
    parts.tm_min = date.minute();
    parts.tm_sec = date.second();
    return parts;
}

void Now(benchmark::State& state) {
    for ([[maybe_unused]] auto _ : state) benchmark::DoNotOptimize(Poco::Timestamp());
}

// --- encodings ---

std::size_t ToUTF16(const std::string& text, std::wstring& out) {
    Poco::UnicodeConverter::convert(text, out);
    return out.size();
}
std::size_t ToUTF8(const std::wstring& text, std::string& out) {
    Poco::UnicodeConverter::convert(text, out);
    return out.size();
}
std::size_t PageToUTF8(const std::string& text, std::string& out) {
    static Poco::Windows1252Encoding page;
    static Poco::UTF8Encoding utf8;
    Poco::TextConverter(page, utf8).convert(text, out);
    return out.size();
}

// --- maps, options, locks ---

using NoCaseTree = std::map<std::string, std::string, Poco::CILess>;

std::size_t ParseOptions(const std::string& line) {
    const Poco::StringTokenizer words(line, " ", Poco::StringTokenizer::TOK_IGNORE_EMPTY);
    std::vector<std::pair<std::string, std::string>> options;
    std::map<std::string, std::size_t, Poco::CILess> index;
    for (std::size_t i = 1; i < words.count(); ++i) {
        if (words[i][0] != '-') continue;
        const std::string name = words[i].substr(1);
        const bool hasValue = i + 1 < words.count() && words[i + 1][0] != '-';
        index[name] = options.size();
        options.emplace_back(name, hasValue ? words[++i] : std::string());
    }
    return options.size();
}

// --- log lines ---

Poco::Logger* logger = nullptr;

std::filesystem::path LogFile() {
    return std::filesystem::temp_directory_path() / "tarnlib-bench" / "poco.log";
}

void OpenLog() {
    std::filesystem::create_directories(LogFile().parent_path());
    Poco::AutoPtr<Poco::FileChannel> file(new Poco::FileChannel(LogFile().string()));
    file->setProperty(Poco::FileChannel::PROP_FLUSH, "false");
    Poco::AutoPtr<Poco::PatternFormatter> lines(
        new Poco::PatternFormatter("%Y-%m-%dT%H:%M:%S.%i+00:00 m bench %P %I [] trace_bench.cpp(47) %t"));
    Poco::AutoPtr<Poco::FormattingChannel> channel(new Poco::FormattingChannel(lines, file));
    logger = &Poco::Logger::create("bench", channel, Poco::Message::PRIO_INFORMATION);
}

void LogLines(benchmark::State& state) {
    if (state.thread_index() == 0) OpenLog();
    for ([[maybe_unused]] auto _ : state)
        logger->information("%s", std::string("sent 1234 bytes to the next host in 56 ms"));
    if (state.thread_index() == 0) {
        Poco::Logger::destroy("bench");
        std::filesystem::remove(LogFile());  // it would be appended to
    }
}

void LogSwitchedOff(benchmark::State& state) {
    Poco::Logger& off = Poco::Logger::create("off", nullptr, 0);
    for ([[maybe_unused]] auto _ : state) {
        bool isOn = off.information();
        benchmark::DoNotOptimize(isOn);
        benchmark::ClobberMemory();
    }
    Poco::Logger::destroy("off");
}

const bool added = [] {
    AddRival(kName, "1." + std::to_string(POCO_VERSION >> 16 & 0xFF));
    AddRow("ShortLine_of_five", kName, Line, LineOfFive);
    AddRow("ShortSum_of_three", kName, OneSum<std::string>, Sum);
    AddRow("SplitWords_10MB", kName, Words<std::string>, Split)->Unit(benchmark::kMillisecond);
    AddRow("Tokens_10MB", kName, Words<std::string>, Tokens)->Unit(benchmark::kMillisecond);
    AddRow("Trim_C", kName, Padded, Trim);
    AddRow("CompareNoCase_C", kName, OnePair<std::string>, NoCase);
    AddRow("ToLower_C", kName, MixedCase, ToLower);
    AddRowOfAll("IntegerToString_32", kName, Numbers<AnyInteger<int>>, FromInteger);
    AddRowOfAll("IntegerToString_64", kName, Numbers<AnyInteger<long long>>, FromLong);
    AddRowOfAll("IntegerToHex_32", kName, Numbers<AnyInteger<int>>, Hex);
    AddRowOfAll("RealToString_Price", kName, Numbers<Price>, FromReal);
    AddRowOfAll("RealToString_TwoDecimals", kName, Numbers<Price>, TwoDecimals);
    AddRowOfAll("TextToInteger_32", kName, NumberTexts<std::string, AnyInteger<int>>, ToInteger);
    AddRowOfAll("TextToInteger_64", kName, NumberTexts<std::string, AnyInteger<long long>>, ToLong);
    AddRowOfAll("TextToReal_Price", kName, NumberTexts<std::string, Price>, ToReal);
    AddRowOfAll("TextToReal_Measurement", kName, NumberTexts<std::string, Measurement>, ToReal);
    AddRowOfAll("TextToReal_Any", kName, NumberTexts<std::string, AnyReal>, ToReal);
    AddRow("DateFormat_String", kName, Times, Format);
    AddRow("DateFormat_Names", kName, Times, Names);
    AddRow("DateParse", kName, DateTexts, Parse);
    AddConversions(kName, ToUTF16, ToUTF8);
    AddConversion("PageToUTF8_1252", kName, P1252().bytes, German().utf8, PageToUTF8);
    AddRow("Config_OptionParse", kName, OptionLine<std::string>, ParseOptions);
    AddLock<Poco::FastMutex>("POCO FastMutex");
    AddLock<Poco::Mutex>("POCO Mutex");
    return true;
}();

}  // namespace

BENCHMARK(Now)->Name("BM_PresentTime/POCO");
BENCHMARK(LookUpByStd<NoCaseTree, true>)->Name("BM_MapLookUp_words_C/POCO CILess");
BENCHMARK(LookUpByStd<NoCaseTree, true>)->Name("BM_MapLookUp_by_text/POCO CILess");
BENCHMARK(LookUpOption<NoCaseTree>)->Name("BM_Config_OptionLookup60/POCO CILess");
BENCHMARK(LogLines)->Name("BM_Trace_Line/POCO")->Threads(1)->Threads(4)->UseRealTime();
BENCHMARK(LogSwitchedOff)->Name("BM_Trace_SwitchedOff/POCO");
