#pragma once

#include <string>

namespace tarntest {

/// What the exception of this type says that the work throws; "nothing" when it throws none.
template <class Exception, class Work>
std::string WhatOf(Work work) {
    try {
        work();
        return "nothing";
    } catch (const Exception& e) {
        return e.what();
    }
}

}  // namespace tarntest
