#include "command.h"
#include "system.h"
#include "tarnlib/cparamlineargs.h"

namespace tarn {
namespace {

using TarnLibA500::CParamLineArgs;
using TarnLibA500::SAnsiString;
using TarnLibA500::SIArray;

constexpr const char* kHelp =
    "PROGRAM [WORD]... | \"LINE\"\n\n"
    "Shows what a command line is parsed into and rebuilt to. Several words are taken as they are, as a\n"
    "program gets them; a single one is taken for a whole command line and parted into words. Logging\n"
    "options are shown like all others.\n"
    "Exit status: 0; 1 when there are no options.\n";

CParamLineArgs Parse(const Words& words) {
    if (words.size() == 1) return CParamLineArgs(words[0].c_str());
    SIArray<SAnsiString> texts;
    for (const std::string& word : words) texts.Add(word.c_str());
    return CParamLineArgs(texts);
}

void PrintWords(const char* label, const SIArray<SAnsiString>& words) {
    Print(label);
    for (const SAnsiString& word : words) Print(" [" + Str(word) + "]");
    Print("\n");
}

ExitStatus ShowOptions(const Words& words) {
    if (words.empty()) throw Failure("a command line is needed");
    const CParamLineArgs args = Parse(words);
    Print("program:  " + Str(args.GetProgramName()) + "\n");
    for (std::uint32_t i = 0; i < args.GetCount(); ++i)
        Print("  -" + Str(args.GetName(i)) + " = [" + Str(args.GetValue(i)) + "]\n");
    if (args.GetProgramName().isEmpty()) {
        PrintError("tarn options: there is no program name");
        return kNo;
    }
    Print("line:     " + Str(args.GetCmdLine()) + "\n");
    SIArray<SAnsiString> plain, quoted;
    args.GetArgs(plain);
    args.GetArgsWithQuote(quoted);
    PrintWords("words:   ", plain);
    PrintWords("quoted:  ", quoted);
    if (args.GetCount() == 0) PrintError("tarn options: there are no options");
    return args.GetCount() != 0 ? kYes : kNo;
}

}  // namespace

const Command kOptionsCommand = {"options", "what a command line is parsed into", kHelp, ShowOptions, true};

}  // namespace tarn
