#pragma once

#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <vector>

#include "support/places.h"

namespace tarntest {

/// The cases of a file in tests/data, or anywhere by its whole path: a line each, every field closed by a bar, ^XX
/// a byte in hex, # a comment.
inline std::vector<std::vector<std::string>> ReadCases(const std::string& name) {
    std::vector<std::vector<std::string>> cases;
    std::ifstream file(Beside("data", TARN_TEST_DATA) / name);  // a whole path stays what it is
    for (std::string line; std::getline(file, line);) {
        if (line.empty() || line[0] == '#') continue;
        std::vector<std::string> fields(1);
        for (std::size_t i = 0; i < line.size(); ++i) {
            if (line[i] == '|') {
                fields.emplace_back();
            } else if (line[i] == '^') {
                fields.back() += static_cast<char>(std::stoi(line.substr(i + 1, 2), nullptr, 16));
                i += 2;
            } else if (line[i] != '\r') {
                fields.back() += line[i];
            }
        }
        fields.pop_back();
        cases.push_back(fields);
    }
    EXPECT_FALSE(cases.empty()) << name;
    return cases;
}

}  // namespace tarntest
