#pragma once

#include "tarnlib/sstring.h"

namespace TarnLibA500 {

/// "MODULE FUNCTION+0xOFFSET" for an address of code, with the nearest exported function at or below it; as
/// much of that as is known.
SAnsiString DescribeCode(const void* address);

}  // namespace TarnLibA500
