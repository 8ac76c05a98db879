#pragma once

#include <string>

#include "tarnlib/sstring.h"

/// Between the tool's texts, which are UTF-8, and the library's, which are in the code page of the C locale:
/// Latin-1 here.
namespace tarn {

/// Throws Failure, naming what it is, when the code page does not have a character.
TarnLibA500::SAnsiString CodePageText(const std::string& utf8, const char* what);
std::string Utf8Text(const TarnLibA500::SAnsiString& text);

}  // namespace tarn
