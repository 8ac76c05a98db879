#pragma once

#include <string>
#include <vector>

#include "command.h"

/// The process and its files. Texts and file names are UTF-8.
namespace tarn {

/// The command line without the program's name.
Words ReadCommandLine();

/// Makes the standard streams take bytes as they are, and a console show UTF-8 until the object goes.
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
/// From now on Print writes to standard error, because standard output has something else.
void PrintToError();
void PrintError(const std::string& line);
/// False when something that was printed could not be written.
bool FlushOutput();

/// What an error number of the system means: one line, with the number where the system has no text for it.
std::string SystemReason(unsigned long error);

}  // namespace tarn
