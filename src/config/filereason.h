#pragma once

#include "strings/text/lineend.h"
#include "tarnlib/sfileexception.h"

namespace TarnLibA500 {

/// Why a file cannot be read, in a few words.
inline SAnsiString ReasonOf(const SFileException& failure) {
    return failure.DetailCode() == SFileException::notFound ? SAnsiString("not found")
                                                            : WithoutLineEnd(failure.reason());
}

}  // namespace TarnLibA500
