#pragma once

#include <string>

namespace tarntest {

/// Numbers as one text, so that none of them can stand in for another.
template <class... Numbers>
std::string Listed(Numbers... numbers) {
    std::string list;
    ((list += (list.empty() ? "" : " ") + std::to_string(numbers)), ...);
    return list;
}

}  // namespace tarntest
