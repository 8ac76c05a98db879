#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "support/case_file.h"
#include "support/print_strings.h"

namespace tarntest {

using Arguments = std::vector<TarnLibA500::SAnsiString>;
using Calls = std::map<std::string, std::function<TarnLibA500::SAnsiString(const Arguments&)>>;

/// Makes the calls of a case file: function | result | arguments |
inline void ExpectCalls(const std::string& file, const Calls& calls) {
    for (const auto& c : ReadCases(file)) {
        const auto call = calls.find(c[0]);
        ASSERT_NE(call, calls.end()) << file << ": " << c[0];
        Arguments fields;
        for (const auto& field : c)
            fields.emplace_back(field.data(), static_cast<std::uint32_t>(field.size()));
        fields.resize(8);  // arguments that a line leaves out are empty
        EXPECT_EQ(call->second({fields.begin() + 2, fields.end()}), fields[1]) << testing::PrintToString(c);
    }
}

inline TarnLibA500::SAnsiString YesNo(bool yes) {
    return yes ? "yes" : "no";
}

inline TarnLibA500::SAnsiString Number(long long number) {
    return std::to_string(number).c_str();
}

}  // namespace tarntest
