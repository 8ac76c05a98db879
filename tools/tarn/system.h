#pragma once

#include <string>
#include <vector>

#include "command.h"

/// The process and its files. Texts and file names are UTF-8.
namespace tarn {

/// The command line without the program's name.
Words ReadCommandLine();

/// Makes the standard streams take bytes as they are.
void UseBinaryStreams();

/// Prints text in UTF-8. A console gets its characters, whatever its code page is, as soon as they are whole; a file or
/// a pipe gets the bytes.
void Print(const std::string& text);
/// From now on Print writes to standard error, because standard output has something else.
void PrintToError();
void PrintError(const std::string& line);
/// A part of a line, for a progress that is written over and over.
void PrintPieceOfError(const std::string& text);
/// Writes what the user asked to get on standard output, in pieces of any size; false when that fails. A console takes
/// it for UTF-8.
bool WriteOutput(const std::string& bytes);
/// False when something that was printed could not be written.
bool FlushOutput();

/// What an error number of the system means: one line, with the number where the system has no text for it.
std::string SystemReason(unsigned long error);

}  // namespace tarn
