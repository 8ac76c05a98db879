// Keys for the maps that the table compares, how callers spell them, and what one writes to find keys of ASCII without
// regard to case.

#pragma once

#include <algorithm>
#include <cctype>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include <benchmark/benchmark.h>

namespace bench {

inline constexpr std::size_t kKeys = 10'000;
inline constexpr const char* kLetters = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789";

/// Different words of letters from an alphabet, 6 to 24 of them each.
inline std::vector<std::string> KeysOf(const std::string& alphabet) {
    std::mt19937 random(20250101);
    const auto below = [&](std::size_t n) { return random() % n; };
    std::vector<std::string> words(kKeys);
    for (std::string& word : words) {
        word.resize(6 + below(19));
        for (char& letter : word) letter = alphabet[below(alphabet.size())];
    }
    return words;
}

/// The keys as a caller spells them: ASCII letters in the other case, in another order.
inline std::vector<std::string> Respelled(std::vector<std::string> keys) {
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

inline char Lower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c;
}

// What one writes for keys of ASCII: the shorter first, as ours are.
struct AsciiOrder {
    bool operator()(std::string_view a, std::string_view b) const {
        if (a.size() != b.size()) return a.size() < b.size();
        return std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end(),
                                            [](char x, char y) { return Lower(x) < Lower(y); });
    }
};

struct AsciiHash {
    std::size_t operator()(std::string_view text) const {
        std::size_t hash = 0x811C9DC5;
        for (const char c : text) hash = (hash ^ static_cast<unsigned char>(Lower(c))) * 0x01000193;
        return hash;
    }
};

struct AsciiEqual {
    bool operator()(std::string_view a, std::string_view b) const {
        return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                          [](char x, char y) { return Lower(x) == Lower(y); });
    }
};

/// Finds of all keys, one in each round, in a map with the interface of the standard library.
template <class Map, bool isRespelled>
void LookUpByStd(benchmark::State& state) {
    Map map;
    std::vector<std::string> wanted = KeysOf(kLetters);
    for (const std::string& key : wanted) map[key] = "value";
    if (isRespelled) wanted = Respelled(wanted);
    std::size_t next = 0;
    for (auto _ : state) {
        if (map.find(wanted[next]) == map.end()) state.SkipWithError("a key is missing");
        next = (next + 1) % kKeys;
    }
}

// --- options of programs ---

inline constexpr int kManyOptions = 60;

/// Finds of the 56th of 60 options, in a map with the interface of the standard library.
template <class Map>
void LookUpOption(benchmark::State& state) {
    Map options;
    for (int i = 1; i <= kManyOptions; ++i) options["Option" + std::to_string(i)] = "value";
    const std::string name("option56");
    std::string value;
    for (auto _ : state) {
        const auto found = options.find(name);
        if (found != options.end()) value = found->second;
        benchmark::DoNotOptimize(value);
    }
    if (value != "value") state.SkipWithError("the option is missing");
}

/// A command line of ten options with values.
template <class String>
std::vector<String> OptionLine() {
    std::string line = "server.exe";
    for (int i = 1; i <= 10; ++i) line += " -Option" + std::to_string(i) + " value" + std::to_string(i);
    return {String(line.c_str())};
}

}  // namespace bench
