// The analysis of a log of 100 MiB: its lines, how often each word comes without regard to case, the errors, and the
// time from the first line to the last. Ours reads lines and goes from word to word with a cursor; the rival is what one
// writes with the standard library alone: std::getline, std::string_view and std::unordered_map.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <string_view>
#include <unordered_map>

#include "tarnlib/sdatetimeconv.h"
#include "tarnlib/sfile.h"
#include "tarnlib/shashmap.h"
#include "tarnlib/swordcursor.h"

#include <windows.h>

using namespace TarnLibA500;
namespace fs = std::filesystem;

namespace {

constexpr std::size_t kLogBytes = 100 * 1024 * 1024;
constexpr std::size_t kDateBytes = 19;  // 2024-03-31 12:34:56

class Log {
  public:
    static const fs::path& Path() {
        static const Log log;
        return log.path_;
    }

  private:
    Log() : path_(fs::temp_directory_path() / ("tarnlib-log-" + std::to_string(GetCurrentProcessId()))) {
        static const char* const levels[] = {"INFO", "INFO", "Info", "WARNING", "ERROR", "debug"};
        static const char* const words[] = {"connection", "from",    "client", "closed",  "after",
                                            "request",    "timeout", "Server", "queue",   "is",
                                            "full",       "retry",   "file",   "written", "the"};
        std::mt19937 random(3);
        std::string bytes;
        for (int second = 0; bytes.size() < kLogBytes; ++second) {
            char start[64];
            std::snprintf(start, sizeof start, "2024-03-%02d %02d:%02d:%02d ", second / 86400 % 28 + 1,
                          second / 3600 % 24, second / 60 % 60, second % 60);
            bytes.append(start).append(levels[random() % 6]);
            for (int i = 0; i < 8; ++i) bytes.append(" ").append(words[random() % 15]);
            bytes.append(" id-").append(std::to_string(random() % 5000)).append("\n");
        }
        std::ofstream(path_, std::ios::binary) << bytes;
    }
    ~Log() { fs::remove(path_); }

    fs::path path_;
};

struct Result {
    std::size_t lines = 0;
    std::size_t words = 0;
    std::size_t different = 0;
    int errors = 0;
    long long seconds = 0;

    bool operator==(const Result&) const = default;
};

// --- ours ---

Result AnalyseByUs(const fs::path& path) {
    Result result;
    SHashMap<SMapStringCaseInsensitive, int> counts;
    SDateTime first, last;
    SFile file(path.string().c_str(), SFile::readOnly, 0, SFile::denyNothing);
    while (!file.eof()) {
        const SAnsiString line = file.readLine();
        StringToDate(SAnsiString(line.getString(), kDateBytes), last, STimeZone::TZ_UTC());
        if (++result.lines == 1) first = last;
        SWordCursor word(line, " ");
        for (word.next(), word.next(); word.next(); ++result.words) {
            const auto found = counts.Find(word.getWord(), word.getLength());
            if (found != counts.End())
                ++found.GetValue();
            else
                counts.Insert(word.toString(), 1);
        }
    }
    result.different = counts.GetCount();
    counts.Lookup("error", result.errors);
    result.seconds = (last - first).GetTotalSeconds();
    return result;
}

// --- the standard library ---

char Lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c;
}

struct HashNoCase {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const {
        std::size_t hash = 0x811C9DC5;
        for (const char c : text) hash = (hash ^ static_cast<unsigned char>(Lower(c))) * 0x01000193;
        return hash;
    }
};

struct EqualNoCase {
    using is_transparent = void;
    bool operator()(std::string_view a, std::string_view b) const {
        return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                          [](char x, char y) { return Lower(x) == Lower(y); });
    }
};

long long Seconds(std::string_view text) {
    using namespace std::chrono;
    const auto number = [text](std::size_t from, std::size_t length) {
        int value = 0;
        std::from_chars(text.data() + from, text.data() + from + length, value);
        return value;
    };
    const year_month_day day(year(number(0, 4)), month(static_cast<unsigned>(number(5, 2))),
                             std::chrono::day(static_cast<unsigned>(number(8, 2))));
    const seconds time = hours(number(11, 2)) + minutes(number(14, 2)) + seconds(number(17, 2));
    return day.ok() ? (sys_days(day).time_since_epoch() + time).count() : 0;
}

Result AnalyseByStd(const fs::path& path) {
    Result result;
    std::unordered_map<std::string, int, HashNoCase, EqualNoCase> counts;
    long long first = 0, last = 0;
    std::ifstream file(path, std::ios::binary);
    for (std::string line; std::getline(file, line);) {
        const std::string_view text(line);
        last = Seconds(text.substr(0, kDateBytes));
        if (++result.lines == 1) first = last;
        for (std::size_t at = kDateBytes; (at = text.find_first_not_of(' ', at)) != text.npos;
             ++result.words) {
            const std::size_t end = std::min(text.find(' ', at), text.size());
            const std::string_view word = text.substr(at, end - at);
            const auto found = counts.find(word);
            if (found != counts.end())
                ++found->second;
            else
                counts.emplace(word, 1);
            at = end;
        }
    }
    result.different = counts.size();
    result.errors = counts["error"];
    result.seconds = last - first;
    return result;
}

void Analyse(benchmark::State& state, Result (*analyse)(const fs::path& path)) {
    static const Result expected = AnalyseByStd(Log::Path());
    for (auto _ : state) {
        if (analyse(Log::Path()) != expected) state.SkipWithError("another result");
    }
}

}  // namespace

BENCHMARK_CAPTURE(Analyse, ours, AnalyseByUs)
    ->Name("BM_LogAnalysis_100MiB/ours")
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Analyse, std, AnalyseByStd)
    ->Name("BM_LogAnalysis_100MiB/std::getline")
    ->Unit(benchmark::kMillisecond);
