#pragma once

#include <cstdio>
#include <map>
#include <string>
#include <vector>

#include "tarnlib/sstring.h"

/// A program of steps: each word of its command line is a name and its arguments, by commas. It prints what came of
/// each: "STEP yes", "STEP no", a text, or the exception.
namespace steps {

using Arguments = std::vector<TarnLibA500::SAnsiString>;

/// Of an argument: "~n" is a line end, "~r" and "~l" are its two halves, "~c" a comma, "~0" a zero byte.
inline TarnLibA500::SAnsiString Decoded(const std::string& text) {
    static const std::map<char, std::string> kMarks = {
        {'n', "\r\n"}, {'r', "\r"}, {'l', "\n"}, {'c', ","}, {'0', std::string(1, '\0')}};
    std::string decoded;
    for (std::size_t i = 0; i < text.size(); ++i)
        decoded += text[i] != '~' ? text.substr(i, 1) : kMarks.at(text[++i]);
    return TarnLibA500::SAnsiString(decoded.data(), static_cast<unsigned>(decoded.size()));
}

/// "run" gives the result of a step, whose arguments are as many as asked for.
template <class Run>
void RunAll(int count, char** words, std::size_t arguments, Run run) {
    for (int i = 1; i < count; ++i) {
        Arguments parts;
        std::string rest(words[i]);
        const std::string name = rest.substr(0, rest.find(','));
        rest.erase(0, name.size() + 1);
        for (; parts.size() < arguments;
             rest.erase(0, rest.find(',') == rest.npos ? rest.npos : rest.find(',') + 1))
            parts.push_back(Decoded(rest.substr(0, rest.find(','))));
        std::printf("%s %s\n", name.c_str(), run(name, parts).c_str());
    }
}

}  // namespace steps
