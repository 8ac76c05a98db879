#include <cstdio>
#include <optional>

#include "command.h"
#include "conversion.h"
#include "options.h"
#include "streams.h"
#include "system.h"
#include "textscan.h"

namespace tarn {
namespace {

constexpr const char* kUsualSeparators = " \t\r\n";
constexpr const char* kLineEnds = "\r\n";

constexpr const char* kOptionsHelp =
    "-from CODESET -to CODESET -file F [-out G] [-words SEPARATORS] [-find TEXT] [-stats]\n\n"
    "Converts a text of any size and reports its bytes, code units (UTF-16), characters and words, and what\n"
    "could not be converted: where, and which bytes. A byte order mark at the start is dropped.\n\n"
    "  -file F            the text; - is standard input\n"
    "  -out G             writes the converted text: the whole file or nothing; - is standard output, and "
    "the\n"
    "                     report goes to standard error. What could not be converted is a likeness (as 1252\n"
    "                     has \"e\" for U+011B), \"?\", or U+FFFD where the code set has it\n"
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

void PrintFigure(const char* label, Count value) {
    char line[64];
    std::snprintf(line, sizeof line, "%-17s%llu\n", label, value);
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

void PrintProblems(const Figures& text, const CodeSet& from, const CodeSet& to) {
    PrintFigure("not converted:", text.problemCount);
    for (const Problem& problem : text.problems) PrintProblem(problem, from, to);
    const Count more = text.problemCount - text.problems.size();
    if (more != 0) Print("  and " + std::to_string(more) + " more\n");
}

void PrintFigures(const Figures& text, Count words, bool more) {
    PrintFigure("bytes read:", text.bytesRead);
    if (text.markBytes != 0) PrintFigure("byte order mark:", text.markBytes);
    PrintFigure("code units:", text.codeUnits);
    PrintFigure("characters:", text.characters);
    PrintFigure("words:", words);
    PrintFigure("bytes made:", text.bytesMade);
    if (!more) return;
    PrintFigure("lines:", text.lines);
    PrintFigure("longest line:", text.longestLine);
    PrintFigure("1-byte UTF-8:", text.byUtf8Bytes[0]);
    PrintFigure("2-byte UTF-8:", text.byUtf8Bytes[1]);
    PrintFigure("3-byte UTF-8:", text.byUtf8Bytes[2]);
    PrintFigure("4-byte UTF-8:", text.byUtf8Bytes[3]);
}

// How a text is read, looked through and written.
struct Work {
    Conversion text;
    WordCutter words;
    std::optional<Finder> finder;
    std::optional<Target> target;
};

void TakeCharacters(Work& work) {
    for (const Character& character : work.text.characters()) {
        work.words.take(character.code);
        if (work.finder) work.finder->take(character.code);
    }
}

// Takes the memory of a few pieces, whatever the size of the text.
void Convert(Source& source, Work& work) {
    constexpr std::size_t kPiece = 64 * 1024;
    Progress progress(source.size());
    bool isLast = false;
    while (!isLast) {
        const std::string bytes = source.read(kPiece);
        isLast = bytes.size() < kPiece;
        work.text.take(bytes, isLast);
        if (work.target) work.target->write(work.text.output());
        TakeCharacters(work);
        progress.show(work.text.figures().bytesRead);
    }
    work.words.finish();
    source.close();  // the text may take the name of its source
    if (work.target) work.target->finish();
}

ExitStatus Report(Work& work, const CodeSet& from, const CodeSet& to, bool isLong) {
    const Figures& figures = work.text.figures();
    PrintFigures(figures, work.words.count(), isLong);
    work.words.print();
    if (work.finder) {
        PrintFigure("found:", work.finder->count());
        work.finder->print();
    }
    PrintProblems(figures, from, to);
    const bool isFound = !work.finder || work.finder->count() != 0;
    return figures.problemCount == 0 && isFound ? kYes : kNo;
}

ExitStatus ConvertText(const Words& arguments) {
    const Options options(
        arguments,
        {.required = {"from", "to", "file"}, .values = {"out", "words", "find"}, .switches = {"stats"}});
    const CodeSet& from = FindCodeSet(options.value("from"));
    const CodeSet& to = FindCodeSet(options.value("to"));
    if (options.has("find") && options.value("find").empty()) throw Failure("-find needs a text");
    if (options.has("out") && options.value("out").empty()) throw Failure("-out needs a name");
    const std::string separators =
        options.has("words") ? options.value("words") + kLineEnds : kUsualSeparators;

    Source source(options.value("file"));
    Work work = {Conversion(from, to), WordCutter(CharactersOf(separators), options.has("words")), {}, {}};
    if (options.has("find")) work.finder.emplace(CharactersOf(options.value("find")));
    if (options.has("out")) work.target.emplace(options.value("out"));
    if (options.has("out") && IsStandardStream(options.value("out"))) PrintToError();
    Convert(source, work);
    Print("file:            " + options.value("file") + ", " + from.name() + " to " + to.name() + "\n");
    return Report(work, from, to, options.has("stats"));
}

}  // namespace

const Command kTextCommand = {
    "text", "converts a file between code sets and says what is in it",
    kOptionsHelp + DescribeCodeSets() +
        "Exit status: 0; 1 when something could not be converted or was not found.\n",
    ConvertText};

}  // namespace tarn
