// What the rows of the table work on: the same for all contenders of a row.

#pragma once

#include <cmath>
#include <cstdint>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include <fmt/format.h>

namespace bench {

// --- texts ---

inline constexpr const char* kSeparators = " ,.";

/// Ten million bytes of short words.
template <class String>
std::vector<String> Words() {
    constexpr std::size_t kBytes = 10'000'000;
    std::string made;
    while (made.size() < kBytes) made += "the quick brown fox, and the lazy dog then. ";
    made.pop_back();  // no blank at the end: not all take what follows for an empty word
    return {String(made.c_str())};
}

/// A line of three texts and two integers.
struct LineParts {
    const char* user = "anna";
    const char* action = "opened the file";
    const char* where = "C:\\data\\report.txt";
    int number = 12345;
    int size = -678;
};
inline std::vector<LineParts> Line() {
    return {LineParts()};
}

template <class String>
struct Summands {
    String a{"the first part, "}, b{"a second part and "}, c{"the third one"};
};
template <class String>
std::vector<Summands<String>> OneSum() {
    return {Summands<String>()};
}

inline std::vector<const char*> Padded() {
    return {"   the quick brown fox jumps over the lazy dog, and then again \t "};
}
inline std::vector<const char*> MixedCase() {
    return {"The Quick Brown Fox Jumps Over The Lazy Dog, And Then Again"};
}

template <class String>
struct TwoNames {
    String a{"Content-Transfer-Encoding"}, b{"content-transfer-encodinG"};
};
template <class String>
std::vector<TwoNames<String>> OnePair() {
    return {TwoNames<String>()};
}

// --- numbers ---

using Random = std::mt19937_64;
inline constexpr std::size_t kNumbers = 1024;

/// Every length of number is as frequent as any other.
template <class T>
T AnyInteger(Random& random) {
    return static_cast<T>(static_cast<T>(random()) >> (random() % (sizeof(T) * 8)));
}
inline double Price(Random& random) {
    return static_cast<double>(random() % 1'000'000) / 100;
}
inline double Measurement(Random& random) {
    return std::ldexp(static_cast<double>(random() >> 11), static_cast<int>(random() % 60) - 80);
}
inline double AnyReal(Random& random) {
    for (;;) {
        const std::uint64_t bits = random();
        double number;
        std::memcpy(&number, &bits, sizeof number);
        if (std::isfinite(number)) return number;
    }
}

template <auto make>
auto Numbers() {
    Random random(kNumbers);
    std::vector<decltype(make(random))> numbers(kNumbers);
    for (auto& number : numbers) number = make(random);
    return numbers;
}

/// The same as text.
template <class String, auto make>
std::vector<String> NumberTexts() {
    std::vector<String> texts;
    for (const auto number : Numbers<make>()) texts.emplace_back(fmt::format("{}", number).c_str());
    return texts;
}

// --- moments ---

/// Seconds since 1970, a day and some hours apart.
inline std::vector<long long> Moments() {
    std::vector<long long> moments;
    for (int i = 0; i < 4096; ++i) moments.push_back(946'684'800LL + i * 98'765LL);
    return moments;
}

}  // namespace bench
