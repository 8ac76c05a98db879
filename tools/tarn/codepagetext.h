#pragma once

#include <string>
#include <vector>

#include "tarnlib/cparamlineargs.h"
#include "tarnlib/sstring.h"

/// Between the tool's texts, which are UTF-8, and the library's, which are in the code page of the C locale: the
/// process's own here.
namespace tarn {

/// Throws Failure, naming what it is, when the code page does not have a character.
TarnLibA500::SAnsiString CodePageText(const std::string& utf8, const char* what);
/// The same for the name of a file.
TarnLibA500::SAnsiString FileName(const std::string& utf8);
/// The words of a command line as a program gets them, parsed; the first is the program's name.
TarnLibA500::CParamLineArgs ParseWords(std::vector<TarnLibA500::SAnsiString> words);
std::string Utf8Text(const TarnLibA500::SAnsiString& text);

}  // namespace tarn
