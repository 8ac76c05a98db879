#pragma once

#include <string>
#include <vector>

#include "command.h"

/// The process and its files. Texts and file names are UTF-8.
namespace tarn {

/// The command line without the program's name.
Words ReadCommandLine();

/// Makes standard output take bytes as they are, and a console show UTF-8 until the object goes.
class Utf8Output {
  public:
    Utf8Output();
    ~Utf8Output();
    Utf8Output(const Utf8Output&) = delete;
    Utf8Output& operator=(const Utf8Output&) = delete;

  private:
    unsigned codePageBefore_ = 0;
};

void Print(const std::string& text);
void PrintError(const std::string& line);

/// The whole file. Throws Failure naming the file; files beyond the ceiling are refused.
constexpr long long kMaxFileBytes = 64LL * 1024 * 1024;  // a 32-bit process holds it several times over
std::string ReadFile(const std::string& name);
/// Replaces the file by these bytes, or leaves what was there: they are written under another name first.
void WriteFile(const std::string& name, const std::string& bytes);

}  // namespace tarn
