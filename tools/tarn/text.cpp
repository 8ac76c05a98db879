#include <cstdio>

#include "command.h"
#include "conversion.h"
#include "options.h"
#include "system.h"
#include "tarnlib/stringhelper.h"

namespace tarn {
namespace {

using TarnLibA500::SAnsiString;
using TarnLibA500::SIArray;
using TarnLibA500::SStringHelper;

constexpr const char* kUsualSeparators = " \t\r\n";
constexpr const char* kLineEnds = "\r\n";
// Never occurs in UTF-8, so it can stand for a separator beyond ASCII.
constexpr char kOtherSeparator = '\xFF';

constexpr const char* kOptionsHelp =
    "-from CODESET -to CODESET -file F [-out G] [-words SEPARATORS] [-find TEXT] [-stats]\n\n"
    "Converts a file and reports its bytes, code units (UTF-16), characters and words, and what could not "
    "be\n"
    "converted: where, and which bytes. A byte order mark at the start is dropped.\n\n"
    "  -out G             writes the converted text: the whole file or nothing. What could not be converted "
    "is\n"
    "                     a likeness (as 1252 has \"e\" for U+011B), \"?\", or U+FFFD where the code set has "
    "it\n"
    "  -words SEPARATORS  prints the words between these characters and line ends, one a line; without it\n"
    "                     words are counted between white space\n"
    "  -find TEXT         prints how often the text occurs, and where: line:column, in characters from 1\n"
    "  -stats             also lines, the longest line, and characters by their length in UTF-8\n\n"
    "CODESET is one of these names:\n";

std::string Hex(const std::string& bytes) {
    std::string text;
    for (const char byte : bytes) {
        char digits[4];
        std::snprintf(digits, sizeof digits, " %02X",
                      static_cast<unsigned>(static_cast<unsigned char>(byte)));
        text += digits;
    }
    return text.substr(1);
}

std::string CodePoint(char32_t code) {
    char text[16];
    std::snprintf(text, sizeof text, "U+%04X", static_cast<unsigned>(code));
    return text;
}

void PrintFigure(const char* label, std::size_t value) {
    char line[64];
    std::snprintf(line, sizeof line, "%-17s%u\n", label, static_cast<unsigned>(value));
    Print(line);
}

void PrintProblem(const Problem& problem, const CodeSet& from, const CodeSet& to) {
    std::string line = "  byte " + std::to_string(problem.offset) + ", line " + std::to_string(problem.line) +
                       ": " + Hex(problem.bytes);
    if (!problem.isValid) {
        line += " is not valid in " + from.name();
    } else {
        line += " is " + CodePoint(problem.code) + ", which " + to.name();
        line += problem.fit == Fit::Likeness ? " has only a likeness of" : " does not have";
    }
    Print(line + "\n");
}

void PrintProblems(const Conversion& text, const CodeSet& from, const CodeSet& to) {
    PrintFigure("not converted:", text.problemCount);
    for (const Problem& problem : text.problems) PrintProblem(problem, from, to);
    const std::size_t more = text.problemCount - text.problems.size();
    if (more != 0) Print("  and " + std::to_string(more) + " more\n");
}

// In UTF-8, under the "C" locale: there bytes are characters, and no character of UTF-8 is found inside
// another.
SAnsiString ByteText(const std::string& utf8) {
    return SAnsiString(utf8.data(), static_cast<std::uint32_t>(utf8.size()));
}

// Makes one byte of each separator beyond ASCII, in the text as in the set.
SAnsiString ReduceSeparators(const std::string& separators, SAnsiString& text) {
    SAnsiString reduced;
    for (std::size_t at = 0; at < separators.size();) {
        const Character character = Utf8CodeSet().decode(separators.data() + at, separators.size() - at);
        if (character.nBytes == 1) {
            reduced.concat(separators[at]);
        } else {
            const SAnsiString separator = ByteText(separators.substr(at, character.nBytes));
            SStringHelper::replaceSubString(text, separator, SAnsiString(&kOtherSeparator, 1));
        }
        at += character.nBytes;
    }
    reduced.concat(kOtherSeparator);
    return reduced;
}

SIArray<SAnsiString> SplitWords(const Conversion& text, const std::string& separators) {
    SAnsiString whole = ByteText(text.utf8);
    const SAnsiString set = ReduceSeparators(separators, whole);
    SIArray<SAnsiString> words;
    SStringHelper::makeWords(whole, words, set, false, false);
    return words;
}

void PrintFigures(const Conversion& text, std::size_t bytesRead, std::size_t words, bool more) {
    PrintFigure("bytes read:", bytesRead);
    if (text.markBytes != 0) PrintFigure("byte order mark:", text.markBytes);
    PrintFigure("code units:", text.codeUnits);
    PrintFigure("characters:", text.characters);
    PrintFigure("words:", words);
    PrintFigure("bytes made:", text.output.size());
    if (!more) return;
    PrintFigure("lines:", text.lines);
    PrintFigure("longest line:", text.longestLine);
    PrintFigure("1-byte UTF-8:", text.byUtf8Bytes[0]);
    PrintFigure("2-byte UTF-8:", text.byUtf8Bytes[1]);
    PrintFigure("3-byte UTF-8:", text.byUtf8Bytes[2]);
    PrintFigure("4-byte UTF-8:", text.byUtf8Bytes[3]);
}

// Line and column of a place that moves forward through a UTF-8 text.
class Place {
  public:
    explicit Place(const char* start) : at_(start) {}
    std::string moveTo(const char* target) {
        for (; at_ < target; ++at_) {
            if (*at_ == '\n') {
                ++line_;
                column_ = 1;
            } else if ((static_cast<unsigned char>(*at_) & 0xC0) != 0x80) {  // no trailing byte
                ++column_;
            }
        }
        return std::to_string(line_) + ":" + std::to_string(column_);
    }

  private:
    const char* at_;
    std::size_t line_ = 1;
    std::size_t column_ = 1;
};

// Matches do not overlap.
bool PrintMatches(const Conversion& text, const std::string& what) {
    const SAnsiString whole = ByteText(text.utf8);
    const SAnsiString needle = ByteText(what);
    std::string places;
    std::size_t count = 0;
    Place place(whole.getString());
    for (SAnsiString::iterator match = whole.find(needle); match != whole.end();
         match = whole.find(needle, SAnsiString::iterator(match.getPtr() + needle.getLength()))) {
        places += "  " + place.moveTo(match.getPtr()) + "\n";
        ++count;
    }
    PrintFigure("found:", count);
    Print(places);
    return count != 0;
}

void PrintWords(const SIArray<SAnsiString>& words) {
    for (const SAnsiString& word : words) Print(std::string("  ") + word.getString() + "\n");
}

ExitStatus ConvertText(const Words& arguments) {
    using Kind = Options::Kind;
    const Options options(arguments, {{"from", Kind::RequiredValue},
                                      {"to", Kind::RequiredValue},
                                      {"file", Kind::RequiredValue},
                                      {"out", Kind::Value},
                                      {"words", Kind::Value},
                                      {"find", Kind::Value},
                                      {"stats", Kind::Switch}});
    const CodeSet& from = FindCodeSet(options.value("from"));
    const CodeSet& to = FindCodeSet(options.value("to"));
    if (options.has("find") && options.value("find").empty()) throw Failure("-find needs a text");
    const std::string bytes = ReadFile(options.value("file"));
    const Conversion text = Convert(bytes, from, to);
    if (options.has("out")) WriteFile(options.value("out"), text.output);

    Utf8CodeSet().activate();
    const std::string separators =
        options.has("words") ? options.value("words") + kLineEnds : kUsualSeparators;
    const SIArray<SAnsiString> words = SplitWords(text, separators);
    Print("file:            " + options.value("file") + ", " + from.name() + " to " + to.name() + "\n");
    PrintFigures(text, bytes.size(), words.GetSize(), options.has("stats"));
    if (options.has("words")) PrintWords(words);
    const bool isFound = !options.has("find") || PrintMatches(text, options.value("find"));
    PrintProblems(text, from, to);
    return text.problemCount == 0 && isFound ? kYes : kNo;
}

}  // namespace

const Command kTextCommand = {
    "text", "converts a file between code sets and says what is in it",
    kOptionsHelp + DescribeCodeSets() +
        "Exit status: 0; 1 when something could not be converted or was not found.\n",
    ConvertText};

}  // namespace tarn
