#pragma once

#include <string>
#include <vector>

#include "tarnlib/cparamlineargs.h"
#include "tarnlib/sstring.h"

/// Between the tool's texts, which are UTF-8, and the library's, which are in the code page of the C locale: the
/// process's own here, until a code set is activated. Names of files are in the process's own all the time.
namespace tarn {

/// Throws Failure, naming what it is, when the code page does not have a character.
TarnLibA500::SAnsiString CodePageText(const std::string& utf8, const char* what);
/// The name of a file. Throws Failure when the system's code page does not have a character.
TarnLibA500::SAnsiString FileName(const std::string& utf8);
/// The name of a file, to be shown.
std::string Utf8Name(const TarnLibA500::SAnsiString& name);
/// The words of a command line as a program gets them, parsed; the first is the program's name.
TarnLibA500::CParamLineArgs ParseWords(std::vector<TarnLibA500::SAnsiString> words);
std::string Utf8Text(const TarnLibA500::SAnsiString& text);

}  // namespace tarn
